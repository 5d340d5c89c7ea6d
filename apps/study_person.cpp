#include "study_person.h"

#include <signal.h>
#include <unistd.h>

#include <cstdio>

namespace app {

namespace {

volatile sig_atomic_t theInterrupted = 0;

// One line of the standard input. A signal ends the wait, which std::getline would not tell.
std::optional<std::string> Read_Line() {
  std::string line;
  for (char c = 0; theInterrupted == 0;) {
    const ssize_t got = read(STDIN_FILENO, &c, 1);
    if (got <= 0) return std::nullopt;
    if (c == '\n') return line;
    line += c;
  }
  return std::nullopt;
}

}  // namespace

void Catch_Interrupts() {
  struct sigaction action = {};
  action.sa_handler = [](int) { theInterrupted = 1; };
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
}

bool Interrupted() {
  return theInterrupted != 0;
}

std::optional<std::string> Ask(const std::string& question) {
  std::fprintf(stderr, "%s ", question.c_str());
  std::optional<std::string> line = Read_Line();
  if (!line) {
    std::fputc('\n', stderr);
    return std::nullopt;
  }
  const size_t begin = line->find_first_not_of(" \t\r");
  const std::string text =
      begin == std::string::npos ? "" : line->substr(begin, line->find_last_not_of(" \t\r") + 1 - begin);
  if (text == "q") return std::nullopt;
  return text;
}

}  // namespace app
