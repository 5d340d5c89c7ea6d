// The simulated clock. While one lives, the process runs on simulated time, from 0 ms on.
//
// The thread that made it takes part, and every thread made through support/threads/thread.h; exactly one of them runs
// at a time, and when all of them wait, time jumps to the earliest wake-up. Where several are ready at one instant a
// seeded choice picks one, so that a seed replays a run exactly. If all wait and none has a wake-up time, the clock
// prints which thread waits where and aborts the process.
//
// Each thread is a fiber (fiber.h) on the one that made the clock, or that one itself. It is in one of three states:
// running (exactly one), ready, or waiting, with a wake-up time, at a wait point, or both. One that waits hands the run
// over to the next and stands still until it gets the run again. Since all of this happens on one thread of the system,
// nothing here needs a lock, and a notification cannot be lost.
#pragma once

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "support/time/lock.h"
#include "support/time/replacement_clock.h"

namespace orsanta {

class C_Fiber;

// One at a time. At its end all other threads must have ended.
class C_Simulated_Clock final : public C_Replacement_Clock {
 public:
  explicit C_Simulated_Clock(uint64_t seed);
  ~C_Simulated_Clock();

  // How many threads take part.
  size_t Threads() const { return m_Participants.size(); }

  double Now_Ms() const override { return m_Now_Ms.load(std::memory_order_relaxed); }
  void Sleep(int ms) override;
  bool Wait(const void* point, const char* what, C_Leaf_Lock& lock, double until_ms) override REQUIRES(lock);
  void Notify(const void* point) override;
  void Start_Thread(const std::string& name, std::function<void()> body) override;
  uint64_t Thread_Number() const override;
  const char* Thread_Name() const override;
  C_Values* Thread_Values() override;

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
