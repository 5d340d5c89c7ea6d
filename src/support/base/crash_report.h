// The end of a process that cannot go on, in two steps. For support/base/assertion.cpp alone.
#pragma once

namespace orsanta {

// Takes the end of the process for the calling thread. From here on the process ends with CVCDumpMessage::Exit_Status,
// after 30 s at the latest, whatever hangs on the way; and at once if this thread fails again. Any other thread that
// fails waits here, or where it failed, until the process is gone. Comes before anything that could hang or fail.
void Claim_Process_End();

// Writes the dump of the calling thread, which has claimed the end, with the report of CVCDumpMessage::m_cErrorMsg;
// says so, and ends the process.
[[noreturn]] void Write_Dump_And_End();

}  // namespace orsanta
