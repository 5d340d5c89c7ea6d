// What the report leaves for the dump. For support/assertion.cpp alone.
#pragma once

namespace orsanta {

// Keeps the calling thread's stack: by the time the process ends, an exception may have left the frames that failed.
// The caller holds the report's lock.
void Keep_Stack_For_Dump();

}  // namespace orsanta
