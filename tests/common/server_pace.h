// The pace of the simulated motion server in this run of the tests.
#pragma once

#include <cstdlib>

// Milliseconds for each instruction: what the environment variable ORSANTA_TEST_INSTRUCTION_MS says, 0 without it.
inline double Server_Pace_Ms() {
  const char* const text = std::getenv("ORSANTA_TEST_INSTRUCTION_MS");
  return text == nullptr ? 0.0 : std::atof(text);
}
