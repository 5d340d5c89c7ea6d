// One life of a system: from the start of a process to its end, by a stop, a kill or a power cut.
#pragma once

#include <cstdint>

#include "campaign/record.h"

namespace orsanta::campaign {

struct C_Life_Plan {
  uint64_t seed = 1;
  int stations = 1;
  int cycles = 100;               // about so many, all stations together
  double fault_pause_ms = 10000;  // mean time from one fault to the next; 0 for none
};

// Runs the life in this process, in the working directory, and ends the process.
[[noreturn]] void Live(const C_Life_Plan& plan, C_Record& record);

}  // namespace orsanta::campaign
