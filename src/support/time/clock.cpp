#include "support/time/clock.h"

#include <sys/prctl.h>

#include <chrono>
#include <ctime>
#include <limits>
#include <thread>

#include "support/time/simulation.h"

namespace orsanta {

namespace {

using C_Steady = std::chrono::steady_clock;

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

C_Steady::time_point To_Steady(double ms) {
  return C_Steady::time_point(
      std::chrono::duration_cast<C_Steady::duration>(std::chrono::duration<double, std::milli>(ms)));
}

// The kernel may round a thread's sleeps up by its timer slack, 50 microseconds by default. A poll of 1 ms would then
// last 5 percent too long, and the poll is the unit of every wait in this system.
void Ask_For_Sharp_Timers() {
  thread_local const bool asked = prctl(PR_SET_TIMERSLACK, 1000UL, 0UL, 0UL, 0UL) == 0;
  static_cast<void>(asked);
}

}  // namespace

bool Is_Simulated_Time() {
  return C_Simulation::Current() != nullptr;
}

double Now_Ms() {
  if (C_Simulation* simulation = C_Simulation::Current()) return simulation->Now_Ms();
  return std::chrono::duration<double, std::milli>(C_Steady::now().time_since_epoch()).count();
}

C_Local_Time Local_Time_Now() {
  std::tm parts{};
  int64_t ms = 0;
  if (const C_Simulation* simulation = C_Simulation::Current()) {
    constexpr std::time_t Simulated_Start = 1577836800;  // seconds: 2020-01-01 00:00:00, read as UTC below
    ms = static_cast<int64_t>(simulation->Now_Ms());
    const std::time_t seconds = Simulated_Start + ms / 1000;
    gmtime_r(&seconds, &parts);
  } else {
    const auto since_1970 = std::chrono::system_clock::now().time_since_epoch();
    ms = std::chrono::duration_cast<std::chrono::milliseconds>(since_1970).count();
    const std::time_t seconds = ms / 1000;
    localtime_r(&seconds, &parts);
  }
  return {parts.tm_year + 1900, parts.tm_mon + 1,           parts.tm_mday, parts.tm_hour, parts.tm_min,
          parts.tm_sec,         static_cast<int>(ms % 1000)};
}

void Sleep(int ms) {
  if (C_Simulation* simulation = C_Simulation::Current()) {
    simulation->Sleep(ms);
    return;
  }
  Ask_For_Sharp_Timers();
  if (ms <= 0) {
    std::this_thread::yield();
  } else {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
  }
}

void C_Wait_Point::Wait(std::unique_lock<std::mutex>& lock) {
  Wait_Until(lock, Forever_Ms);
}

bool C_Wait_Point::Wait_Until(std::unique_lock<std::mutex>& lock, double until_ms) {
  if (C_Simulation* simulation = C_Simulation::Current()) return simulation->Wait(this, m_What, lock, until_ms);
  if (until_ms == Forever_Ms) {
    m_Waiters.wait(lock);
    return true;
  }
  Ask_For_Sharp_Timers();
  return m_Waiters.wait_until(lock, To_Steady(until_ms)) == std::cv_status::no_timeout;
}

void C_Wait_Point::Notify_All() {
  if (C_Simulation* simulation = C_Simulation::Current()) {
    simulation->Notify(this);
  } else {
    m_Waiters.notify_all();
  }
}

namespace clock_thread {

uint64_t Announce(const std::string& name) {
  C_Simulation* simulation = C_Simulation::Current();
  return simulation ? simulation->Announce(name) : 0;
}

void Enter(uint64_t ticket) {
  if (ticket != 0) C_Simulation::Current()->Enter(ticket);
}

void Leave(uint64_t ticket) {
  if (ticket != 0) C_Simulation::Current()->Leave();
}

}  // namespace clock_thread

}  // namespace orsanta
