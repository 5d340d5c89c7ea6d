// Runs one study: takes the values from a file or from the gauge, works them out, and writes what came out.
#pragma once

#include <string>

#include "study/text.h"
#include "study_options.h"

namespace app {

struct C_Study_Job {
  C_Study_Options options;
  std::string out;
  study::C_Language language = study::C_Language::Chinese;
  bool resume = false;
  std::string folder;  // of the machine's stores
};

// Returns the program's exit status; what went wrong is told on the error stream.
int Run_Study(C_Study_Job job);

}  // namespace app
