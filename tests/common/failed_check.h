// Failed_Check_Line: which check an action breaks.
#pragma once

#include <cstdlib>

#include "support/assertion.h"

namespace orsanta {

// The source line that the report of the action's failed check names; 0 when no check failed. The report goes to the
// trace log in the working directory.
template <class Action>
int Failed_Check_Line(Action action) {
  try {
    action();
  } catch (const CMy_Assert_Exception&) {
    const std::string& report = CVCDumpMessage::m_cErrorMsg();
    return std::atoi(report.c_str() + report.find("\nline: ") + 7);
  }
  return 0;
}

}  // namespace orsanta
