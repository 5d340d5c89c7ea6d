// C_No_Destructor: a static object that is never destroyed, since other static objects and threads may use it until the
// process has ended.
#pragma once

#include <cstddef>
#include <new>

namespace orsanta {

template <class T>
class C_No_Destructor {
 public:
  C_No_Destructor() { new (m_Room) T(); }
  T& Get() { return *std::launder(reinterpret_cast<T*>(m_Room)); }

 private:
  alignas(T) std::byte m_Room[sizeof(T)];
};

}  // namespace orsanta
