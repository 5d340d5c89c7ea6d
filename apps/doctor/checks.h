// The doctor's checks. Each prints its findings.
#pragma once

#include <string>

#include "findings.h"

namespace doctor {

// Which client library is loaded. bus_is_free: no other process uses a store here, so that the motion server may be
// asked for the devices on the bus.
void Check_Client(C_Findings& findings, bool bus_is_free);

void Check_Display(C_Findings& findings);
void Check_Priorities(C_Findings& findings);

// The working directory and the stores in it. Returns whether no other process uses one of them.
bool Check_Folder(C_Findings& findings);

}  // namespace doctor
