// C_Signal_Blocker: for the span of a scope, a write of the calling thread cannot end or stop the process. A reader
// that is gone, a file over the size that the process may write, and a terminal that another job uses are errors of the
// write, and leave no signal behind. Any thread.
#pragma once

#include <csignal>
#include <ctime>

#include "support/time/uncopied.h"

namespace orsanta {

class C_Signal_Blocker : private C_Uncopied {
 public:
  C_Signal_Blocker() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGPIPE, SIGXFSZ, SIGTTOU}) sigaddset(&held, signal);
    sigpending(&m_Pending);
    pthread_sigmask(SIG_BLOCK, &held, &m_Before);
  }
  ~C_Signal_Blocker() {
    for (const int signal : {SIGPIPE, SIGXFSZ}) {
      if (sigismember(&m_Pending, signal) == 1) continue;  // it came from elsewhere
      sigset_t own;
      sigemptyset(&own);
      sigaddset(&own, signal);
      const timespec at_once{};
      sigtimedwait(&own, nullptr, &at_once);
    }
    pthread_sigmask(SIG_SETMASK, &m_Before, nullptr);
  }

 private:
  sigset_t m_Pending;  // before the scope
  sigset_t m_Before;   // signals that the thread blocked already
};

}  // namespace orsanta
