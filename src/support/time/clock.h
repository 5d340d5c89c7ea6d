// Time and waiting: the one place of the system that asks the operating system for time, sleep or a blocking wait.
//
// The system clock, monotonic, serves every real run. Tests put the simulated clock (simulated_clock/) in its place.
//
// All calls may come from any thread; under the simulated clock only from threads that take part in it.
#pragma once

#include <pthread.h>

#include <cstddef>
#include <cstdint>

#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

// Milliseconds of the present clock, with sub-millisecond resolution; never runs backwards.
double Now_Ms();

// True while the process runs on simulated time.
bool Is_Simulated_Time();

// Suspends the calling thread for ms milliseconds, to the nearest tick of 1 ms in real time, so that one sleep may be
// up to half a millisecond shorter or longer and a row of them is not (0 or less: lets other threads run and returns).
void Sleep(int ms);

// Date and time of day, local.
struct C_Local_Time {
  int year = 0;
  int month = 0;  // 1 to 12
  int day = 0;    // 1 to 31
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
};

// The local time, for file names and log records; it may jump when the machine's clock is set, so that no
// interval is measured by it. Simulated time counts from midnight on 1 January 2020.
C_Local_Time Local_Time_Now();

// A number of the calling thread: never 0, and never another's, not even after its end.
uint64_t This_Thread_Number();

// Its name, cut to `size` bytes with the end of the text. For the report of a crash too: it takes no memory and no
// lock.
void Copy_Thread_Name(char* name, size_t size);

// A place where threads wait until they are notified or until a time. It works like a condition variable: the caller
// holds `lock`, a leaf lock of its own, tests its condition in a loop, and holds the lock again after the return.
class C_Wait_Point : private C_Uncopied {
 public:
  // what: names the place in the report of a run in which every thread waits.
  explicit C_Wait_Point(const char* what);
  ~C_Wait_Point();

  // Waits until notified. May also return without cause.
  void Wait(C_Leaf_Lock& lock) REQUIRES(lock);
  // As Wait, but not beyond the time until_ms of Now_Ms. Returns false when that time has come.
  bool Wait_Until(C_Leaf_Lock& lock, double until_ms) REQUIRES(lock);
  // Wakes all waiters. The caller holds the lock that they wait with.
  void Notify_All();

 private:
  const char* m_What;
  pthread_cond_t m_Waiters;     // of the system clock
  int m_Simulated_Waiters = 0;  // of the simulated one, which knows who they are
};

}  // namespace orsanta
