// What each thread has one of, such as its open dialogs. It takes the place of thread_local: to the system, and to the
// compiler, the threads of the simulated clock are one thread.
#pragma once

#include "support/time/replacement_clock.h"

namespace orsanta {

// The calling thread's value of this type: made by its default constructor at the first call, destroyed when the thread
// ends. Only the thread itself may call; whether others may use the value is up to its type.
template <class T>
T& Of_This_Thread() {
  static constexpr char Key = 0;  // its address stands for the type
  C_Replacement_Clock* const clock = C_Replacement_Clock::Current();
  C_Replacement_Clock::C_Values* const values = clock != nullptr ? clock->Thread_Values() : nullptr;
  if (values == nullptr) {
    thread_local T value;
    return value;
  }
  std::shared_ptr<void>& value = (*values)[&Key];
  if (value == nullptr) value = std::make_shared<T>();
  return *static_cast<T*>(value.get());
}

}  // namespace orsanta
