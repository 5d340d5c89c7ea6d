// The simulated clock's scheduler. support/time/clock.cpp forwards its calls to it while one is installed; nothing else
// includes this header.
//
// Each participating thread is in one of three states: running (exactly one), ready, or waiting, with a wake-up
// time, at a wait point, or both. A thread that waits hands the run over to the next and blocks until it gets the run
// again. Since only the thread that holds the run touches the scheduler, the run itself is the lock, and
// a notification cannot be lost.
//
// While it is installed, all participants stay on the one processor that the installing thread ran on: a hand-over
// within a processor costs a tenth of one that wakes another processor, and two participants never run at once anyway.
#pragma once

#include <sched.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/time/lock.h"

namespace orsanta {

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

  uint64_t Announce(const std::string& name);
  void Enter(uint64_t ticket);
  void Leave();

 private:
  struct C_Participant;

  C_Participant& Self() const;
  C_Participant& Choose_Next();
  void Hand_Over(C_Participant& self);
  [[noreturn]] void Report_Deadlock() const;

  void Stay_On_This_Processor();

  bool m_Pinned = false;
  cpu_set_t m_Old_Processors{};  // of the installing thread
  std::atomic<double> m_Now_Ms{0.0};
  std::mt19937_64 m_Choice;
  std::vector<std::unique_ptr<C_Participant>> m_Participants;  // in the order in which they joined
};

}  // namespace orsanta
