// The settings of a station's serial link, as they stand before the station starts.
#pragma once

#include "station/debug_com.h"

namespace orsanta {

inline void Store_Link(int can_id, int port, int baud = 115200) {
  C_VoiceDebugCom link(can_id);
  link.ValComNum = port;
  link.ValBaud = baud;
  link.Save();
}

}  // namespace orsanta
