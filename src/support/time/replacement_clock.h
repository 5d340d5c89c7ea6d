// A clock that takes the place of the system's, and brings the threads that run on it. The product has none;
// simulated_clock/ is one, for tests and measurements.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Replacement_Clock : private C_Uncopied {
 public:
  // The installed one, null while the process runs on the system clock.
  static C_Replacement_Clock* Current();

  virtual double Now_Ms() const = 0;
  virtual void Sleep(int ms) = 0;
  // Waits at `point` with `lock` released; `what` names the place. Returns false when until_ms came first.
  virtual bool Wait(const void* point, const char* what, C_Leaf_Lock& lock, double until_ms) REQUIRES(lock) = 0;
  virtual void Notify(const void* point) = 0;
  virtual void Start_Thread(const std::string& name, std::function<void()> body) = 0;

  // Of the calling thread: 0 and null if it is not this clock's, or, for the values, if the system started it.
  virtual uint64_t Thread_Number() const = 0;
  virtual const char* Thread_Name() const = 0;
  // What it has of its own (thread_value.h).
  using C_Values = std::map<const void*, std::shared_ptr<void>>;
  virtual C_Values* Thread_Values() = 0;

 protected:
  ~C_Replacement_Clock() = default;
  // Returns false if another is installed.
  bool Install();
  void Remove();
};

// A number for one thread: never 0, and never given twice.
uint64_t New_Thread_Number();

}  // namespace orsanta
