#include "support/time/critical_section.h"

namespace orsanta {

namespace {

// A number for each thread, never 0 and never used again.
uint64_t This_Thread() {
  static std::atomic<uint64_t> next{1};
  thread_local const uint64_t number = next.fetch_add(1, std::memory_order_relaxed);
  return number;
}

}  // namespace

int CMyCriticalSection::Lock() {
  const uint64_t self = This_Thread();
  if (m_Owner.load(std::memory_order_relaxed) != self) {
    uint64_t free = 0;
    if (!m_Owner.compare_exchange_strong(free, self)) Lock_Contended(self);
  }
  ++m_Depth;
  return 1;
}

int CMyCriticalSection::Lock_Contended(uint64_t self) {
  std::unique_lock<std::mutex> lock(m_Wait_Lock);
  // Announced before the next look at the owner: an Unlock either sees the waiter or is seen by it.
  m_Waiting.fetch_add(1);
  uint64_t free = 0;
  while (!m_Owner.compare_exchange_strong(free, self)) {
    m_Freed.Wait(lock);
    free = 0;
  }
  m_Waiting.fetch_sub(1);
  return 1;
}

int CMyCriticalSection::Unlock() {
  if (m_Owner.load(std::memory_order_relaxed) != This_Thread()) return 0;
  if (--m_Depth > 0) return 1;
  m_Owner.store(0);
  if (m_Waiting.load() > 0) {
    const std::lock_guard<std::mutex> lock(m_Wait_Lock);
    m_Freed.Notify_All();
  }
  return 1;
}

}  // namespace orsanta
