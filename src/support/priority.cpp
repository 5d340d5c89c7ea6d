#include "support/priority.h"

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>

#include "support/trace.h"

namespace orsanta {

namespace {

constexpr int Nice_Process_High = -10;
constexpr int Nice_Thread_Above_Normal = -5;
constexpr int Real_Time_Level = 10;  // of 1 to 99: ahead of all ordinary work, behind the system's own threads

void Say_Once(const wchar_t* text) {
  static std::atomic<bool> said{false};
  if (!said.exchange(true)) MY_TRACE0(text);
}

}  // namespace

void SetPriorityClass(int process_class) {
  if (process_class != Process_Class_High) return;
  if (getpriority(PRIO_PROCESS, 0) <= Nice_Process_High) return;
  if (setpriority(PRIO_PROCESS, 0, Nice_Process_High) != 0) {
    Say_Once(L"the system does not grant a raised priority; the run goes on at the present one\r\n");
  }
}

void SetThreadPriority(int level) {
  if (level >= Priority_Time_Critical) {
    sched_param parameter{};
    parameter.sched_priority = Real_Time_Level;
    if (pthread_setschedparam(pthread_self(), SCHED_RR, &parameter) == 0) return;
  } else if (level == Priority_Above_Normal) {
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    if (setpriority(PRIO_PROCESS, thread, Nice_Thread_Above_Normal) == 0) return;
  } else {
    return;
  }
  Say_Once(L"the system does not grant a raised priority; the run goes on at the present one\r\n");
}

}  // namespace orsanta
