#include "support/dialog/dialog_run.h"

#include <utility>

#include "support/dialog/dialog_thread.h"
#include "support/dialog/subject.h"

namespace orsanta {

C_Bound_Control& C_Dialog_Run::Add(C_Control_Kind kind, const wchar_t* caption, int column, float width, int rows,
                                   int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control& control = controls.emplace_back();
  control.model.kind = kind;
  control.model.caption = caption != nullptr ? caption : L"";
  control.model.column = column;
  control.model.width = width;
  control.model.rows = rows;
  control.id = id;
  control.callback = callback;
  return control;
}

int C_Dialog_Run::Run(bool confirms) {
  m_Thread = &C_Dialog_Thread::Of_Caller();
  m_Confirms = confirms;
  m_State = C_State::Open;
  C_Dialog_Model model;
  model.title = title.empty() ? Present_Subject().Title() : title;
  model.confirms = confirms;
  model.stations = stations;
  model.shows_stations = shows_stations;
  const double now = Now_Ms();
  for (C_Bound_Control& control : controls) {
    model.controls.push_back(control.model);
    control.due_ms = now + control.period_ms;
  }
  m_Thread->Serve(*this, std::move(model));
  return m_State == C_State::Confirmed ? 1 : 0;
}

void C_Dialog_Run::On_Dialog_Event(const C_Dialog_Event& event) {
  m_Thread->Queue(*this, event);
}

// All entries are checked before the first is written, so that a refused dialog changes nothing. Every bad entry is
// refused, the first of them last: that is where the front puts the cursor.
bool C_Dialog_Run::Take_Entries(const std::vector<C_Control_Entry>& entries) {
  if (entries.size() != controls.size()) return false;
  std::vector<std::function<void()>> writes(controls.size());
  bool refused = false;
  for (size_t i = controls.size(); i-- > 0;) {
    if (!controls[i].check) continue;
    const std::wstring reason = controls[i].check(entries[i], writes[i]);
    if (reason.empty()) continue;
    Front().Refuse_Entry(m_Dialog, static_cast<int>(i), reason);
    refused = true;
  }
  if (refused) return false;
  for (const std::function<void()>& write : writes)
    if (write) write();
  return true;
}

int C_Dialog_Run::Find(int id) const {
  for (size_t i = 0; id != 0 && i < controls.size(); ++i)
    if (controls[i].id == id) return static_cast<int>(i);
  return -1;
}

void C_Dialog_Run::Show_Text(size_t control, const std::wstring& text) {
  C_Control_Model& model = controls[control].model;
  (model.kind == C_Control_Kind::Button ? model.caption : model.text) = text;
  if (m_State == C_State::Open && m_Dialog != 0) Front().Set_Control_Text(m_Dialog, static_cast<int>(control), text);
}

int C_Dialog_Run::Set_Text(int id, const std::wstring& text) {
  const int control = Find(id);
  if (control < 0) return 0;
  Show_Text(static_cast<size_t>(control), text);
  return 1;
}

int C_Dialog_Run::Get_Text(int id, std::wstring& text) const {
  const int control = Find(id);
  if (control < 0) return 0;
  const C_Control_Model& model = controls[static_cast<size_t>(control)].model;
  text = model.kind == C_Control_Kind::Button ? model.caption : model.text;
  return 1;
}

}  // namespace orsanta
