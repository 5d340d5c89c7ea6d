// Finds out whether windows can be shown at all. Qt ends the process when it cannot start, so that everything it needs
// is tried out before.
#pragma once

#include <string>

namespace orsanta {

// Name of the Qt platform to start on, or empty with the reason, one clear sentence, in `reason`.
std::string Find_Display(std::string& reason);

}  // namespace orsanta
