#include "support/priority.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "support/clock.h"
#include "support/trace.h"

namespace orsanta {

namespace {

constexpr int Nice_Process_High = -10;
constexpr int Nice_Step_Above_Normal = -5;
constexpr int Nice_Least = -20;
constexpr int Real_Time_Level = 10;  // of 1 to 99: ahead of all ordinary work, behind the system's own threads

void Say_Once() {
  static std::atomic<bool> said{false};
  if (!said.exchange(true)) {
    MY_TRACE0(L"the system does not grant a raised priority; the run goes on at the present one\n");
  }
}

// The system keeps a nice value for each thread; new threads inherit it.
bool Raise_Thread(int thread, int nice_value) {
  const auto id = static_cast<id_t>(thread);
  return getpriority(PRIO_PROCESS, id) <= nice_value || setpriority(PRIO_PROCESS, id, nice_value) == 0;
}

}  // namespace

void SetPriorityClass(int process_class) {
  if (process_class != Process_Class_High || Is_Simulated_Time()) return;
  bool granted = Raise_Thread(0, Nice_Process_High);
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task", error)) {
    if (!granted) break;
    // A thread that has ended meanwhile is no refusal.
    Raise_Thread(std::atoi(entry.path().filename().c_str()), Nice_Process_High);
  }
  if (!granted) Say_Once();
}

void SetThreadPriority(int level) {
  if (level < Priority_Above_Normal || Is_Simulated_Time()) return;
  if (level >= Priority_Time_Critical) {
    sched_param parameter{};
    parameter.sched_priority = Real_Time_Level;
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameter) == 0) return;
  }
  const int step = level >= Priority_Time_Critical ? 2 * Nice_Step_Above_Normal : Nice_Step_Above_Normal;
  if (!Raise_Thread(0, std::max(getpriority(PRIO_PROCESS, 0) + step, Nice_Least))) Say_Once();
}

void Stay_On_Processor() {
  const int processor = sched_getcpu();
  if (Is_Simulated_Time() || processor < 0 || sched_getscheduler(0) != SCHED_RR) return;
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(static_cast<size_t>(processor), &one);
  sched_setaffinity(0, sizeof(one), &one);  // a refusal costs time and nothing else
}

}  // namespace orsanta
