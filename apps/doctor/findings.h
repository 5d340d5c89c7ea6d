// What the doctor found, one line each: "good" for what is there, "note" for what the gauge can do without, "BAD" for
// what it cannot measure without.
#pragma once

#include <cstdio>
#include <string>

namespace doctor {

class C_Findings {
 public:
  void Good(const std::string& what, const std::string& text) { Print("good", what, text); }
  void Note(const std::string& what, const std::string& text) { Print("note", what, text); }
  void Bad(const std::string& what, const std::string& text) {
    Print("BAD ", what, text);
    ++m_Bad;
  }
  int Bad_Count() const { return m_Bad; }

 private:
  static void Print(const char* verdict, const std::string& what, const std::string& text) {
    std::printf("%s  %-15s %s\n", verdict, what.c_str(), text.c_str());
    std::fflush(stdout);
  }

  int m_Bad = 0;
};

}  // namespace doctor
