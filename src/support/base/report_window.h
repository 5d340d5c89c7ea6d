// The window that shows a report to the operator at the display, once the process that reported is gone.
#pragma once

namespace orsanta {

// Lets the program orsanta_report of the desktop front show the report, as soon as the calling process has ended. Does
// nothing where there is no display or that program is not beside the library. Takes no memory from the heap and waits
// for nothing.
// report: UTF-8. dump: path of the dump, may be relative to the working directory; empty where there is none.
void Show_Report_After_End(const char* report, const char* dump);

}  // namespace orsanta
