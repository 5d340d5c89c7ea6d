// The standard error stream: whole lines from any thread. No call waits for a reader, and none ends the process; what
// the stream does not accept at once is lost.
#pragma once

#include <string_view>

namespace orsanta {

// bytes: UTF-8, with the line ends.
void Write_Error_Stream(std::string_view bytes);

}  // namespace orsanta
