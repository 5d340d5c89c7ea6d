// Runs a command line without a display.
#pragma once

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <string>

namespace study {

struct C_Outcome {
  int status = -1;
  std::string output;  // standard output, and the error stream where the command joins it
};

inline C_Outcome Shell(const std::string& command) {
  C_Outcome outcome;
  FILE* pipe = popen(("unset DISPLAY WAYLAND_DISPLAY; " + command).c_str(), "r");
  if (pipe == nullptr) return outcome;
  std::array<char, 4096> part;
  for (size_t count; (count = fread(part.data(), 1, part.size(), pipe)) > 0;) outcome.output.append(part.data(), count);
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

inline C_Outcome Study(const std::string& arguments) {
  return Shell(std::string(BUILT_PROGRAM) + " study " + arguments + " 2>&1");
}

}  // namespace study
