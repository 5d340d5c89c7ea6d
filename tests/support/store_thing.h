// Small classes with persisted members, and the text of a store, for the tests of the store.
#pragma once

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/store.h"

namespace orsanta {

class C_Thing : public CAutoSaveClassData2 {
 public:
  int count = 1;
  float travel = 10.0F;
  double force = 200.0;
  std::wstring word = L"mocha";
  CMyStringW wide = L"w";
  Shared<int> flag{1};
  Shared<float> level{2.0F};
  Shared<double> speed{20.0};
  CMyArray<double> first;
  CMyArray<double> second;

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override {
    {
      const C_Store_Class entered(*this, data);
      Process_Member("count", count, data);
      Process_Member("travel", travel, data);
      Process_Member("force", force, data);
      Process_Member("word", word, data);
      Process_Member("wide", wide, data);
      Process_Member("flag", flag, data);
      Process_Member("level", level, data);
      Process_Member("speed", speed, data);
      Process_Member("Val_Pos_Friction[0].MyArrayP", first, data);
      Process_Member("Val_Pos_Friction[1].MyArrayP", second, data);
    }
    CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
  }
};

inline std::vector<double> Values(const CMyArray<double>& array) {
  return {array.begin(), array.end()};
}

inline std::string Text_Of_File(const std::string& name) {
  std::ostringstream text;
  text << std::ifstream(name).rdbuf();
  return text.str();
}

inline void Write_File(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary | std::ios::trunc) << text;
}

}  // namespace orsanta
