#include "support/system/error_stream.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/system/signal_blocker.h"

namespace orsanta {

namespace {

void Write_Once(int file, std::string_view bytes) {
  [[maybe_unused]] const ssize_t written = write(file, bytes.data(), bytes.size());
}

// The stream itself must not be made non-blocking: other programs share it. So the pipe or terminal behind it is opened
// a second time.
void Write_Pipe_Or_Terminal(std::string_view bytes) {
  const int again = open("/proc/self/fd/2", O_WRONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
  if (again >= 0) {
    Write_Once(again, bytes);
    close(again);
    return;
  }
  // A terminal of another user cannot be opened again.
  pollfd stream{STDERR_FILENO, POLLOUT, 0};
  if (poll(&stream, 1, 0) == 1 && (stream.revents & POLLOUT) != 0) Write_Once(STDERR_FILENO, bytes);
}

}  // namespace

void Write_Error_Stream(std::string_view bytes) {
  const C_Signal_Blocker held;
  struct stat about {};
  if (fstat(STDERR_FILENO, &about) != 0) return;
  if (S_ISSOCK(about.st_mode)) {
    send(STDERR_FILENO, bytes.data(), bytes.size(), MSG_DONTWAIT);
  } else if (S_ISFIFO(about.st_mode) || S_ISCHR(about.st_mode)) {
    Write_Pipe_Or_Terminal(bytes);
  } else {
    Write_Once(STDERR_FILENO, bytes);
  }
}

}  // namespace orsanta
