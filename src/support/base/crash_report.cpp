// The process may be failing for want of memory: from the report on, all of this works with plain buffers and writes
// straight to the file.
#include "support/base/crash_report.h"

#include <cxxabi.h>
#include <fcntl.h>
#include <limits.h>
#include <link.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <typeinfo>
#include <utility>

#include "support/base/report_window.h"
#include "support/base/symbolizer.h"
#include "support/system/atomic_file.h"
#include "support/system/error_stream.h"
#include "support/system/signal_blocker.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/system/working_folder.h"
#include "support/time/clock.h"
#include "support/time/critical_section.h"
#include "support/time/no_destructor.h"

namespace orsanta {

namespace {

constexpr unsigned Longest_End_S = 30;
constexpr size_t Line_Room = 4096;

std::atomic<pid_t> the_Ending_Thread{0};

[[noreturn]] void End_At_Once(int = 0) {
  _exit(CVCDumpMessage::Exit_Status);
}

// A fault of another thread does not cut the dump short.
void On_Fault(int) {
  if (the_Ending_Thread == 0 || the_Ending_Thread == gettid()) End_At_Once();
  for (;;) pause();
}

void Limit_The_End() {
  static std::atomic<bool> limited{false};
  if (limited.exchange(true)) return;
  for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT}) std::signal(fault, &On_Fault);
  std::set_terminate(&CVCDumpMessage::DumpFileProcess);
  std::signal(SIGALRM, &End_At_Once);
  sigset_t alarm_only;
  sigemptyset(&alarm_only);
  sigaddset(&alarm_only, SIGALRM);
  pthread_sigmask(SIG_UNBLOCK, &alarm_only, nullptr);
  alarm(Longest_End_S);
}

// What std::terminate was called for.
std::string Describe_Termination() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (type == nullptr) return "std::terminate";
  try {
    throw;
  } catch (const std::exception& error) {
    return Format_Utf8("uncaught exception %s: %s", type->name(), error.what());
  } catch (...) {
    return Format_Utf8("uncaught exception %s", type->name());
  }
}

// Takes text to a file; or to the standard error stream, where the file is No_File.
class C_Dump_Text {
 public:
  static constexpr int No_File = -1;

  explicit C_Dump_Text(int file) : m_File(file) {}

  void Put(const char* text) {
    if (m_File == No_File) return Write_Error_Stream(text);
    if (m_Error == 0) m_Error = Write_All(m_File, text);
  }

  __attribute__((format(printf, 2, 3))) void Put_Line(const char* format, ...) {
    char line[Line_Room];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(line, sizeof(line), format, arguments);
    va_end(arguments);
    Put(line);
    Put("\n");
  }

  int Error() const { return m_Error; }  // errno of the first failure, 0 when all was written

 private:
  int m_File;
  int m_Error = 0;
};

void Put_Stack(C_Dump_Text& out, const C_Stack& stack) {
  char line[Line_Room] = "";
  Copy_Thread_Name(line, sizeof(line));
  out.Put_Line("\nstack of thread %d (%s):", static_cast<int>(gettid()), line);
  for (int i = 0; i < stack.depth; ++i) {
    Frame_Text(stack.address[i], line, sizeof(line));
    out.Put_Line("#%d %s", i, line);
  }
}

void Put_Modules(C_Dump_Text& out) {
  out.Put_Line("\nmodules:");
  const auto put = [](dl_phdr_info* module, size_t, void* lines) {
    const auto start = reinterpret_cast<const void*>(module->dlpi_addr);  // NOLINT: the linker counts it as a number
    static_cast<C_Dump_Text*>(lines)->Put_Line(
        "%p %s", start, module->dlpi_name[0] != '\0' ? module->dlpi_name : program_invocation_name);
    return 0;
  };
  dl_iterate_phdr(put, &out);
}

struct C_Dump {
  char path[PATH_MAX] = "";
  off_t size = 0;  // 0: there is no such file
  int error = 0;   // errno of what kept it from being whole
};

