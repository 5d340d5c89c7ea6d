// The assertion report: what happens when a precondition is broken.
//
// A broken precondition is a fault of the program: there is no way on from it. A failed check ends the process where it
// stands. It composes a report, keeps it in CVCDumpMessage::m_cErrorMsg, traces it, logs it, and writes it to a dump
// with the stack of the failing thread. No frame is left on the way, so that no destructor runs in a broken process.
//
// A dump is the text file "<program>_<pid>_<time>.dmp" in the working directory, or in the folder for temporary files
// where that does not take it whole. The last line on the standard error stream tells the report and the dump's name,
// and an operator at a display gets a window with both once the process is gone. The process ends with
// CVCDumpMessage::Exit_Status, after 30 s at the latest, whatever hangs.
//
// Any thread may report. The first report keeps the lock m_hErrorMsg for good, so that a second failing thread waits
// there and the first report stands.
#pragma once

#include <string>

#include "support/system/wide_string.h"

namespace orsanta {

class CMyCriticalSection;

// What Throw_On_Failed_Check makes a failed check throw; it carries no data, the report stands in CVCDumpMessage.
class CMy_Assert_Exception {};

struct CVCDumpMessage {
  static constexpr int Exit_Status = 3;

  static std::string& m_cErrorMsg();  // the text of the last report, UTF-8
  static CMyCriticalSection& m_hErrorMsg();
  // The terminate handler from the first report on: an exception that nothing caught, and any other call of
  // std::terminate, is a report of its own and ends the process in the same way.
  [[noreturn]] static void DumpFileProcess();
};

// A text that a program can fill in for all its reports; empty in this system.
std::string& cMyAssertAppendDispInfo();

// Composes and keeps the report, and ends the process with it.
// function: full signature of the reporting function; line: source line of the check; message: what failed, may be
// empty.
[[noreturn]] __attribute__((cold)) void Report_Assertion(const char* function, int line, const std::string& message);
[[noreturn]] __attribute__((cold)) void Report_Assertion(const char* function, int line);

// For tests: a failed check keeps, traces and logs its report and then throws CMy_Assert_Exception; false makes it end
// the process again.
void Throw_On_Failed_Check(bool throws);

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
