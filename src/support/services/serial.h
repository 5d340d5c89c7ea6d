// CComSerial: one serial port, raw, eight data bits, no parity, one stop bit.
//
// Which device a port number means: a file or symbolic link named "COM<n>" in the working directory, where the stores
// are, is the device; where there is none, port n is /dev/ttyS<n-1>. So COM1 is the first built-in port, and an
// installer puts a USB adapter in its place with `ln -s /dev/serial/by-id/... COM1`. The link is followed at every
// opening.
//
// A port in use is exclusive: no other program can open it. A port that disappears (an adapter pulled out) is reported
// in a message box; until it is back, which is checked at most every Reopen_Period_Ms, reads and writes transfer
// nothing. A port that comes and goes has one box at a time: the next is shown once that was answered.
//
// Any thread may call, also several at once; no call waits.
#pragma once

#include <array>
#include <string>

#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

class CComSerial : private C_Uncopied {
 public:
  static constexpr std::array<int, 7> Rates = {9600, 14400, 19200, 28800, 38400, 57600, 115200};  // baud; on offer
  static constexpr double Reopen_Period_Ms = 500.0;
  static constexpr double Rate_Tolerance = 0.02;  // of the rate; both ends of a line may be off by as much

  ~CComSerial();

  // Opens the port with that number, 1 for the first, at the fastest rate. Returns 1, or 0 when there is no such port,
  // it is no serial line, or another program has it; a trace line then has the reason.
  int OpenCom(int port);
  // Sets the line: any rate in baud that the device can do within Rate_Tolerance; the other three are 8, 1 and 0.
  // Returns 1, or 0 when the port is closed or does not take the setting; the line then stays as it was, and a trace
  // line says so.
  int SetPropW(int baud, int data_bits, int stop_bits, int parity);
  // Takes what has arrived, at most max bytes; got: how many, 0 when nothing has. Returns 1, or 0 when the port is
  // closed or away.
  int GetComData(void* buffer, int max, int& got);
  // Sends bytes; written: how many the line has taken, fewer than length when its buffer is full. Returns 1, or 0 when
  // the port is closed or away.
  int WriteComData(const void* data, int length, int& written);
  // Gives the port back. A closed port costs nothing.
  void CloseCom();

 private:
  bool Open_Device(std::string& reason) REQUIRES(m_Lock);
  bool Apply_Line(int baud) REQUIRES(m_Lock);
  bool Be_There() REQUIRES(m_Lock);  // true when the device is open; one that is away is tried again
  void Report_Loss(const std::string& reason) REQUIRES(m_Lock);
  void Release_Device() REQUIRES(m_Lock);

  C_Leaf_Lock m_Lock;
  int m_Port GUARDED_BY(m_Lock) = 0;      // 0 while closed
  std::string m_Path GUARDED_BY(m_Lock);  // of the device, as the port's number gave it at OpenCom
  int m_Device GUARDED_BY(m_Lock) = -1;   // -1 while closed or away
  int m_Baud GUARDED_BY(m_Lock) = 0;
  double m_Next_Try_Ms GUARDED_BY(m_Lock) = 0.0;
};

}  // namespace orsanta
