#include "support/base/report_window.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sched.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace orsanta {

namespace {

constexpr const char* Program_Name = "orsanta_report";

bool Is_Set(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

// Leaves the path of the program in `path` if it stands in the folder of the file `neighbour`.
bool Is_Beside(const char* neighbour, char (&path)[PATH_MAX]) {
  const char* slash = std::strrchr(neighbour, '/');
  if (slash == nullptr) return false;
  const int length =
      std::snprintf(path, sizeof(path), "%.*s/%s", static_cast<int>(slash - neighbour), neighbour, Program_Name);
  return length > 0 && static_cast<size_t>(length) < sizeof(path) && access(path, X_OK) == 0;
}

// The program beside the library that holds this code, or else beside the host program.
bool Find_Program(char (&path)[PATH_MAX]) {
  Dl_info self{};
  if (dladdr(reinterpret_cast<const void*>(&Show_Report_After_End), &self) != 0 && self.dli_fname != nullptr &&
      Is_Beside(self.dli_fname, path)) {
    return true;
  }
  char host[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", host, sizeof(host) - 1);
  if (length <= 0) return false;
  host[length] = '\0';
  return Is_Beside(host, path);
}

// Nobody ever writes: the stream ends when the last who could is gone.
void Wait_For_End_Of(int stream) {
  char nothing = 0;
  while (read(stream, &nothing, 1) < 0 && errno == EINTR) {
  }
}

// The waiting child is a copy of a broken process with one thread: it calls the system and nothing else. It keeps
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
  if ((!Is_Set("DISPLAY") && !Is_Set("WAYLAND_DISPLAY")) || !Find_Program(program)) return;
  int ends[2], kept[2];
  if (pipe2(ends, O_CLOEXEC) != 0 || pipe2(kept, O_CLOEXEC) != 0) return;
  // _Fork, since fork would wait for the locks of the heap.
  const pid_t child = _Fork();
  if (child == 0) Wait_And_Run(program, ends[0], report, dump);
  close(kept[1]);
  // The process ends once the child has let go of what it has a copy of: a lock must not outlive its process.
  if (child > 0) Wait_For_End_Of(kept[0]);
}

}  // namespace orsanta
