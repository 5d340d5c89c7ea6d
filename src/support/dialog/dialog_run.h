// The run of a dialog: its controls with what they are bound to, and the pump that serves all open dialogs of a thread.
//
// A thread may run a dialog from inside a callback of another. The pump of the innermost run then serves all of them:
// the displays are refreshed, and presses of the outer dialogs are handled as long as no dialog with a confirmation is
// above them. Only support/dialog/dialog.cpp includes this header.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/dialog/dialog.h"
#include "support/dialog/front.h"

namespace orsanta {

struct C_Bound_Control {
  C_Control_Model model;
  int id = 0;
  CParameterInOutDlgInterface* callback = nullptr;
  int period_ms = 0;    // of a dynamic display
  double due_ms = 0.0;  // when the display asks next
  // Checks an entry. Returns why it is refused, or an empty text and in `write` what stores it; empty for a control
  // that takes no entry.
  std::function<std::wstring(const C_Control_Entry& entry, std::function<void()>& write)> check = {};
};

class C_Dialog_Run : public C_Dialog_Listener {
 public:
  std::wstring title;
  std::vector<C_Bound_Control> controls;

  // Adds a control, bound to nothing yet. The reference is valid until the next call.
  C_Bound_Control& Add(C_Control_Kind kind, const wchar_t* caption, int column, float width, int rows, int id,
                       CParameterInOutDlgInterface* callback);

  // Shows the dialog on the calling thread and serves it until it closes: 1 after a confirmation, 0 after a cancel.
  int Run(bool confirms);

  int Set_Text(int id, const std::wstring& text);
  int Get_Text(int id, std::wstring& text) const;

  void On_Dialog_Event(const C_Dialog_Event& event) override;

 private:
  friend class C_Dialog_Thread;

  enum class C_State { New, Open, Confirmed, Cancelled };

  int Find(int id) const;
  void Show_Text(size_t control, const std::wstring& text);
  bool Take_Entries(const std::vector<C_Control_Entry>& entries);

  class C_Dialog_Thread* m_Thread = nullptr;
  C_State m_State = C_State::New;
  int m_Dialog = 0;  // the front's handle
  bool m_Confirms = false;
  bool m_Busy = false;
};

}  // namespace orsanta
