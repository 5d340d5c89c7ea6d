#include "support/dialog/dialog_run.h"

#include <algorithm>
#include <deque>
#include <limits>
#include <tuple>

#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

// The open dialogs of one thread and its queue of events.
class C_Dialog_Thread {
 public:
  // Any thread.
  void Queue(C_Dialog_Run& run, const C_Dialog_Event& event) {
    const C_Lock_Guard hold(m_Lock);
    m_Queue.emplace_back(&run, event);
    m_Arrived.Notify_All();
  }

  // Opens the dialog, pumps until it closes, and closes it.
  void Serve(C_Dialog_Run& run, const C_Dialog_Model& model);

 private:
  void Step();
  bool Take_Event(C_Dialog_Run*& run, C_Dialog_Event& event, double until_ms);
  void Handle(C_Dialog_Run& run, const C_Dialog_Event& event);
  void Press(C_Dialog_Run& run, int control);
  void Refresh(C_Dialog_Run& run, size_t control);
  bool Is_Blocked(const C_Dialog_Run& run) const;
  void Cancel_From(const C_Dialog_Run& run);
  void Show_Busy(bool busy, size_t dialogs);
  bool Find_Next_Due(C_Dialog_Run*& run, size_t& control) const;

  C_Leaf_Lock m_Lock;
  C_Wait_Point m_Arrived{"CParameterInOutDlg::DoParameterDlg"};
  std::deque<std::pair<C_Dialog_Run*, C_Dialog_Event>> m_Queue GUARDED_BY(m_Lock);

  std::vector<C_Dialog_Run*> m_Open;  // outermost first
  int m_Commands = 0;                 // callbacks of buttons that run, one inside the other
};

namespace {

thread_local C_Dialog_Thread the_thread;

}  // namespace

void C_Dialog_Thread::Serve(C_Dialog_Run& run, const C_Dialog_Model& model) {
  run.m_Dialog = Front().Open_Dialog(model, run);
  m_Open.push_back(&run);
  // The callback that runs this dialog waits here, so that the outer dialogs can be used.
  Show_Busy(false, m_Open.size());
  while (run.m_State == C_Dialog_Run::C_State::Open) Step();
  if (m_Commands > 0) Show_Busy(true, m_Open.size() - 1);
  Front().Close_Dialog(run.m_Dialog);
  m_Open.pop_back();

  const C_Lock_Guard hold(m_Lock);
  std::erase_if(m_Queue, [&run](const auto& item) { return item.first == &run; });
}

// Handles one event, or refreshes the display that has been due for longest, or waits for either.
void C_Dialog_Thread::Step() {
  C_Dialog_Run* due_run = nullptr;
  size_t due_control = 0;
  const bool has_display = Find_Next_Due(due_run, due_control);
  const double due_ms = has_display ? due_run->controls[due_control].due_ms : std::numeric_limits<double>::infinity();
  C_Dialog_Run* run = nullptr;
  C_Dialog_Event event;
  if (Take_Event(run, event, due_ms)) {
    Handle(*run, event);
  } else if (due_ms <= Now_Ms()) {
    Refresh(*due_run, due_control);
  }
}

// Takes the oldest event. Without one it waits for the next, at most until until_ms, and returns false.
bool C_Dialog_Thread::Take_Event(C_Dialog_Run*& run, C_Dialog_Event& event, double until_ms) {
  const C_Lock_Guard hold(m_Lock);
  if (m_Queue.empty()) {
    if (until_ms > Now_Ms()) m_Arrived.Wait_Until(m_Lock, until_ms);
    return false;
  }
  std::tie(run, event) = m_Queue.front();
  m_Queue.pop_front();
  return true;
}

bool C_Dialog_Thread::Find_Next_Due(C_Dialog_Run*& run, size_t& control) const {
  double earliest = std::numeric_limits<double>::infinity();
  for (C_Dialog_Run* open : m_Open) {
    for (size_t i = 0; i < open->controls.size(); ++i) {
      const C_Bound_Control& candidate = open->controls[i];
      if (candidate.period_ms <= 0 || candidate.callback == nullptr || candidate.due_ms >= earliest) continue;
      earliest = candidate.due_ms;
      run = open;
      control = i;
    }
  }
  return run != nullptr;
}

void C_Dialog_Thread::Refresh(C_Dialog_Run& run, size_t control) {
  C_Bound_Control& display = run.controls[control];
  display.due_ms += display.period_ms;
  // Periods that passed during a long command are dropped.
  if (display.due_ms <= Now_Ms()) display.due_ms = Now_Ms() + display.period_ms;
  std::wstring text = display.model.text;
  display.callback->OnCtrlDynamicDisp(display.id, text, 0);
  if (text != run.controls[control].model.text) run.Show_Text(control, text);
}

void C_Dialog_Thread::Handle(C_Dialog_Run& run, const C_Dialog_Event& event) {
  if (run.m_State != C_Dialog_Run::C_State::Open || Is_Blocked(run)) return;
  switch (event.kind) {
    case C_Dialog_Event::Kind::Press:
      Press(run, event.control);
      break;
    case C_Dialog_Event::Kind::Cancel:
      Cancel_From(run);
      break;
    case C_Dialog_Event::Kind::Confirm:
      if (run.m_Confirms && run.Take_Entries(event.entries)) run.m_State = C_Dialog_Run::C_State::Confirmed;
      break;
  }
}

void C_Dialog_Thread::Press(C_Dialog_Run& run, int control) {
  if (control < 0 || static_cast<size_t>(control) >= run.controls.size()) return;
  const C_Bound_Control& button = run.controls[static_cast<size_t>(control)];
  if (button.model.kind != C_Control_Kind::Button) return;
  ++m_Commands;
  Show_Busy(true, m_Open.size());
  if (button.callback != nullptr) button.callback->OnCtrlButton(button.id, 0, 0);
  --m_Commands;
  Show_Busy(false, m_Open.size());
}

bool C_Dialog_Thread::Is_Blocked(const C_Dialog_Run& run) const {
  const auto place = std::find(m_Open.begin(), m_Open.end(), &run);
  return std::any_of(place + 1, m_Open.end(), [](const C_Dialog_Run* above) { return above->m_Confirms; });
}

// A dialog that closes closes those above it too: they were opened by one of its callbacks.
void C_Dialog_Thread::Cancel_From(const C_Dialog_Run& run) {
  for (auto place = std::find(m_Open.begin(), m_Open.end(), &run); place != m_Open.end(); ++place)
    (*place)->m_State = C_Dialog_Run::C_State::Cancelled;
}

// Marks the outermost `dialogs` of the open dialogs: a callback of one of them keeps the thread from serving any.
void C_Dialog_Thread::Show_Busy(bool busy, size_t dialogs) {
  for (size_t i = 0; i < dialogs; ++i) {
    if (m_Open[i]->m_Busy == busy) continue;
    m_Open[i]->m_Busy = busy;
    Front().Set_Busy(m_Open[i]->m_Dialog, busy);
  }
}

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
  m_Thread = &the_thread;
  m_Confirms = confirms;
  m_State = C_State::Open;
  C_Dialog_Model model;
  model.title = title;
  model.confirms = confirms;
  const double now = Now_Ms();
  for (C_Bound_Control& control : controls) {
    model.controls.push_back(control.model);
    control.due_ms = now + control.period_ms;
  }
  m_Thread->Serve(*this, model);
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
