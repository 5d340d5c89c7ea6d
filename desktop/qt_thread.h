// The thread on which the desktop front draws. It owns the one Qt application of the process, and both stay until the
// process ends: Qt does not bear being taken down on a thread that is not the main one.
//
// Post may be called from any thread; what is posted runs on the Qt thread in the order of the posts.
#pragma once

#include <functional>
#include <string>

#include "support/time/lock.h"

class QObject;

namespace orsanta {

class C_Qt_Thread {
 public:
  // The one of the process.
  static C_Qt_Thread& Get();

  // Starts the thread, if it does not run, and returns when it takes posts; false, with the reason, when there is no
  // display.
  bool Start(std::string& reason);
  // Returns false when the thread does not run; the work is then dropped.
  bool Post(std::function<void()> work);
  // Runs the work on the Qt thread and waits for it. Not from the Qt thread.
  bool Run_And_Wait(const std::function<void()>& work);
  // Called on the Qt thread when the display went away; windows are then of no use any more. An empty function for
  // none.
  void On_Display_Lost(std::function<void()> work);
  // For a process that is ending: halts the Qt thread where it stands, for good.
  void Halt();
  // For a display that went away: says so, hands on to On_Display_Lost, and never returns. Qt thread only.
  [[noreturn]] void Stay_Without_Display();

 private:
  // started: called once, with the reason why not, or an empty text.
  void Run(const std::function<void(const std::string&)>& started);
  void Take_No_More_Posts();

  C_Leaf_Lock m_Lock;
  QObject* m_Context GUARDED_BY(m_Lock) = nullptr;  // lives on the Qt thread; null while it takes no posts
  std::function<void()> m_Display_Lost GUARDED_BY(m_Lock);
};

}  // namespace orsanta
