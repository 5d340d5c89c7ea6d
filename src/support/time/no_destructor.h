// C_No_Destructor: a static object that outlives all others and needs no heap of its own. Static objects elsewhere
// use it until the last of them is gone.
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
