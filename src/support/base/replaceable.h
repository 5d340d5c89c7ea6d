// C_Replaceable: the object of a class that the whole process uses, and that tests can replace. It is never destroyed,
// since threads may use it until the process has ended. Any thread.
#pragma once

#include <memory>
#include <utility>

#include "support/time/lock.h"
#include "support/time/no_destructor.h"

namespace orsanta {

template <class T>
class C_Replaceable {
 public:
  // The one of the process for T.
  static C_Replaceable& Instance() {
    static C_No_Destructor<C_Replaceable> instance;
    return instance.Get();
  }

  // The replacement, else the built-in object, which `make` makes at the first call that needs it.
  T& Get(std::unique_ptr<T> (*make)()) {
    const C_Lock_Guard hold(m_Lock);
    if (m_Replacement != nullptr) return *m_Replacement;
    if (m_Built_In == nullptr) m_Built_In = make();
    return *m_Built_In;
  }

  // Puts `other` in place of the present replacement and returns that; null is the built-in object.
  std::unique_ptr<T> Replace(std::unique_ptr<T> other) {
    const C_Lock_Guard hold(m_Lock);
    std::swap(m_Replacement, other);
    return other;
  }

 private:
  C_Leaf_Lock m_Lock;
  std::unique_ptr<T> m_Replacement GUARDED_BY(m_Lock);
  std::unique_ptr<T> m_Built_In GUARDED_BY(m_Lock);
};

}  // namespace orsanta
