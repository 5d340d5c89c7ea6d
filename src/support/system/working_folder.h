// The working folder: where stores, exported data, links to serial ports, the trace log and reports of failures are. It
// is the working directory of the process at the start of the system, so that a host that changes its directory later
// moves none of them. Before the start and after the stop it is whatever the working directory is.
//
// Any thread, beside a start or a stop too; a start and a stop do not overlap.
#pragma once

#include <string>

namespace orsanta {

// At the start: takes the present working directory. Where the system does not name it, it stays untaken.
void Take_Working_Folder();
// At the stop.
void Release_Working_Folder();

// The whole path of the folder that was taken; empty while none is. Takes no memory from the heap, so that a failing
// process can ask too.
const char* Working_Folder();
// The path under which to reach a file of the working folder; a whole path stays as it is.
std::string In_Working_Folder(const std::string& name);

}  // namespace orsanta
