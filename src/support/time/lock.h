// Locks whose rules the compiler checks: Clang, with -Wthread-safety, refuses code that touches a guarded member
// without its lock. Other compilers read the marks as nothing.
//
//   C_Leaf_Lock m_Lock;
//   std::deque<int> m_Queue GUARDED_BY(m_Lock);
//   void Drop_Held() REQUIRES(m_Lock);
//   ...
//   const C_Lock_Guard hold(m_Lock);
//
// A leaf lock is held for a few lines that never wait, and no other lock is taken under it unless docs/architecture.md
// names the pair. What is held across a wait is a CMyCriticalSection (critical_section.h).
#pragma once

#include <pthread.h>

#include "support/time/uncopied.h"

#if defined(__clang__)
#define ORSANTA_THREAD_MARK(mark) __attribute__((mark))
#else
#define ORSANTA_THREAD_MARK(mark)
#endif
#define CAPABILITY(what) ORSANTA_THREAD_MARK(capability(what))
#define SCOPED_CAPABILITY ORSANTA_THREAD_MARK(scoped_lockable)
#define GUARDED_BY(lock) ORSANTA_THREAD_MARK(guarded_by(lock))
#define REQUIRES(...) ORSANTA_THREAD_MARK(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) ORSANTA_THREAD_MARK(acquire_capability(__VA_ARGS__))
#define RELEASE(...) ORSANTA_THREAD_MARK(release_capability(__VA_ARGS__))
#define NO_THREAD_SAFETY_ANALYSIS ORSANTA_THREAD_MARK(no_thread_safety_analysis)

namespace orsanta {

// A mutex that lends its waiters' priority to its holder, so that a time-critical thread never waits for one that a
// busy machine does not run; on a kernel that cannot lend, a plain mutex. It has no destructor, because nothing has to
// be released: a static one serves threads that still run while the process ends.
class CAPABILITY("leaf lock") C_Leaf_Lock : private C_Uncopied {
 public:
  C_Leaf_Lock() {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setprotocol(&attributes, PTHREAD_PRIO_INHERIT);
    if (pthread_mutex_init(&m_Mutex, &attributes) != 0) pthread_mutex_init(&m_Mutex, nullptr);
    pthread_mutexattr_destroy(&attributes);
  }

  void Lock() ACQUIRE() { pthread_mutex_lock(&m_Mutex); }
  void Unlock() RELEASE() { pthread_mutex_unlock(&m_Mutex); }

 private:
  friend class C_Wait_Point;  // waits with it released

  pthread_mutex_t m_Mutex;
};

// Holds a lock of either kind for the span of a scope, so that every way out releases it.
template <class T>
class SCOPED_CAPABILITY C_Lock_Guard : private C_Uncopied {
 public:
  explicit C_Lock_Guard(T& lock) ACQUIRE(lock) : m_Lock(lock) { m_Lock.Lock(); }
  ~C_Lock_Guard() RELEASE() { m_Lock.Unlock(); }

 private:
  T& m_Lock;
};

}  // namespace orsanta
