// Shared<T>: a plain member that several threads read and write without a lock.
//
// It reads and assigns like a T, each access an atomic one: whoever sees a flag also sees what its writer wrote before
// it, so that a result is never older than the flag that announces it. A read followed by a write of the same member
// are two steps, and another thread can come between them.
//
// A value that no atomic holds, such as an array, is read and replaced whole, under a leaf lock of its own.
#pragma once

#include <atomic>
#include <type_traits>
#include <utility>

#include "support/time/lock.h"

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

template <class T>
requires(!std::is_trivially_copyable_v<T>) class Shared<T> {
 public:
  Shared& operator=(T value) {
    const C_Lock_Guard hold(m_Lock);
    std::swap(m_Value, value);  // the old value ends after the lock
    return *this;
  }
  T Get() const {
    const C_Lock_Guard hold(m_Lock);
    return m_Value;
  }
  operator T() const { return Get(); }  // NOLINT

 private:
  mutable C_Leaf_Lock m_Lock;
  T m_Value GUARDED_BY(m_Lock);
};

}  // namespace orsanta
