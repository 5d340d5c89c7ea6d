// The open dialogs and boxes of one thread, and the pump that serves them.
//
// A program may run a dialog from inside a callback of another. The pump of the innermost run then serves all of them:
// the displays go on, and presses of the outer dialogs are taken as long as no dialog with a confirmation stands above
// them. A box is served in the same way and is modal to all dialogs of its thread: the displays go on, and presses are
// refused. Only sources of support/dialog include this header.
#pragma once

#include <deque>
#include <vector>

#include "support/dialog/front.h"
#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

struct C_Bound_Control;
class C_Dialog_Run;

class C_Dialog_Thread {
 public:
  // Of the calling thread.
  static C_Dialog_Thread& Of_Caller();

  // Any thread. A cancel overtakes what waits.
  void Queue(C_Dialog_Run& run, const C_Dialog_Event& event);

  // The rest: the thread that it belongs to.

  // Opens the dialog, pumps until it closes, and closes it.
  void Serve(C_Dialog_Run& run, C_Dialog_Model model);
  // Shows the box, pumps until it is answered, and returns the answer.
  int Ask(C_Message_Model model);
  // Refreshes the displays that are due.
  void Refresh_Due();
  // Says at the button whose command runs why it does nothing.
  void Refuse_Running(const std::wstring& reason);

 private:
  class C_Box;
  struct C_Arrival {
    C_Dialog_Run* run = nullptr;  // of an event
    C_Dialog_Event event = {};
    C_Box* box = nullptr;  // of an answer
    int answer = 0;
  };
  struct C_Command {
    C_Dialog_Run* run;
    int control;
  };

  void Step();
  bool Take_Arrival(C_Arrival& arrival, double until_ms);
  void Handle(C_Dialog_Run& run, const C_Dialog_Event& event);
  void Press(C_Dialog_Run& run, int control);
  void Refresh(C_Dialog_Run& run, size_t control);
  bool Is_Blocked(const C_Dialog_Run& run) const;
  void Cancel_From(const C_Dialog_Run& run);
  void Mark_Command(C_Command_State state);
  C_Bound_Control* Find_Next_Due(C_Dialog_Run*& run, size_t& control) const;

  C_Leaf_Lock m_Lock;
  C_Wait_Point m_Arrived{"dialog or message box"};
  std::deque<C_Arrival> m_Queue GUARDED_BY(m_Lock);

  std::vector<C_Dialog_Run*> m_Open;  // outermost first
  std::vector<C_Command> m_Commands;  // whose callbacks run, one inside the other
  int m_Boxes = 0;                    // that wait for an answer
};

}  // namespace orsanta
