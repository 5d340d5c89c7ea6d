// CBaseBindThread: an object with a thread of its own that runs a loop body until it is stopped.
//
// A subclass fills in OnThreadLoop and calls ReleaseSubClass_CBaseBindThread first in its destructor, while it is still
// whole. C_Thread runs one function on a thread; it serves where no loop object is needed. Threads made here take part
// in the simulated clock.
#pragma once

#include <atomic>
#include <functional>
#include <string>
#include <thread>

#include "support/system/priority.h"
#include "support/time/clock.h"
#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

// One function on a thread of its own. Start, Join and the destructor belong to one owner.
class C_Thread : private C_Uncopied {
 public:
  ~C_Thread() { Join(-1.0); }

  // name: shown by debuggers and by the simulated clock's report. level: of support/system/priority.h; the thread takes
  // it before anything else, and nothing of it from the caller.
  void Start(const std::string& name, std::function<void()> body, int level = Priority_Normal);
  // Waits for the end of the body, at most timeout_ms (below 0: without a limit). Returns false when the time ran out.
  bool Join(double timeout_ms = -1.0);
  bool Is_Running() const { return m_Is_Running; }

 private:
  bool m_Is_Running = false;
  std::thread m_Thread;  // under the system clock; the simulated one has its own
  C_Leaf_Lock m_Lock;
  bool m_Ended GUARDED_BY(m_Lock) = false;
  C_Wait_Point m_End{"C_Thread::Join"};
};

class CBaseBindThread : private C_Uncopied {
 public:
  virtual ~CBaseBindThread();

  // For the panel's window objects; it has no effect here, because the fronts run on threads of their own.
  void SetUseCWndThread(int use);
  // Starts the thread.
  // param: passed to every hook. priority: the level of support/system/priority.h from 15 on; anything else asks for
  // the normal one. timeout_ms: how long a stop may take before it is reported as a fault of the program. name: may be
  // null, the thread then has the class's name. Returns 1, or 0 when the thread runs already.
  int BeginThread(void* param, int priority, int reserved, int timeout_ms, const wchar_t* name);
  // Asks the thread to leave its loop and waits for it: after the return no OnThreadLoop pass runs. Returns 1.
  int EndThread(int reserved1, int reserved2);
  // As EndThread; called first in the destructor of every subclass. A thread that never ran costs nothing.
  void ReleaseSubClass_CBaseBindThread() { EndThread(1, 1); }

 protected:
  virtual void OnThreadBegin(void* param);  // once, on the new thread, before the first pass
  virtual void OnThreadLoop(void* param);   // one pass; it does its own sleeping
  virtual void OnThreadHook3(void* param);
  virtual void OnThreadHook4(void* param);

  // True once the thread was asked to end: a pass that waits for something checks it and gives up.
  bool Is_Ending() const { return m_Be_End.load(std::memory_order_relaxed); }

 private:
  C_Thread m_Thread;
  std::atomic<bool> m_Be_End{false};
  int m_Timeout_Ms = 0;
  std::string m_Name;
};

}  // namespace orsanta
