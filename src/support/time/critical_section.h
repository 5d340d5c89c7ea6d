// CMyCriticalSection: the recursive lock that knows the clock.
//
// A lock that is held across a Sleep or a wait must be one of these: under the simulated clock a thread that waits for
// it waits at the clock, so that simulated time advances. Under the system clock it lends its waiters' priority to its
// holder, as a leaf lock does. Any thread may lock; only the holder unlocks, as often as it locked.
#pragma once

#include <atomic>
#include <cstdint>

#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

class CAPABILITY("critical section") CMyCriticalSection {
 public:
  // Takes the lock, waiting without a limit. Returns 1.
  int Lock() ACQUIRE();
  // Releases it once. Returns 1; a thread that does not hold the lock changes nothing and gets 0.
  int Unlock() RELEASE();

 private:
  void Take();
  void Give_Back();

  std::atomic<uint64_t> m_Owner{0};  // number of the holding thread, 0 when free
  int m_Depth = 0;                   // touched by the holder only, as the next
  bool m_Simulated = false;          // taken under the simulated clock
  C_Leaf_Lock m_Lock;                // the lock itself under the system clock
  C_Wait_Point m_Freed{"CMyCriticalSection::Lock"};
};

}  // namespace orsanta
