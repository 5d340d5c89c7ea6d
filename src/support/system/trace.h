// The debug trace and the trace log. Neither can fail in a way that the caller sees. Any thread.
#pragma once

namespace orsanta {

// Prints the text to the debug trace, the standard error stream, as one or more whole lines.
void MY_TRACE0(const wchar_t* text);

// Appends one record to the trace log, the file "orsanta_trace.log" in the working directory.
// function: name or signature of the place; line: its source line; text: what happened.
void TraceLog2File(const char* function, int line, const wchar_t* text);

}  // namespace orsanta
