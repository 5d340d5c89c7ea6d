// Shared<T>: a plain member that several threads read and write without a lock.
//
// It reads and assigns like a T, each access a relaxed atomic one. It orders nothing: a read followed by a write of the
// same member are two steps, and another thread can come between them.
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
    m_Value.store(value, std::memory_order_relaxed);
    return *this;
  }
  T Get() const { return m_Value.load(std::memory_order_relaxed); }
  operator T() const { return Get(); }  // NOLINT

 private:
  std::atomic<T> m_Value;
};

}  // namespace orsanta
