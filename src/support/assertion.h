// The assertion report: what happens when a precondition is broken.
//
// A failed check composes a report, keeps it in CVCDumpMessage::m_cErrorMsg, traces it, logs it, and throws a
// CMy_Assert_Exception that nothing in the system catches. The process then ends in CVCDumpMessage::DumpFileProcess,
// which writes a .dmp text file with the stack of the failing thread. A broken precondition is a fault of the program:
// there is no way on from it.
//
// Any thread may report. The first report keeps the lock m_hErrorMsg for good, so that a second failing thread waits
// and the first report stands.
#pragma once

#include <string>

namespace orsanta {

class CMyCriticalSection;

// Thrown by a failed check; it carries no data, the report stands in CVCDumpMessage.
class CMy_Assert_Exception {};

struct CVCDumpMessage {
  static constexpr int Exit_Status = 3;

  static std::string& m_cErrorMsg();  // the text of the last report, UTF-8
  static CMyCriticalSection& m_hErrorMsg();
  // The terminate handler: writes "<program>_<pid>_<time>.dmp" to the working directory (to the folder for temporary
  // files where that is not writable), tells its name on the standard error stream, and ends the process with
  // Exit_Status. A failure inside it ends the process at once.
  [[noreturn]] static void DumpFileProcess();
};

// A text that a program can fill in for all its reports; empty in this system.
std::string& cMyAssertAppendDispInfo();

// Composes a failure's own message, in the manner of printf, in UTF-8. Empty when there is no memory for it.
std::string Format_Assert_Text(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Composes and keeps the report, then throws CMy_Assert_Exception.
// function: full signature of the reporting function; line: source line of the check; message: what failed, may be
// empty.
[[noreturn]] __attribute__((cold)) void Report_Assertion(const char* function, int line, const std::string& message);
[[noreturn]] __attribute__((cold)) void Report_Assertion(const char* function, int line);

}  // namespace orsanta

// Reports unless the condition holds. The report is composed only after a check failed.
#define MY_ASSERT(condition) \
  ((condition) ? static_cast<void>(0) : ::orsanta::Report_Assertion(__PRETTY_FUNCTION__, __LINE__))

// Reports a failure that has a message of its own.
#define MY_ASSERT_REPORT(message) ::orsanta::Report_Assertion(__PRETTY_FUNCTION__, __LINE__, (message))

// A check for development: reports in a debug build, and passes without effect in a release build.
#ifdef NDEBUG
#define MY_DEBUG_ASSERT(condition) static_cast<void>(sizeof(!(condition)))
#else
#define MY_DEBUG_ASSERT(condition) MY_ASSERT(condition)
#endif
