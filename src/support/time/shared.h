// Shared<T>: a plain member that several threads read and write without a lock.
//
// It reads and assigns like a T, each access an atomic one: whoever sees a flag also sees what its writer wrote before
// it, so that a result is never older than the flag that announces it. A read followed by a write of the same member
// are two steps, and another thread can come between them.
#pragma once

#include <atomic>

namespace orsanta {

template <class T>
class Shared {
 public:
  Shared() : m_Value(T{}) {}
  Shared(T value) : m_Value(value) {}  // NOLINT: reads and assigns like the plain type
  Shared(const Shared& other) : m_Value(other.Get()) {}
  Shared& operator=(const Shared& other) { return *this = other.Get(); }
  Shared& operator=(T value) {
    m_Value.store(value, std::memory_order_release);
    return *this;
  }
  T Get() const { return m_Value.load(std::memory_order_acquire); }
  operator T() const { return Get(); }  // NOLINT

 private:
  std::atomic<T> m_Value;
};

}  // namespace orsanta
