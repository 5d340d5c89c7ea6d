#include "simulated_clock/simulated_clock.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "simulated_clock/fiber.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

}  // namespace

struct C_Simulated_Clock::C_Participant {
  uint64_t number = 0;          // of the thread; rises in the order of joining
  double wake_ms = Forever_Ms;  // while it waits: from then on it may run
  bool is_ready = false;        // it may run
  const void* point = nullptr;  // where it waits, or waited until it got ready; null while it sleeps or runs
  bool notified = false;        // the last wait ended by a notification
  const char* what = "start";   // where it waits, for the report
  std::string name;
  C_Values values;
  std::unique_ptr<C_Fiber> fiber;
};

C_Simulated_Clock::C_Simulated_Clock(uint64_t seed) : m_Choice(seed) {
  const uint64_t number = This_Thread_Number();
  if (!Install()) {
    std::fputs("simulated clock: one is installed already\n", stderr);
    std::abort();
  }
  m_Participants.push_back(std::make_unique<C_Participant>());
  m_Running = m_Participants.back().get();
  m_Running->number = number;
  m_Running->name = "installing thread";
  m_Running->fiber = std::make_unique<C_Fiber>();
}

C_Simulated_Clock::~C_Simulated_Clock() {
  if (m_Participants.size() != 1) {
    std::fputs("simulated clock: these threads still take part at its end:\n", stderr);
    for (const auto& participant : m_Participants) std::fprintf(stderr, "  %s\n", participant->name.c_str());
    std::abort();
  }
  Remove();
}

C_Simulated_Clock::C_Participant& C_Simulated_Clock::Self() const {
  if (!Takes_Part()) {
    std::fputs("simulated clock: a thread that was not made through support/threads/thread waits or notifies\n",
               stderr);
    std::abort();
  }
  return *m_Running;
}

uint64_t C_Simulated_Clock::Thread_Number() const {
  return Takes_Part() ? m_Running->number : 0;
}

const char* C_Simulated_Clock::Thread_Name() const {
  return Takes_Part() ? m_Running->name.c_str() : nullptr;
}

C_Replacement_Clock::C_Values* C_Simulated_Clock::Thread_Values() {
  return Takes_Part() && m_Running != m_Participants.front().get() ? &m_Running->values : nullptr;
}

void C_Simulated_Clock::Sleep(int ms) {
  Self().what = "Sleep";
  Wait_Until(Now_Ms() + std::max(ms, 0));
}

bool C_Simulated_Clock::Wait(const void* point, const char* what, C_Leaf_Lock& lock, double until_ms) {
  C_Participant& self = Self();
  self.what = what;
  self.point = point;
  self.notified = false;
  lock.Unlock();
  Wait_Until(until_ms);
  lock.Lock();
  return self.notified;
}

void C_Simulated_Clock::Notify(const void* point) {
  Self();
  for (const auto& participant : m_Participants) {
    if (participant->point != point) continue;
    participant->point = nullptr;
    participant->notified = true;
    Make_Ready(*participant);
  }
}

void C_Simulated_Clock::Start_Thread(const std::string& name, std::function<void()> body) {
  Self();
  auto participant = std::make_unique<C_Participant>();
  participant->number = New_Thread_Number();
  participant->name = name;
  participant->fiber = std::make_unique<C_Fiber>([this, body = std::move(body)]() mutable -> C_Fiber& {
    body();
    body = nullptr;  // what it holds ends while it still takes part
    return End();
  });
  Make_Ready(*participant);
  m_Participants.push_back(std::move(participant));
}

// On a thread that ends, as its last step.
C_Fiber& C_Simulated_Clock::End() {
  m_Running->values.clear();
  const auto self = std::find_if(m_Participants.begin(), m_Participants.end(),
                                 [this](const auto& participant) { return participant.get() == m_Running; });
  m_Ended = std::move(*self);
  m_Participants.erase(self);
  return *Choose_Next().fiber;
}

// Gives the run to the next thread, and returns when this one gets it again.
void C_Simulated_Clock::Wait_Until(double until_ms) {
  C_Participant& self = *m_Running;
  self.wake_ms = until_ms;
  if (until_ms <= Now_Ms()) Make_Ready(self);
  C_Participant& next = Choose_Next();
  if (&next != &self) self.fiber->Switch_To(*next.fiber);
}

void C_Simulated_Clock::Make_Ready(C_Participant& participant) {
  if (participant.is_ready) return;
  participant.is_ready = true;
  participant.wake_ms = Forever_Ms;
  const auto joined_later =
      std::upper_bound(m_Ready.begin(), m_Ready.end(), participant.number,
                       [](uint64_t number, const C_Participant* ready) { return number < ready->number; });
  m_Ready.insert(joined_later, &participant);
}

// Picks one of the ready threads.
C_Simulated_Clock::C_Participant& C_Simulated_Clock::Choose_Next() {
  if (m_Ready.empty()) Move_Time();
  // Every one with the same chance: the k-th replaces the one held with a chance of 1 in k.
  size_t chosen = 0;
  for (size_t k = 2; k <= m_Ready.size(); ++k)
    if (m_Choice() % k == 0) chosen = k - 1;
  m_Running = m_Ready[chosen];
  m_Ready.erase(m_Ready.begin() + static_cast<std::ptrdiff_t>(chosen));
  m_Running->is_ready = false;
  m_Running->point = nullptr;
  return *m_Running;
}

// To the earliest wake-up.
void C_Simulated_Clock::Move_Time() {
  double earliest = Forever_Ms;
  for (const auto& participant : m_Participants) earliest = std::min(earliest, participant->wake_ms);
  if (earliest == Forever_Ms) Report_Deadlock();
  m_Now_Ms.store(earliest, std::memory_order_relaxed);
  for (const auto& participant : m_Participants)
    if (participant->wake_ms <= earliest) Make_Ready(*participant);
}

void C_Simulated_Clock::Report_Deadlock() const {
  std::fprintf(stderr, "simulated clock: at %.3f ms every thread waits and none has a wake-up time:\n", Now_Ms());
  for (const auto& participant : m_Participants) {
    std::fprintf(stderr, "  %s waits in %s\n", participant->name.c_str(), participant->what);
  }
  std::abort();
}

}  // namespace orsanta
