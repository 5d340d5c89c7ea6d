// CVCDumpMessage::DumpFileProcess. It runs when the process cannot go on, possibly for want of memory: it works with
// plain buffers and writes straight to the file.
#include "support/dump.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <typeinfo>

#include "support/assertion.h"
#include "support/clock.h"
#include "support/stack_text.h"

namespace orsanta {

namespace {

constexpr unsigned Longest_Dump_S = 30;  // a handler that hangs, on a lock of the heap perhaps, is ended by the system
constexpr size_t Line_Room = 4096;

C_Stack the_stack;
std::atomic<pid_t> the_reporter{0};
std::atomic<pid_t> the_dumper{0};

void Put(int file, const char* text) {
  for (size_t rest = std::strlen(text); rest > 0;) {
    const ssize_t written = write(file, text, rest);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    text += written;
    rest -= static_cast<size_t>(written);
  }
}

__attribute__((format(printf, 2, 3))) void Put_Line(int file, const char* format, ...) {
  char line[Line_Room];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(line, sizeof(line), format, arguments);
  va_end(arguments);
  Put(file, line);
  Put(file, "\n");
}

[[noreturn]] void End_At_Once(int) {
  _exit(CVCDumpMessage::Exit_Status);
}

// From here on a second failure ends the process instead of starting over.
void Arm_Against_Second_Failure() {
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(fault, &End_At_Once);
  std::signal(SIGALRM, &End_At_Once);
  sigset_t alarm_only;
  sigemptyset(&alarm_only);
  sigaddset(&alarm_only, SIGALRM);
  pthread_sigmask(SIG_UNBLOCK, &alarm_only, nullptr);
  alarm(Longest_Dump_S);
}

// Opens the dump in `folder` ("" for the working directory) and leaves its name in `path`.
int Open_Dump(const char* folder, char* path, size_t room) {
  const C_Local_Time now = Local_Time_Now();
  std::snprintf(path, room, "%s%s%s_%d_%04d%02d%02d_%02d%02d%02d.dmp", folder, folder[0] == '\0' ? "" : "/",
                program_invocation_short_name, static_cast<int>(getpid()), now.year, now.month, now.day, now.hour,
                now.minute, now.second);
  return open(path, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
}

void Put_Cause(int file) {
  Put(file, CVCDumpMessage::m_cErrorMsg().c_str());
  Put(file, "\n\n");
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (type == nullptr) {
    Put_Line(file, "ended by: std::terminate");
    return;
  }
  try {
    throw;
  } catch (const CMy_Assert_Exception&) {
    Put_Line(file, "ended by: the report above");
  } catch (const std::exception& error) {
    Put_Line(file, "ended by: uncaught %s: %s", type->name(), error.what());
  } catch (...) {
    Put_Line(file, "ended by: uncaught %s", type->name());
  }
}

void Put_Stack(int file) {
  C_Stack present;
  const C_Stack* stack = &the_stack;
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (the_reporter != gettid() || type == nullptr || *type != typeid(CMy_Assert_Exception)) {
    present.Capture();
    stack = &present;
  }
  Put_Line(file, "\nstack of thread %d:", static_cast<int>(gettid()));
  char line[Line_Room];
  for (int i = 0; i < stack->depth; ++i) {
    Frame_Text(stack->address[i], line, sizeof(line));
    Put_Line(file, "#%d %s", i, line);
  }
}

// The mappings that hold code, one a line, as the system lists them.
void Put_Modules(int file) {
  Put_Line(file, "\nmodules:");
  std::FILE* maps = std::fopen("/proc/self/maps", "re");
  if (maps == nullptr) return;
  char line[Line_Room];
  while (std::fgets(line, sizeof(line), maps) != nullptr) {
    const char* rights = std::strchr(line, ' ');
    if (rights != nullptr && std::strlen(rights) > 3 && rights[3] == 'x' && std::strchr(line, '/') != nullptr) {
      Put(file, line);
    }
  }
  std::fclose(maps);
}

}  // namespace

void Keep_Stack_For_Dump() {
  the_stack.Capture();
  the_reporter = gettid();
}

void CVCDumpMessage::DumpFileProcess() {
  pid_t nobody = 0;
  if (!the_dumper.compare_exchange_strong(nobody, gettid())) {
    if (nobody == gettid()) End_At_Once(0);
    for (;;) pause();  // another thread writes its dump and ends the process
  }
  Arm_Against_Second_Failure();
  char path[Line_Room];
  int file = Open_Dump("", path, sizeof(path));
  if (file < 0) {
    const char* folder = std::getenv("TMPDIR");
    file = Open_Dump(folder != nullptr && folder[0] != '\0' ? folder : "/tmp", path, sizeof(path));
  }
  if (file < 0) {
    Put_Line(STDERR_FILENO, "the dump %s cannot be written: %s", path, std::strerror(errno));
    Put_Cause(STDERR_FILENO);
    Put_Stack(STDERR_FILENO);
    End_At_Once(0);
  }
  Put_Cause(file);
  Put_Line(file, "\nbuild: %s %s, compiler %s", __DATE__, __TIME__, __VERSION__);
  Put_Stack(file);
  Put_Modules(file);
  close(file);
  Put_Line(STDERR_FILENO, "the program ends after an assertion report; dump: %s", path);
  End_At_Once(0);
}

}  // namespace orsanta
