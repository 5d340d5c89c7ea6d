#include "support/dialog/dialog_thread.h"

#include <algorithm>
#include <limits>

#include "support/dialog/dialog_run.h"
#include "support/dialog/subject.h"
#include "support/time/thread_value.h"

namespace orsanta {

namespace {
constexpr wchar_t Blocked_Reason[] = L"请先处理打开的窗口";
}  // namespace

// The answer to a box comes through the queue of the thread that waits for it.
class C_Dialog_Thread::C_Box : public C_Message_Listener {
 public:
  explicit C_Box(C_Dialog_Thread& thread) : m_Thread(thread) {}

  void On_Answer(int given) override {
    const C_Lock_Guard hold(m_Thread.m_Lock);
    m_Thread.m_Queue.push_back({nullptr, {}, this, given});
    m_Thread.m_Arrived.Notify_All();
  }

  int answer = 0;  // 0 until it came

 private:
  C_Dialog_Thread& m_Thread;
};

C_Dialog_Thread& C_Dialog_Thread::Of_Caller() {
  return Of_This_Thread<C_Dialog_Thread>();
}

void C_Dialog_Thread::Queue(C_Dialog_Run& run, const C_Dialog_Event& event) {
  const C_Lock_Guard hold(m_Lock);
  if (event.kind == C_Dialog_Event::Kind::Cancel) {
    m_Queue.push_front({&run, event});
  } else {
    m_Queue.push_back({&run, event});
  }
  m_Arrived.Notify_All();
}

void C_Dialog_Thread::Serve(C_Dialog_Run& run, C_Dialog_Model model) {
  model.owner = m_Open.empty() ? 0 : m_Open.back()->m_Dialog;
  run.m_Dialog = Front().Open_Dialog(model, run);
  m_Open.push_back(&run);
  Mark_Command(C_Command_State::Asks);
  while (run.m_State == C_Dialog_Run::C_State::Open) Step();
  Mark_Command(C_Command_State::Running);
  Front().Close_Dialog(run.m_Dialog);
  m_Open.pop_back();

  const C_Lock_Guard hold(m_Lock);
  std::erase_if(m_Queue, [&run](const C_Arrival& arrival) { return arrival.run == &run; });
}

int C_Dialog_Thread::Ask(C_Message_Model model) {
  model.owner = m_Open.empty() ? 0 : m_Open.back()->m_Dialog;
  model.title = Present_Subject().Title();
  model.station = Present_Subject().station;
  C_Box box(*this);
  Front().Post_Message(model, box);
  ++m_Boxes;
  Mark_Command(C_Command_State::Asks);
  while (box.answer == 0) Step();
  Mark_Command(C_Command_State::Running);
  --m_Boxes;
  return box.answer;
}

// Serves what is due and what came, or waits for either. Displays come first: a row of commands must not starve them.
void C_Dialog_Thread::Step() {
  Refresh_Due();
  C_Dialog_Run* due_run = nullptr;
  size_t due_control = 0;
  const C_Bound_Control* next = Find_Next_Due(due_run, due_control);
  C_Arrival arrival;
  if (!Take_Arrival(arrival, next != nullptr ? next->due_ms : std::numeric_limits<double>::infinity())) return;
  if (arrival.box != nullptr) {
    arrival.box->answer = arrival.answer;
  } else {
    Handle(*arrival.run, arrival.event);
  }
}

// Takes what came first. With nothing there it waits for the next, at most until until_ms, and returns false.
bool C_Dialog_Thread::Take_Arrival(C_Arrival& arrival, double until_ms) {
  const C_Lock_Guard hold(m_Lock);
  if (m_Queue.empty()) {
    if (until_ms > Now_Ms()) m_Arrived.Wait_Until(m_Lock, until_ms);
    return false;
  }
  arrival = std::move(m_Queue.front());
  m_Queue.pop_front();
  return true;
}

C_Bound_Control* C_Dialog_Thread::Find_Next_Due(C_Dialog_Run*& run, size_t& control) const {
  C_Bound_Control* next = nullptr;
  for (C_Dialog_Run* open : m_Open) {
    for (size_t i = 0; i < open->controls.size(); ++i) {
      C_Bound_Control& candidate = open->controls[i];
      if (candidate.period_ms <= 0 || candidate.callback == nullptr) continue;
      if (next != nullptr && candidate.due_ms >= next->due_ms) continue;
      next = &candidate;
      run = open;
      control = i;
    }
  }
  return next;
}

void C_Dialog_Thread::Refresh_Due() {
  C_Dialog_Run* run = nullptr;
  size_t control = 0;
  for (;;) {
    const C_Bound_Control* next = Find_Next_Due(run, control);
    if (next == nullptr || next->due_ms > Now_Ms()) return;
    Refresh(*run, control);
  }
}

void C_Dialog_Thread::Refresh(C_Dialog_Run& run, size_t control) {
  C_Bound_Control& display = run.controls[control];
  display.due_ms += display.period_ms;
  // Periods that went by during a long command are dropped, not made up for.
  if (display.due_ms <= Now_Ms()) display.due_ms = Now_Ms() + display.period_ms;
  std::wstring text = display.model.text;
  display.callback->OnCtrlDynamicDisp(display.id, text, 0);
  if (text != run.controls[control].model.text) run.Show_Text(control, text);
}

void C_Dialog_Thread::Handle(C_Dialog_Run& run, const C_Dialog_Event& event) {
  if (run.m_State != C_Dialog_Run::C_State::Open) return;
  if (m_Boxes > 0 || Is_Blocked(run)) {
    if (event.kind == C_Dialog_Event::Kind::Press) Front().Refuse_Press(run.m_Dialog, event.control, Blocked_Reason);
    return;
  }
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
  m_Commands.push_back({&run, control});
  Mark_Command(C_Command_State::Running);
  if (button.callback != nullptr) {
    const auto station = run.stations.find(button.model.column);
    const C_Subject_Scope subject({station != run.stations.end() ? station->second : 0, button.model.caption});
    button.callback->OnCtrlButton(button.id, 0, 0);
  }
  Mark_Command(C_Command_State::Ended);
  m_Commands.pop_back();
}

bool C_Dialog_Thread::Is_Blocked(const C_Dialog_Run& run) const {
  const auto place = std::find(m_Open.begin(), m_Open.end(), &run);
  return std::any_of(place + 1, m_Open.end(), [](const C_Dialog_Run* above) { return above->m_Confirms; });
}

// A dialog that closes takes those above it along: they stand on a callback of its.
void C_Dialog_Thread::Cancel_From(const C_Dialog_Run& run) {
  for (auto place = std::find(m_Open.begin(), m_Open.end(), &run); place != m_Open.end(); ++place)
    (*place)->m_State = C_Dialog_Run::C_State::Cancelled;
}

// The commands under the innermost one wait in a dialog of theirs as before.
void C_Dialog_Thread::Mark_Command(C_Command_State state) {
  if (m_Commands.empty()) return;
  Front().Set_Command(m_Commands.back().run->m_Dialog, m_Commands.back().control, state);
}

void C_Dialog_Thread::Refuse_Running(const std::wstring& reason) {
  if (m_Commands.empty()) return;
  Front().Refuse_Press(m_Commands.back().run->m_Dialog, m_Commands.back().control, reason);
}

}  // namespace orsanta
