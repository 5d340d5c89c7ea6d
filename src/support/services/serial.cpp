#include "support/services/serial.h"

#include <asm/termbits.h>  // termios2, which takes any rate as a number; <termios.h> lacks 14400 and 28800
#include <fcntl.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>

#include "support/dialog/front.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/system/working_folder.h"
#include "support/time/clock.h"
#include "support/time/lock.h"
#include "support/time/no_destructor.h"

namespace orsanta {
namespace {

// The device of port n; see the header.
std::string Device_Path(int port) {
  std::error_code ignored;
  const std::filesystem::path link = In_Working_Folder("COM" + std::to_string(port));
  if (std::filesystem::exists(std::filesystem::symlink_status(link, ignored))) {
    return std::filesystem::absolute(link, ignored).string();
  }
  return "/dev/ttyS" + std::to_string(port - 1);
}

void Trace_Port(int port, const std::string& path, const std::string& what) {
  MY_TRACE0(Format_Text("COM%d (%s): %s\r\n", port, path.c_str(), what.c_str()));
}

// The box that reports a lost port. The threads that use a port must not wait for an operator, so the box is posted. It
// may be open for hours while a loose plug makes and breaks contact: until it is answered no second one is posted.
class C_Lost_Box : public C_Message_Listener {
 public:
  // One for each port number. Never freed: a front may answer until the process ends.
  static C_Lost_Box& Of_Port(int port) {
    static C_Leaf_Lock lock;
    static C_No_Destructor<std::map<int, C_Lost_Box>> boxes;
    const C_Lock_Guard hold(lock);
    return boxes.Get()[port];
  }

  void Show(const std::wstring& text) {
    if (!m_Is_Open.exchange(true)) Front().Post_Message({text, 0}, *this);
  }
  void On_Answer(int) override { m_Is_Open = false; }

 private:
  std::atomic<bool> m_Is_Open = false;
};

}  // namespace

CComSerial::~CComSerial() {
  CloseCom();
}

int CComSerial::OpenCom(int port) {
  const C_Lock_Guard hold(m_Lock);
  Release_Device();
  m_Port = 0;
  if (port < 1) return 0;
  m_Path = Device_Path(port);
  m_Baud = Rates.back();
  std::string reason;
  if (!Open_Device(reason)) {
    Trace_Port(port, m_Path, "does not open: " + reason);
    return 0;
  }
  m_Port = port;
  return 1;
}

int CComSerial::SetPropW(int baud, int data_bits, int stop_bits, int parity) {
  const C_Lock_Guard hold(m_Lock);
  if (m_Port == 0) return 0;
  const bool is_offered = baud > 0 && data_bits == 8 && stop_bits == 1 && parity == 0;
  if (is_offered && m_Device >= 0 && Apply_Line(baud)) {
    m_Baud = baud;
    return 1;
  }
  Trace_Port(m_Port, m_Path, "does not take " + std::to_string(baud) + " baud; stays at " + std::to_string(m_Baud));
  if (m_Device >= 0) Apply_Line(m_Baud);
  return 0;
}

int CComSerial::GetComData(void* buffer, int max, int& got) {
  const C_Lock_Guard hold(m_Lock);
  got = 0;
  if (!Be_There()) return 0;
  const ssize_t count = read(m_Device, buffer, static_cast<size_t>(max));
  if (count > 0) got = static_cast<int>(count);
  if (count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR))) return 1;
  Report_Loss(count == 0 ? "hung up" : std::strerror(errno));
  return 0;
}

int CComSerial::WriteComData(const void* data, int length, int& written) {
  const C_Lock_Guard hold(m_Lock);
  written = 0;
  if (!Be_There()) return 0;
  const ssize_t count = write(m_Device, data, static_cast<size_t>(length));
  if (count >= 0) written = static_cast<int>(count);
  if (count >= 0 || errno == EAGAIN || errno == EINTR) return 1;
  Report_Loss(std::strerror(errno));
  return 0;
}

void CComSerial::CloseCom() {
  const C_Lock_Guard hold(m_Lock);
  Release_Device();
  m_Port = 0;
}

bool CComSerial::Open_Device(std::string& reason) {
  m_Device = open(m_Path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (m_Device < 0) {
    reason = std::strerror(errno);
    return false;
  }
  if (flock(m_Device, LOCK_EX | LOCK_NB) != 0) {  // TIOCEXCL alone does not hold against root
    reason = "another program uses it";
  } else if (!Apply_Line(m_Baud)) {
    reason = "it is no serial line";
  } else {
    ioctl(m_Device, TIOCEXCL);
    return true;
  }
  close(m_Device);
  m_Device = -1;
  return false;
}

bool CComSerial::Apply_Line(int baud) {
  termios2 line{};  // all translation, echo and flow control off
  line.c_iflag = IGNBRK;
  line.c_cflag = BOTHER | CS8 | CREAD | CLOCAL;
  line.c_ispeed = line.c_ospeed = static_cast<speed_t>(baud);
  line.c_cc[VMIN] = 1;  // so that a read of a live line without bytes differs from one of a line that hung up
  if (ioctl(m_Device, TCSETS2, &line) != 0) return false;
  // The device takes the nearest rate that its clock divides to.
  termios2 set{};
  return ioctl(m_Device, TCGETS2, &set) == 0 &&
         std::abs(static_cast<double>(set.c_ospeed) - baud) <= Rate_Tolerance * baud;
}

bool CComSerial::Be_There() {
  if (m_Port == 0) return false;
  if (m_Device >= 0) return true;
  if (Now_Ms() < m_Next_Try_Ms) return false;
  m_Next_Try_Ms = Now_Ms() + Reopen_Period_Ms;
  std::string reason;
  if (!Open_Device(reason)) return false;
  Trace_Port(m_Port, m_Path, "is back");
  return true;
}

void CComSerial::Report_Loss(const std::string& reason) {
  Release_Device();
  m_Next_Try_Ms = Now_Ms() + Reopen_Period_Ms;
  Trace_Port(m_Port, m_Path, "is gone: " + reason);
  C_Lost_Box::Of_Port(m_Port).Show(Format_Text("串口%d已断开，请检查接线，恢复后自动重连", m_Port).Text());
}

void CComSerial::Release_Device() {
  if (m_Device < 0) return;
  ioctl(m_Device, TIOCNXCL);  // the mark would outlive the descriptor where the other end of a pty stays open
  close(m_Device);
  m_Device = -1;
}

}  // namespace orsanta
