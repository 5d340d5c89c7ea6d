#include "support/system/trace.h"

#include <fcntl.h>
#include <unistd.h>

#include "support/system/error_stream.h"
#include "support/system/signal_blocker.h"
#include "support/system/wide_string.h"
#include "support/system/working_folder.h"
#include "support/time/clock.h"

namespace orsanta {

void MY_TRACE0(const wchar_t* text) {
  std::string line = To_Utf8(text);
  std::erase(line, '\r');
  if (line.empty() || line.back() != '\n') line.push_back('\n');
  Write_Error_Stream(line);
}

void TraceLog2File(const char* function, int line, const wchar_t* text) {
  // Does not wait if the name belongs to a pipe without a reader.
  const int file = open(In_Working_Folder("orsanta_trace.log").c_str(),
                        O_WRONLY | O_CREAT | O_APPEND | O_NONBLOCK | O_CLOEXEC, 0644);
  if (file < 0) return;
  const C_Local_Time now = Local_Time_Now();
  const std::string head =
      Format_Utf8("%04d-%02d-%02d %02d:%02d:%02d.%03d [%d] %s, line %d: ", now.year, now.month, now.day, now.hour,
                  now.minute, now.second, now.millisecond, static_cast<int>(getpid()), function, line);
  // One write, so that records of several threads and processes do not mix.
  const std::string record = head + To_Utf8(text) + "\n";
  const C_Signal_Blocker held;
  [[maybe_unused]] const ssize_t written = write(file, record.data(), record.size());
  close(file);
}

}  // namespace orsanta
