// The crash report: how a process ends that cannot continue.
//
// The report is kept in CVCDumpMessage::m_cErrorMsg, traced, logged, and written to a dump with the stack of the
// failing thread. A dump is the text file "<program>_<pid>_<time>.dmp" in the working directory, or in the folder for
// temporary files where the working directory does not take it whole. The last line on the standard error stream has
// the report and the dump's name, and an operator at a display gets a window with both once the process has ended.
//
// The three steps below are called in this order, on the failing thread. Any thread may fail: the first one keeps the
// lock m_hErrorMsg for good, so that a second one waits there and the first report remains.
#pragma once

#include <string>

namespace orsanta {

class CMyCriticalSection;

struct CVCDumpMessage {
  static constexpr int Exit_Status = 3;

  static std::string& m_cErrorMsg();  // the text of the last report, UTF-8
  static CMyCriticalSection& m_hErrorMsg();
  // The terminate handler from the first claim on: an exception that nothing caught, and any other call of
  // std::terminate, is a report of its own and ends the process in the same way.
  [[noreturn]] static void DumpFileProcess();
};

// Claims the end of the process for the calling thread. From here on the process ends with Exit_Status, after 30 s at
// the latest, whatever hangs on the way; and at once if this thread fails again. Any other thread that fails waits
// here, or where it failed, until the process has ended. Called before anything that could hang or fail.
void Claim_Process_End();

// Keeps the text as the report, traces it and logs it. function, line: where the failure was found.
void Keep_Report(const char* function, int line, const std::string& text);

// Writes the dump with the report and the calling thread's stack, prints the last line, and ends the process.
[[noreturn]] void Write_Dump_And_End();

}  // namespace orsanta
