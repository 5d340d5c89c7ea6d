// The assertion report: what happens when a precondition is broken.
//
// A broken precondition is a fault of the program, after which nothing can be relied on. A failed check therefore ends
// the process at the place of the failure, with a report that names it (support/base/crash_report.h): no frame is left,
// so that no destructor runs in a broken process. Any thread.
#pragma once

#include <string>

#include "support/system/wide_string.h"

namespace orsanta {

// What Throw_On_Failed_Check makes a failed check throw; it carries no data, CVCDumpMessage holds the report.
class CMy_Assert_Exception {};

// A text that a program can fill in for all its reports; empty in this system.
std::string& cMyAssertAppendDispInfo();

// Composes the report and ends the process with it.
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
