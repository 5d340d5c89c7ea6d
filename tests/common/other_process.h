// Children of the test's process. No other thread of the test may run when one is made.
#pragma once

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace orsanta {

// Runs a function in a child that ends with what it returns, from 0 to 255. Returns that, or -1 where it was killed.
template <class Function>
int Exit_Status_Of(Function function) {
  const pid_t child = fork();
  if (child == 0) _exit(function());
  int status = 0;
  return waitpid(child, &status, 0) == child && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A child that runs a function and then stands still until it is killed.
class C_Other_Process {
 public:
  // Returns when the function has ended or has put another program in its place.
  template <class Function>
  explicit C_Other_Process(Function function) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) std::abort();
    m_Id = fork();
    if (m_Id == 0) {
      function();
      close(ends[1]);
      for (;;) pause();
    }
    close(ends[1]);
    char none;
    while (read(ends[0], &none, 1) > 0) continue;
    close(ends[0]);
  }
  ~C_Other_Process() { Kill(); }
  C_Other_Process& operator=(C_Other_Process&&) = delete;  // neither copied nor moved

  int Id() const { return m_Id; }
  void Kill() {
    if (m_Id <= 0) return;
    kill(m_Id, SIGKILL);
    waitpid(m_Id, nullptr, 0);
    m_Id = 0;
  }

 private:
  pid_t m_Id = 0;
};

}  // namespace orsanta
