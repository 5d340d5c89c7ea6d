#include "support/time/clock.h"

#include <sched.h>
#include <sys/prctl.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <limits>
#include <thread>

#include "support/time/replacement_clock.h"

namespace orsanta {

namespace {

constexpr double Forever_Ms = std::numeric_limits<double>::infinity();

std::atomic<C_Replacement_Clock*> the_replacement{nullptr};

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

// The end of a sleep: the tick of the processor that is nearest to the time asked for. Threads that poll in step are so
// woken by one interrupt in place of one each, at half to two thirds of the price, and no time-out of counted polls
// drifts. The processors' ticks stand apart, so that the threads of one do not meet those of another at every lock.
timespec Nearest_Tick(int ms) {
  constexpr int64_t Tick_Ns = 1000000;
  constexpr int Offsets = 4;
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  const int64_t offset_ns = sched_getcpu() % Offsets * (Tick_Ns / Offsets);
  const int64_t asked_ns = now.tv_sec * 1000000000 + now.tv_nsec + ms * Tick_Ns - offset_ns;
  const int64_t tick_ns = (asked_ns + Tick_Ns / 2) / Tick_Ns * Tick_Ns + offset_ns;
  return {tick_ns / 1000000000, tick_ns % 1000000000};
}

}  // namespace

bool Is_Simulated_Time() {
  return C_Replacement_Clock::Current() != nullptr;
}

double Now_Ms() {
  if (C_Replacement_Clock* clock = C_Replacement_Clock::Current()) return clock->Now_Ms();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

C_Local_Time Local_Time_Now() {
  std::tm parts{};
  int64_t ms = 0;
  if (const C_Replacement_Clock* clock = C_Replacement_Clock::Current()) {
    constexpr std::time_t Simulated_Start = 1577836800;  // seconds: 2020-01-01 00:00:00, read as UTC below
    ms = static_cast<int64_t>(clock->Now_Ms());
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
  if (C_Replacement_Clock* clock = C_Replacement_Clock::Current()) {
    clock->Sleep(ms);
    return;
  }
  Ask_For_Sharp_Timers();
  if (ms <= 0) {
    std::this_thread::yield();
  } else {
    const timespec tick = Nearest_Tick(ms);
    while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &tick, nullptr) == EINTR) {
    }
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
  if (C_Replacement_Clock* clock = C_Replacement_Clock::Current()) {
    ++m_Simulated_Waiters;
    const bool was_notified = clock->Wait(this, m_What, lock, until_ms);
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
  if (C_Replacement_Clock* clock = C_Replacement_Clock::Current()) {
    if (m_Simulated_Waiters > 0) clock->Notify(this);
  } else {
    pthread_cond_broadcast(&m_Waiters);
  }
}

uint64_t This_Thread_Number() {
  thread_local const uint64_t own_number = New_Thread_Number();
  const C_Replacement_Clock* clock = C_Replacement_Clock::Current();
  const uint64_t number = clock != nullptr ? clock->Thread_Number() : 0;
  return number != 0 ? number : own_number;
}

void Copy_Thread_Name(char* name, size_t size) {
  const C_Replacement_Clock* clock = C_Replacement_Clock::Current();
  const char* simulated = clock != nullptr ? clock->Thread_Name() : nullptr;
  if (simulated != nullptr) {
    std::snprintf(name, size, "%s", simulated);
  } else if (pthread_getname_np(pthread_self(), name, size) != 0) {
    std::snprintf(name, size, "unknown");
  }
}

bool C_Replacement_Clock::Install() {
  C_Replacement_Clock* none = nullptr;
  return the_replacement.compare_exchange_strong(none, this);
}

void C_Replacement_Clock::Remove() {
  the_replacement.store(nullptr, std::memory_order_release);
}

C_Replacement_Clock* C_Replacement_Clock::Current() {
  return the_replacement.load(std::memory_order_acquire);
}

uint64_t New_Thread_Number() {
  static std::atomic<uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

}  // namespace orsanta
