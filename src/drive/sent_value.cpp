#include "drive/sent_value.h"

#include <cmath>

#include "support/dialog/message_box.h"

namespace orsanta {

bool May_Send(int can_id, const char* what, double value) {
  if (std::isfinite(value)) return true;
  const char* const kind = std::isnan(value) ? "nan" : "inf";
  Message_Box(Format_Text("ID:%d %s不是有效数字(%s)，没有发送，请检查推力标定和工位参数", can_id, what, kind));
  return false;
}

}  // namespace orsanta
