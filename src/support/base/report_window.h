// The window that shows a report to the operator at the display, once the process that reported has ended. It is a
// program of its own, because nothing of a broken process can be trusted to run a window.
#pragma once

namespace orsanta {

// Starts the program orsanta_report of the desktop front, which shows the report as soon as the calling process has
// ended. Does nothing where there is no display or that program is not beside the library. Takes no memory from the
// heap, and waits for nothing but the start of that program.
// report: UTF-8.
// dump: path of the dump, may be relative to the working directory; empty where there is none.
void Show_Report_After_End(const char* report, const char* dump);

}  // namespace orsanta
