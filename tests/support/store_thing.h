// A class with persisted members, and the folder and front of a test of the store.
#pragma once

#include <gmock/gmock.h>

#include "common/arrays.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "support/store/store.h"

namespace orsanta {

class C_Thing : public CAutoSaveClassData2 {
 public:
  int count = 1;
  double force = 200.0;
  CMyStringW word = L"mocha";
  Shared<float> level{2.0F};
  CMyArray<double> first;
  CMyArray<double> second;
  std::function<void()> on_pass = [] {};  // called at the end of each pass

  int Save() { return SaveAllClassParameterToHashOpt(L"音圈电机3参数", 1); }
  int Own() { return Own_Store(L"音圈电机3参数"); }
  int Load() { return LoadAllClassParameterFromHashOpt(L"音圈电机3参数", 1); }

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override {
    {
      const C_Store_Class entered(*this, data);
      Process_Member("count", count, data);
      Process_Member("force", force, data);
      Process_Member("word", word, data);
      Process_Member("level", level, data);
      Process_Member("Val_Pos_Friction[0].MyArrayP", first, data);
      Process_Member("Val_Pos_Friction[1].MyArrayP", second, data);
    }
    on_pass();
    CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
  }
};

class C_Store_Test : public ::testing::Test {
 protected:
  static constexpr const char* File = "音圈电机3参数";

  static void Write(const std::string& text) { std::ofstream(File, std::ios::binary | std::ios::trunc) << text; }
  // The one box since the last call.
  std::string Only_Box() {
    std::vector<std::wstring> boxes = front->Boxes();
    front->Clear_Record();
    EXPECT_EQ(boxes.size(), 1U);
    boxes.resize(1);
    return To_Utf8(boxes[0]);
  }

  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  const std::string store_name = "参数文件 " + (folder.Path() / File).string();  // as an operator is told it
};

}  // namespace orsanta
