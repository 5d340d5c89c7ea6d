#include "support/time/critical_section.h"

namespace orsanta {

int CMyCriticalSection::Lock() NO_THREAD_SAFETY_ANALYSIS {
  const uint64_t self = This_Thread_Number();
  if (m_Owner.load(std::memory_order_relaxed) != self) {
    Take();
    m_Owner.store(self, std::memory_order_relaxed);
  }
  ++m_Depth;
  return 1;
}

int CMyCriticalSection::Unlock() NO_THREAD_SAFETY_ANALYSIS {
  if (m_Owner.load(std::memory_order_relaxed) != This_Thread_Number()) return 0;
  if (--m_Depth > 0) return 1;
  m_Owner.store(0, std::memory_order_relaxed);
  Give_Back();
  return 1;
}

// Under the simulated clock one thread runs at a time, so that no other can take the lock between the check of the
// owner and the return.
void CMyCriticalSection::Take() NO_THREAD_SAFETY_ANALYSIS {
  if (Is_Simulated_Time()) {
    const C_Lock_Guard hold(m_Lock);
    while (m_Owner.load(std::memory_order_relaxed) != 0) m_Freed.Wait(m_Lock);
    m_Simulated = true;
  } else {
    m_Lock.Lock();
    m_Simulated = false;
  }
}

void CMyCriticalSection::Give_Back() NO_THREAD_SAFETY_ANALYSIS {
  if (m_Simulated) {
    m_Freed.Notify_All();
  } else {
    m_Lock.Unlock();
  }
}

}  // namespace orsanta
