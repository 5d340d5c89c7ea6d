#include "support/simulation.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "support/clock.h"

namespace orsanta {

namespace {

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

std::atomic<C_Simulation*> the_simulation{nullptr};

}  // namespace

struct C_Simulation::C_Participant {
  uint64_t ticket = 0;
  std::string name;
  bool ready = true;             // may be handed the run at the present time
  bool running = false;          // holds the run
  bool notified = false;         // the last wait ended by a notification
  double wake_ms = Forever_Ms;   // wake-up time of a wait
  const void* point = nullptr;   // wait point of a wait, null for a sleep
  const char* what = "";         // where it waits, for the deadlock report
  std::condition_variable turn;  // signalled when the run is handed to this thread
};

namespace {
thread_local void* the_participant = nullptr;  // the C_Participant of the calling thread
}

C_Simulation* C_Simulation::Current() {
  return the_simulation.load(std::memory_order_acquire);
}

C_Simulation::C_Simulation(uint64_t seed) : m_Choice(seed) {
  C_Simulation* expected = nullptr;
  if (!the_simulation.compare_exchange_strong(expected, this)) {
    std::fputs("simulated clock: one is installed already\n", stderr);
    std::abort();
  }
  auto self = std::make_unique<C_Participant>();
  self->ticket = m_Next_Ticket++;
  self->name = "installing thread";
  self->running = true;
  the_participant = self.get();
  m_Participants.push_back(std::move(self));
}

C_Simulation::~C_Simulation() {
  {
    const std::lock_guard<std::mutex> guard(m_Lock);
    if (m_Participants.size() != 1) {
      std::fputs("simulated clock: these threads still take part at its end:\n", stderr);
      for (const auto& participant : m_Participants) std::fprintf(stderr, "  %s\n", participant->name.c_str());
      std::abort();
    }
  }
  the_participant = nullptr;
  the_simulation.store(nullptr, std::memory_order_release);
}

double C_Simulation::Now_Ms() const {
  const std::lock_guard<std::mutex> guard(m_Lock);
  return m_Now_Ms;
}

C_Simulation::C_Participant& C_Simulation::Self() const {
  if (the_participant == nullptr) {
    std::fputs("simulated clock: a thread that was not made through support/thread waits\n", stderr);
    std::abort();
  }
  return *static_cast<C_Participant*>(the_participant);
}

void C_Simulation::Sleep(int ms) {
  C_Participant& self = Self();
  const std::lock_guard<std::mutex> guard(m_Lock);
  self.point = nullptr;
  self.what = "Sleep";
  self.wake_ms = m_Now_Ms + std::max(ms, 0);
  self.ready = false;
  Hand_Over(self);
}

bool C_Simulation::Wait(const void* point, const char* what, std::unique_lock<std::mutex>& lock, double until_ms) {
  C_Participant& self = Self();
  {
    const std::lock_guard<std::mutex> guard(m_Lock);
    lock.unlock();
    self.point = point;
    self.what = what;
    self.wake_ms = std::max(until_ms, m_Now_Ms);
    self.ready = false;
    self.notified = false;
    Hand_Over(self);
  }
  lock.lock();
  return self.notified;
}

void C_Simulation::Notify(const void* point) {
  const std::lock_guard<std::mutex> guard(m_Lock);
  for (const auto& participant : m_Participants) {
    if (participant->point != point || participant->ready || participant->running) continue;
    participant->ready = true;
    participant->notified = true;
  }
}

uint64_t C_Simulation::Announce(const std::string& name) {
  auto participant = std::make_unique<C_Participant>();
  const std::lock_guard<std::mutex> guard(m_Lock);
  participant->ticket = m_Next_Ticket++;
  participant->name = name;
  participant->wake_ms = m_Now_Ms;
  m_Participants.push_back(std::move(participant));
  return m_Participants.back()->ticket;
}

void C_Simulation::Enter(uint64_t ticket) {
  std::unique_lock<std::mutex> guard(m_Lock);
  const auto found = std::find_if(m_Participants.begin(), m_Participants.end(),
                                  [ticket](const auto& participant) { return participant->ticket == ticket; });
  C_Participant& self = **found;
  the_participant = &self;
  self.turn.wait(guard, [&self] { return self.running; });
}

void C_Simulation::Leave() {
  const std::lock_guard<std::mutex> guard(m_Lock);
  const auto found = std::find_if(m_Participants.begin(), m_Participants.end(),
                                  [](const auto& participant) { return participant.get() == the_participant; });
  m_Participants.erase(found);
  the_participant = nullptr;
  C_Participant* next = Choose_Next();
  next->running = true;
  next->turn.notify_one();
}

// Gives the run to the next thread and blocks until it comes back. m_Lock is held by the caller's guard.
void C_Simulation::Hand_Over(C_Participant& self) {
  self.running = false;
  C_Participant* next = Choose_Next();
  next->running = true;
  if (next == &self) return;
  next->turn.notify_one();
  std::unique_lock<std::mutex> held(m_Lock, std::adopt_lock);
  self.turn.wait(held, [&self] { return self.running; });
  held.release();
}

// Picks one of the threads that may run at the earliest possible time, and moves the time there.
C_Simulation::C_Participant* C_Simulation::Choose_Next() {
  double earliest = Forever_Ms;
  for (const auto& participant : m_Participants) {
    earliest = std::min(earliest, participant->ready ? m_Now_Ms : participant->wake_ms);
  }
  if (earliest == Forever_Ms) Report_Deadlock();
  m_Now_Ms = std::max(m_Now_Ms, earliest);
  uint64_t candidates = 0;
  C_Participant* chosen = nullptr;
  // One pass, every candidate with the same chance: the k-th replaces the one held with a chance of 1 in k.
  for (const auto& participant : m_Participants) {
    if (!participant->ready && participant->wake_ms > m_Now_Ms) continue;
    ++candidates;
    if (candidates == 1 || m_Choice() % candidates == 0) chosen = participant.get();
  }
  chosen->ready = false;
  chosen->wake_ms = Forever_Ms;
  return chosen;
}

void C_Simulation::Report_Deadlock() const {
  std::fprintf(stderr, "simulated clock: at %.3f ms every thread waits and none has a wake-up time:\n", m_Now_Ms);
  for (const auto& participant : m_Participants) {
    std::fprintf(stderr, "  %s waits in %s\n", participant->name.c_str(), participant->what);
  }
  std::abort();
}

C_Simulated_Clock::C_Simulated_Clock(uint64_t seed) : m_Simulation(std::make_unique<C_Simulation>(seed)) {}
C_Simulated_Clock::~C_Simulated_Clock() = default;

}  // namespace orsanta
