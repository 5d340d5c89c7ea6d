// The operator's words for what happened to a store: what is wrong, with the file's whole path, and what to do.
#pragma once

#include <string>

#include "support/store/store_access.h"

namespace orsanta {

// Empty where there is nothing to report. Any thread.
std::wstring Report_Text(const C_Store_Report& report);

}  // namespace orsanta