// Writes a dump into `folder`, "" for the working directory. It is always a new file: a name that is taken, perhaps by
// a link of another user, is left alone.
C_Dump Write_Dump(const char* folder, const C_Stack& stack) {
  C_Dump dump;
  const C_Local_Time now = Local_Time_Now();
  std::snprintf(dump.path, sizeof(dump.path), "%s%s%s_%d_%04d%02d%02d_%02d%02d%02d.dmp", folder,
                folder[0] == '\0' ? "" : "/", program_invocation_short_name, static_cast<int>(getpid()), now.year,
                now.month, now.day, now.hour, now.minute, now.second);
  const int file = open(dump.path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  if (file < 0) {
    dump.error = errno;
    return dump;
  }
  C_Dump_Text out(file);
  out.Put(CVCDumpMessage::m_cErrorMsg().c_str());
  out.Put_Line("\n\nbuild: %s %s, compiler %s", __DATE__, __TIME__, __VERSION__);
  Put_Stack(out, stack);
  Put_Modules(out);
  dump.size = lseek(file, 0, SEEK_CUR);
  dump.error = out.Error();
  if (close(file) != 0 && dump.error == 0) dump.error = errno;
  if (dump.size == 0) unlink(dump.path);
  return dump;
}

const char* Temporary_Folder() {
  const char* folder = std::getenv("TMPDIR");
  return folder != nullptr && folder[0] != '\0' ? folder : "/tmp";
}

// In the working directory, or in the folder for temporary files where that one cannot take it whole; where neither
// can, the longer part is kept.
C_Dump Write_Dump_Somewhere(const C_Stack& stack) {
  C_Dump dump = Write_Dump(Working_Folder(), stack);
  if (dump.error == 0) return dump;
  C_Dump other = Write_Dump(Temporary_Folder(), stack);
  if (other.size > dump.size) std::swap(dump, other);
  if (other.size > 0) unlink(other.path);
  return dump;
}

// The report on one line, without its closing words to the reader.
void Join_Lines(const char* report, char (&line)[Line_Room]) {
  size_t length = 0;
  for (const char* at = report; *at != '\0' && std::strncmp(at, "\n\n-", 3) != 0 && length + 3 < Line_Room; ++at) {
    if (*at != '\n') {
      line[length++] = *at;
    } else if (length > 0 && line[length - 1] != ' ') {
      line[length++] = ';';
      line[length++] = ' ';
    }
  }
  line[length] = '\0';
}

void Print_Last_Line(const C_Dump& dump) {
  char report[Line_Room], limit[Line_Room] = "", line[3 * Line_Room + 64];  // the three and the words between them
  Join_Lines(CVCDumpMessage::m_cErrorMsg().c_str(), report);
  if (dump.error != 0) {
    std::snprintf(limit, sizeof(limit), " %s: %s", dump.size == 0 ? "cannot be written" : "is cut short",
                  std::strerror(dump.error));
  }
  std::snprintf(line, sizeof(line), "orsanta: the program ends after a failed check: %s; dump: %s%s\n", report,
                dump.path, limit);
  Write_Error_Stream(line);
}

}  // namespace

std::string& CVCDumpMessage::m_cErrorMsg() {
  static C_No_Destructor<std::string> text;
  return text.Get();
}

CMyCriticalSection& CVCDumpMessage::m_hErrorMsg() {
  static C_No_Destructor<CMyCriticalSection> section;
  return section.Get();
}

void CVCDumpMessage::DumpFileProcess() {
  Claim_Process_End();
  Keep_Report("std::terminate", 0, Describe_Termination());
  Write_Dump_And_End();
}

void Claim_Process_End() NO_THREAD_SAFETY_ANALYSIS {
  Limit_The_End();
  CVCDumpMessage::m_hErrorMsg().Lock();  // never given back
  if (the_Ending_Thread != 0) End_At_Once();
  the_Ending_Thread = gettid();
}

void Keep_Report(const char* function, int line, const std::string& text) {
  try {
    CVCDumpMessage::m_cErrorMsg() = text;
    const std::wstring wide = From_Utf8(text);
    MY_TRACE0(wide.c_str());
    TraceLog2File(function, line, wide.c_str());
  } catch (const std::bad_alloc&) {
    // The dump still has the stack.
  }
}

void Write_Dump_And_End() {
  const C_Signal_Blocker held;
  C_Stack stack;
  stack.Capture();
  const C_Dump dump = Write_Dump_Somewhere(stack);
  if (dump.error != 0) {
    C_Dump_Text error_stream(C_Dump_Text::No_File);
    Put_Stack(error_stream, stack);
  }
  Print_Last_Line(dump);
  Show_Report_After_End(CVCDumpMessage::m_cErrorMsg().c_str(), dump.size > 0 ? dump.path : "");
  End_At_Once();
}

}  // namespace orsanta
