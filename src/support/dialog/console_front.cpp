#include "support/dialog/console_front.h"

#include "support/dialog/message_box.h"
#include "support/system/error_stream.h"
#include "support/system/wide_string.h"

namespace orsanta {

namespace {

// The text on one line: each run of line breaks and other control characters becomes one blank, and none is left at
// either end.
std::wstring Fold(const std::wstring& text) {
  std::wstring line;
  bool pending = false;
  for (const wchar_t c : text) {
    if (c < L' ' || c == 0x7F) {
      pending = true;
      continue;
    }
    if (pending && !line.empty()) line.push_back(L' ');
    pending = false;
    line.push_back(c);
  }
  return line;
}

void Print_Line(const std::wstring& line) {
  Write_Error_Stream(To_Utf8(line) + "\n");
}

}  // namespace

int C_Console_Front::Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) {
  std::wstring name = model.title;
  for (size_t i = 0; name.empty() && i < model.controls.size(); ++i) name = model.controls[i].caption;
  Print_Line(L"没有显示器,对话框已取消: " + Fold(name));
  const int dialog = ++m_Last_Dialog;
  listener.On_Dialog_Event({C_Dialog_Event::Kind::Cancel, -1, {}});
  return dialog;
}

void C_Console_Front::Post_Message(const C_Message_Model& model, C_Message_Listener& listener) {
  Print_Line(Fold(model.text));
  listener.On_Answer((model.flags & Box_Yes_No) != 0 ? Answer_No : Answer_Ok);
}

}  // namespace orsanta
