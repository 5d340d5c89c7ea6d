// CMyCriticalSection: the recursive lock that knows the clock.
//
// A lock that is held across a Sleep or a wait must be one of these: a thread that waits for it waits at the clock, so
// that simulated time goes on. Any thread may lock; only the holder unlocks, as often as it locked.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

#include "support/time/clock.h"

namespace orsanta {

class CMyCriticalSection {
 public:
  // Takes the lock, waiting without a limit. Returns 1.
  int Lock();
  // Gives it back once. Returns 1; a thread that does not hold the lock changes nothing and gets 0.
  int Unlock();

 private:
  int Lock_Contended(uint64_t self);

  std::atomic<uint64_t> m_Owner{0};  // number of the holding thread, 0 when free
  int m_Depth = 0;                   // touched by the holder only
  std::atomic<int> m_Waiting{0};
  std::mutex m_Wait_Lock;
  C_Wait_Point m_Freed{"CMyCriticalSection::Lock"};
};

// Holds a critical section for the span of a scope, so that every way out releases it.
class C_Section_Holder {
 public:
  explicit C_Section_Holder(CMyCriticalSection& section) : m_Section(section) { m_Section.Lock(); }
  ~C_Section_Holder() { m_Section.Unlock(); }
  C_Section_Holder(const C_Section_Holder&) = delete;
  C_Section_Holder& operator=(const C_Section_Holder&) = delete;

 private:
  CMyCriticalSection& m_Section;
};

}  // namespace orsanta
