// A command line that runs without a display.
#pragma once

#include <sys/wait.h>

#include <cstdio>
#include <string>

namespace orsanta {

struct C_Outcome {
  int status = -1;
  std::string output;  // standard output, and the error stream where the command joins it
};

// Runs from its beginning on, beside the test, which asks for the outcome when it needs it.
class C_Command {
 public:
  explicit C_Command(const std::string& line)
      : m_Pipe(popen(("unset DISPLAY WAYLAND_DISPLAY; " + line).c_str(), "r")) {}
  ~C_Command() { Wait(); }
  C_Command& operator=(C_Command&&) = delete;  // neither copied nor moved

  const C_Outcome& Wait() {
    if (m_Pipe == nullptr) return m_Outcome;
    for (int byte; (byte = std::fgetc(m_Pipe)) != EOF;) m_Outcome.output += static_cast<char>(byte);
    m_Outcome.status = WEXITSTATUS(pclose(m_Pipe));
    m_Pipe = nullptr;
    return m_Outcome;
  }

 private:
  FILE* m_Pipe;
  C_Outcome m_Outcome;
};

inline C_Outcome Shell(const std::string& line) {
  return C_Command(line).Wait();
}

}  // namespace orsanta
