#include "support/time/clock.h"

#include <sys/prctl.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <thread>
#include <utility>

#include "support/time/simulation.h"

namespace orsanta {

namespace {

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

timespec To_Monotonic(double ms) {
  const double whole_s = std::floor(ms / 1000.0);
  return {static_cast<time_t>(whole_s), static_cast<long>((ms - whole_s * 1000.0) * 1e6)};
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
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
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

C_Wait_Point::C_Wait_Point(const char* what) : m_What(what) {
  pthread_condattr_t attributes;
  pthread_condattr_init(&attributes);
  pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC);
  pthread_cond_init(&m_Waiters, &attributes);
  pthread_condattr_destroy(&attributes);
}

C_Wait_Point::~C_Wait_Point() {
  pthread_cond_destroy(&m_Waiters);
}

void C_Wait_Point::Wait(C_Leaf_Lock& lock) {
  Wait_Until(lock, Forever_Ms);
}

bool C_Wait_Point::Wait_Until(C_Leaf_Lock& lock, double until_ms) {
  if (C_Simulation* simulation = C_Simulation::Current()) {
    ++m_Simulated_Waiters;
    const bool was_notified = simulation->Wait(this, m_What, lock, until_ms);
    --m_Simulated_Waiters;
    return was_notified;
  }
  if (until_ms == Forever_Ms) {
    pthread_cond_wait(&m_Waiters, &lock.m_Mutex);
    return true;
  }
  Ask_For_Sharp_Timers();
  const timespec until = To_Monotonic(until_ms);
  return pthread_cond_timedwait(&m_Waiters, &lock.m_Mutex, &until) != ETIMEDOUT;
}

void C_Wait_Point::Notify_All() {
  if (C_Simulation* simulation = C_Simulation::Current()) {
    if (m_Simulated_Waiters > 0) simulation->Notify(this);
  } else {
    pthread_cond_broadcast(&m_Waiters);
  }
}

uint64_t This_Thread_Number() {
  thread_local const uint64_t own_number = clock_thread::New_Number();
  const C_Simulation* simulation = C_Simulation::Current();
  const uint64_t number = simulation != nullptr ? simulation->Thread_Number() : 0;
  return number != 0 ? number : own_number;
}

void Copy_Thread_Name(char* name, size_t size) {
  const C_Simulation* simulation = C_Simulation::Current();
  const char* simulated = simulation != nullptr ? simulation->Thread_Name() : nullptr;
  if (simulated != nullptr) {
    std::snprintf(name, size, "%s", simulated);
  } else if (pthread_getname_np(pthread_self(), name, size) != 0) {
    std::snprintf(name, size, "unknown");
  }
}

namespace clock_thread {

bool Start(const std::string& name, std::function<void()> body) {
  C_Simulation* simulation = C_Simulation::Current();
  if (simulation != nullptr) simulation->Start(name, std::move(body));
  return simulation != nullptr;
}

C_Values* Simulated_Values() {
  C_Simulation* simulation = C_Simulation::Current();
  return simulation != nullptr ? simulation->Thread_Values() : nullptr;
}

uint64_t New_Number() {
  static std::atomic<uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace clock_thread

}  // namespace orsanta
