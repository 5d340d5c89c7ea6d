#include "support/system/priority.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "support/system/trace.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int Nice_Process_High = -10;
constexpr int Nice_Above_Normal = -5;    // relative to the process
constexpr int Nice_Time_Critical = -10;  // relative to the process, where no real-time class is granted
constexpr int Nice_Least = -20;
constexpr int Real_Time_Level = 10;  // of 1 to 99: ahead of all ordinary work, behind the system's own threads
constexpr int Real_Time_Level_Reader = Real_Time_Level + 1;

// The nice value of the normal level. It is kept for the process, since the one of a thread follows that thread's
// level.
std::atomic<int>& Normal_Nice() {
  static std::atomic<int> nice{getpriority(PRIO_PROCESS, 0)};
  return nice;
}

void Report_Once() {
  static std::atomic<bool> reported{false};
  if (!reported.exchange(true)) {
    MY_TRACE0(L"the system does not grant a raised priority; the run goes on at the present one\n");
  }
}

// The system keeps a nice value for each thread; new threads inherit it.
bool Raise_Thread(int thread, int nice_value) {
  const auto id = static_cast<id_t>(thread);
  return getpriority(PRIO_PROCESS, id) <= nice_value || setpriority(PRIO_PROCESS, id, nice_value) == 0;
}

// Of the calling thread. Returns whether the system granted it.
bool Set_Class(int scheduling_class, int real_time_level) {
  sched_param parameter{};
  parameter.sched_priority = real_time_level;
  return pthread_setschedparam(pthread_self(), scheduling_class, &parameter) == 0;
}

}  // namespace

void SetPriorityClass(int process_class) {
  if (process_class != Process_Class_High || Is_Simulated_Time()) return;
  const int normal = Normal_Nice();
  if (!Raise_Thread(0, Nice_Process_High)) return Report_Once();
  Normal_Nice() = std::min(normal, Nice_Process_High);
  std::error_code error;
  // A thread that has ended since the listing is no refusal.
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", error))
    Raise_Thread(std::atoi(entry.path().filename().c_str()), Nice_Process_High);
}

void SetThreadPriority(int level) {
  if (Is_Simulated_Time()) return;
  const int normal = Normal_Nice();
  if (level < Priority_Above_Normal) {
    Set_Class(SCHED_OTHER, 0);
    if (setpriority(PRIO_PROCESS, 0, normal) != 0) Report_Once();
    return;
  }
  if (level >= Priority_Time_Critical) {
    const int real_time_level = level > Priority_Time_Critical ? Real_Time_Level_Reader : Real_Time_Level;
    if (Set_Class(SCHED_RR | SCHED_RESET_ON_FORK, real_time_level)) return;
  }
  const int offset = level >= Priority_Time_Critical ? Nice_Time_Critical : Nice_Above_Normal;
  if (!Raise_Thread(0, std::max(normal + offset, Nice_Least))) Report_Once();
}

void Stay_On_Processor() {
  const int processor = sched_getcpu();
  if (Is_Simulated_Time() || processor < 0 || (sched_getscheduler(0) & ~SCHED_RESET_ON_FORK) != SCHED_RR) return;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(processor), &one);
  sched_setaffinity(0, sizeof(one), &one);  // a refusal costs time and nothing else
}

}  // namespace orsanta
