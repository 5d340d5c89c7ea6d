#include "support/time/simulation.h"

#include <semaphore.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

std::atomic<C_Simulation*> the_simulation{nullptr};

}  // namespace

struct C_Simulation::C_Participant {
  explicit C_Participant(std::string its_name) : name(std::move(its_name)) { sem_init(&turn, 0, 0); }
  ~C_Participant() { sem_destroy(&turn); }
  C_Participant(const C_Participant&) = delete;
  C_Participant& operator=(const C_Participant&) = delete;

  // A new thread is ready at the present time.
  double wake_ms = -Forever_Ms;  // from then on it may run
  const void* point = nullptr;   // where it waits; null while it sleeps, runs or is ready
  bool notified = false;         // the last wait ended by a notification
  sem_t turn;                    // raised when the run is handed to this thread
  const char* what = "start";    // where it waits, for the report
  std::string name;
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
  m_Participants.push_back(std::make_unique<C_Participant>("installing thread"));
  the_participant = m_Participants.back().get();
  Stay_On_This_Processor();
}

// New threads inherit it. Where the system refuses, the run is slower and otherwise the same.
void C_Simulation::Stay_On_This_Processor() {
  const int processor = sched_getcpu();
  if (processor < 0 || sched_getaffinity(0, sizeof(m_Old_Processors), &m_Old_Processors) != 0) return;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(processor), &one);
  m_Pinned = sched_setaffinity(0, sizeof(one), &one) == 0;
}

C_Simulation::~C_Simulation() {
  if (m_Participants.size() != 1) {
    std::fputs("simulated clock: these threads still take part at its end:\n", stderr);
    for (const auto& participant : m_Participants) std::fprintf(stderr, "  %s\n", participant->name.c_str());
    std::abort();
  }
  if (m_Pinned) sched_setaffinity(0, sizeof(m_Old_Processors), &m_Old_Processors);
  the_participant = nullptr;
  the_simulation.store(nullptr, std::memory_order_release);
}

C_Simulation::C_Participant& C_Simulation::Self() const {
  if (the_participant == nullptr) {
    std::fputs("simulated clock: a thread that was not made through support/threads/thread waits or notifies\n",
               stderr);
    std::abort();
  }
  return *static_cast<C_Participant*>(the_participant);
}

void C_Simulation::Sleep(int ms) {
  C_Participant& self = Self();
  self.what = "Sleep";
  self.wake_ms = Now_Ms() + std::max(ms, 0);
  Hand_Over(self);
}

bool C_Simulation::Wait(const void* point, const char* what, C_Leaf_Lock& lock, double until_ms) {
  C_Participant& self = Self();
  self.what = what;
  self.wake_ms = until_ms;
  self.point = point;
  self.notified = false;
  lock.Unlock();
  Hand_Over(self);
  lock.Lock();
  return self.notified;
}

void C_Simulation::Notify(const void* point) {
  Self();
  for (const auto& participant : m_Participants) {
    if (participant->point != point) continue;
    participant->point = nullptr;
    participant->notified = true;
    participant->wake_ms = -Forever_Ms;
  }
}

uint64_t C_Simulation::Announce(const std::string& name) {
  Self();
  m_Participants.push_back(std::make_unique<C_Participant>(name));
  return reinterpret_cast<uint64_t>(m_Participants.back().get());
}

void C_Simulation::Enter(uint64_t ticket) {
  the_participant = reinterpret_cast<C_Participant*>(ticket);  // NOLINT: a ticket is the address as a number
  while (sem_wait(&Self().turn) != 0 && errno == EINTR) {
  }
}

void C_Simulation::Leave() {
  const auto found = std::find_if(m_Participants.begin(), m_Participants.end(),
                                  [](const auto& participant) { return participant.get() == the_participant; });
  m_Participants.erase(found);
  the_participant = nullptr;
  sem_post(&Choose_Next().turn);
}

// Gives the run to the next thread and blocks until this one gets it again.
void C_Simulation::Hand_Over(C_Participant& self) {
  C_Participant& next = Choose_Next();
  if (&next == &self) return;
  sem_post(&next.turn);
  while (sem_wait(&self.turn) != 0 && errno == EINTR) {
  }
}

// Picks one of the threads that may run at the earliest possible time, and moves the time there.
C_Simulation::C_Participant& C_Simulation::Choose_Next() {
  double earliest = Forever_Ms;
  for (const auto& participant : m_Participants) earliest = std::min(earliest, participant->wake_ms);
  if (earliest == Forever_Ms) Report_Deadlock();
  const double now = std::max(Now_Ms(), earliest);
  m_Now_Ms.store(now, std::memory_order_relaxed);
  uint64_t candidates = 0;
  C_Participant* chosen = nullptr;
  // One pass, every candidate with the same chance: the k-th replaces the one held with a chance of 1 in k.
  for (const auto& participant : m_Participants) {
    if (participant->wake_ms > now) continue;
    ++candidates;
    if (candidates == 1 || m_Choice() % candidates == 0) chosen = participant.get();
  }
  chosen->point = nullptr;
  chosen->wake_ms = Forever_Ms;
  return *chosen;
}

void C_Simulation::Report_Deadlock() const {
  std::fprintf(stderr, "simulated clock: at %.3f ms every thread waits and none has a wake-up time:\n", Now_Ms());
  for (const auto& participant : m_Participants) {
    std::fprintf(stderr, "  %s waits in %s\n", participant->name.c_str(), participant->what);
  }
  std::abort();
}

C_Simulated_Clock::C_Simulated_Clock(uint64_t seed) : m_Simulation(std::make_unique<C_Simulation>(seed)) {}
C_Simulated_Clock::~C_Simulated_Clock() = default;

}  // namespace orsanta
