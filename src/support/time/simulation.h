// The simulated clock's scheduler. support/time/clock.cpp forwards its calls to it while one is installed; nothing else
// includes this header.
//
// Each participating thread is a fiber (fiber.h) on the thread that installed the clock, or that thread itself. It is
// in one of three states: running (exactly one), ready, or waiting, with a wake-up time, at a wait point, or both. One
// that waits hands the run over to the next and stands still until it gets the run again. Since all of this happens on
// one thread, nothing of the scheduler needs a lock, and a notification cannot be lost.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

class C_Fiber;

class C_Simulation {
 public:
  explicit C_Simulation(uint64_t seed);
  ~C_Simulation();
  C_Simulation(const C_Simulation&) = delete;
  C_Simulation& operator=(const C_Simulation&) = delete;

  // The installed simulation, null when the process runs on the system clock.
  static C_Simulation* Current();

  double Now_Ms() const { return m_Now_Ms.load(std::memory_order_relaxed); }
  void Sleep(int ms);
  // Waits at `point` with `lock` released. Returns false when until_ms came first.
  bool Wait(const void* point, const char* what, C_Leaf_Lock& lock, double until_ms) REQUIRES(lock);
  void Notify(const void* point);
  void Start(const std::string& name, std::function<void()> body);
  // Of the calling thread; 0 and null if it does not take part.
  uint64_t Thread_Number() const;
  const char* Thread_Name() const;
  // Of the calling thread; null if it does not take part, or is the installing one, which keeps what it had.
  clock_thread::C_Values* Thread_Values();

 private:
  struct C_Participant;

  C_Participant& Self() const;
  bool Takes_Part() const { return pthread_equal(pthread_self(), m_Thread) != 0; }
  void Wait_Until(double until_ms);
  void Make_Ready(C_Participant& participant);
  C_Participant& Choose_Next();
  void Move_Time();
  C_Fiber& End();
  [[noreturn]] void Report_Deadlock() const;

  const pthread_t m_Thread = pthread_self();
  std::atomic<double> m_Now_Ms{0.0};  // read by threads that do not take part, too
  std::mt19937_64 m_Choice;
  std::vector<std::unique_ptr<C_Participant>> m_Participants;  // in the order in which they joined
  std::vector<C_Participant*> m_Ready;                         // in the same order
  C_Participant* m_Running = nullptr;
  std::unique_ptr<C_Participant> m_Ended;  // the last one that did: its stack was in use until the next one ran
};

}  // namespace orsanta
