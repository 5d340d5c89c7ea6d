// The run-time checks of the numeric routines, for faults that no caller can mend: a failed check prints its message
// and the routine's name on the standard error stream and ends the process with abort. Any thread.
#pragma once

namespace orsanta {

// routine, line: where the check stands, printed as "Error in %s (line %d)". format: the message, in the manner of
// printf.
[[noreturn]] void Fail_Runtime_Check(const char* routine, int line, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// Fails with the index that was asked for and the valid range, all one-based. array: the array's name, null if it has
// none.
[[noreturn]] void Fail_Index_Check(const char* routine, int line, int index, int last, const char* array);

}  // namespace orsanta
