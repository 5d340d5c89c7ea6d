// The run of one dialog: its controls, what they are bound to, and how it ends. Only sources of support/dialog include
// this header.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/dialog/dialog.h"
#include "support/dialog/front.h"

namespace orsanta {

class C_Dialog_Thread;

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
  std::map<int, int> stations;  // number of the station that a column belongs to
  bool shows_stations = false;

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

  C_Dialog_Thread* m_Thread = nullptr;
  C_State m_State = C_State::New;
  int m_Dialog = 0;  // the front's handle
  bool m_Confirms = false;
};

}  // namespace orsanta
