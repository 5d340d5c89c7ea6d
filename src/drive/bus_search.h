// The search of the bus that both drive classes make before they map, and its report to the operator. Any thread.
#pragma once

#include "support/system/wide_string.h"

namespace orsanta {

// Asks every CAN id from 1 to 63. Returns the list for the report: one line for each id that answers.
CMyStringW Search_Bus();

// The report of a drive that does not answer: which one, the ids that do (id_list of Search_Bus), and what to check.
CMyStringW Missing_Drive_Report(int can_id, const CMyStringW& id_list);

}  // namespace orsanta
