#include "support/base/report_window.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>

#include "support/system/environment.h"

namespace orsanta {

namespace {

constexpr const char* Program_Name = "orsanta_report";

// Waits until the last process that could write to the pipe has closed it; none ever writes.
void Wait_For_End_Of(int pipe) {
  char nothing = 0;
  while (read(pipe, &nothing, 1) < 0 && errno == EINTR) {
  }
}

// The waiting child is a copy of a broken process with one thread: it makes system calls and nothing else. It keeps
// nothing of the process but the end of `pipe`: no file, lock or port, no terminal, no raised priority.
[[noreturn]] void Wait_And_Run(const char* program, int pipe, const char* report, const char* dump) {
  setsid();
  const int nowhere = open("/dev/null", O_WRONLY);
  dup2(pipe, STDIN_FILENO);
  dup2(nowhere, STDOUT_FILENO);
  dup2(nowhere, STDERR_FILENO);
  close_range(STDERR_FILENO + 1, UINT_MAX, 0);
  const sched_param ordinary{};
  sched_setscheduler(0, SCHED_OTHER, &ordinary);
  setpriority(PRIO_PROCESS, 0, 0);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);

  Wait_For_End_Of(STDIN_FILENO);  // that is, of the process
  execl(program, Program_Name, report, dump, static_cast<char*>(nullptr));
  _exit(127);
}

}  // namespace

void Show_Report_After_End(const char* report, const char* dump) {
  char program[PATH_MAX];
  if (!Has_Display() || !Find_Beside_Library(Program_Name, program)) return;
  int ends[2], kept[2];
  if (pipe2(ends, O_CLOEXEC) != 0 || pipe2(kept, O_CLOEXEC) != 0) return;
  // _Fork, since fork would wait for the locks of the heap.
  const pid_t child = _Fork();
  if (child == 0) Wait_And_Run(program, ends[0], report, dump);
  close(kept[1]);
  // The process ends only after the child has closed its copies: a file lock must not outlive its process.
  if (child > 0) Wait_For_End_Of(kept[0]);
}

}  // namespace orsanta
