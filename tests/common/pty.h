// C_Pty: the outside end of a serial line. The inside end is a pseudo-terminal under the name COM<n> in the working
// directory, where CComSerial finds it. Both ends are real; bytes cross in the kernel, in real time, so reads here wait
// in real time and not on the clock.
#pragma once

#include <asm/termbits.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace orsanta {

class C_Pty {
 public:
  explicit C_Pty(int port) : m_Link("COM" + std::to_string(port)) { Plug_In(); }
  ~C_Pty() { Pull_Out(); }
  C_Pty& operator=(C_Pty&&) = delete;  // neither copied nor moved

  // Takes the device away, as pulling an adapter out does, and brings a new one under the same name.
  void Pull_Out() {
    if (m_Master >= 0) close(m_Master);
    m_Master = -1;
    std::error_code ignored;
    std::filesystem::remove(m_Link, ignored);
  }
  void Plug_In() {
    m_Master = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
    if (m_Master < 0 || grantpt(m_Master) != 0 || unlockpt(m_Master) != 0)
      throw std::system_error(errno, std::generic_category(), "pty");
    std::filesystem::create_symlink(ptsname(m_Master), m_Link);
  }

  // The rate of the line in baud.
  int Rate() const {
    termios2 line{};
    return ioctl(m_Master, TCGETS2, &line) == 0 ? static_cast<int>(line.c_ospeed) : -1;
  }

  // Sends bytes inward. Returns once the line has them all.
  void Send(const std::string& bytes) {
    size_t sent = 0;
    while (sent < bytes.size()) {
      const ssize_t count = write(m_Master, bytes.data() + sent, bytes.size() - sent);
      if (count > 0) sent += static_cast<size_t>(count);
      if (count < 0 && !Wait_For(POLLOUT)) return;
    }
  }

  // What has come out: all that is there now; or at least so many bytes, waiting for them.
  std::string Take() { return Take_At_Least(0); }
  std::string Take_At_Least(size_t wanted) {
    std::string bytes;
    char byte;
    do {
      while (read(m_Master, &byte, 1) == 1) bytes += byte;
    } while (bytes.size() < wanted && Wait_For(POLLIN));
    return bytes;
  }

 private:
  bool Wait_For(short events) {
    pollfd line = {m_Master, events, 0};
    return poll(&line, 1, 2000) == 1;
  }

  std::filesystem::path m_Link;
  int m_Master = -1;
};

}  // namespace orsanta
