// The console front: what a machine without a display gets. Nothing ever waits on it.
//
// A message box is one line on the standard error stream and counts as answered at once, with OK, or with No where it
// is a question. A dialog counts as cancelled, with a line that says so. A chart never opens. Any thread.
#pragma once

#include <atomic>

#include "support/dialog/front.h"

namespace orsanta {

class C_Console_Front : public C_Front {
 public:
  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override;
  void Close_Dialog(int /*dialog*/) override {}
  void Set_Control_Text(int /*dialog*/, int /*control*/, const std::wstring& /*text*/) override {}
  void Refuse_Entry(int /*dialog*/, int /*control*/, const std::wstring& /*reason*/) override {}
  void Set_Command(int /*dialog*/, int /*control*/, C_Command_State /*state*/) override {}
  void Refuse_Press(int /*dialog*/, int /*control*/, const std::wstring& /*reason*/) override {}

  void Show_Stations(const std::vector<C_Station_Tile>& /*tiles*/) override {}

  void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) override;

  void Draw_Chart(unsigned /*chart*/, const C_Chart_Model& /*model*/) override {}
  bool Is_Chart_Open(unsigned /*chart*/) override { return false; }
  void Close_Chart(unsigned /*chart*/) override {}
  void Raise_Chart(unsigned /*chart*/) override {}

 private:
  std::atomic<int> m_Last_Dialog{0};
};

}  // namespace orsanta
