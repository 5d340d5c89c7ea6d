#include "support/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include "support/clock.h"
#include "support/wide_string.h"

namespace orsanta {

namespace {

// One write each, so that records of several threads and processes do not mix.
void Write_Once(int file, const std::string& bytes) {
  [[maybe_unused]] const ssize_t written = write(file, bytes.data(), bytes.size());
}

}  // namespace

void MY_TRACE0(const wchar_t* text) {
  std::string line = To_Utf8(text);
  std::erase(line, '\r');
  if (line.empty() || line.back() != '\n') line.push_back('\n');
  Write_Once(STDERR_FILENO, line);
}

void TraceLog2File(const char* function, int line, const wchar_t* text) {
  const int file = open("orsanta_trace.log", O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (file < 0) return;
  const C_Local_Time now = Local_Time_Now();
  const CMyStringW head = Format_Text(L"%04d-%02d-%02d %02d:%02d:%02d.%03d [%d] %s, line %d: ", now.year, now.month,
                                      now.day, now.hour, now.minute, now.second, now.millisecond,
                                      static_cast<int>(getpid()), From_Utf8(function).c_str(), line);
  Write_Once(file, To_Utf8(head.Text() + text + L"\n"));
  close(file);
}

}  // namespace orsanta
