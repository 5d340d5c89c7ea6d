// Finds out whether windows can be shown at all. Qt ends the process when it cannot start, so that everything it needs
// is tried out before.
#pragma once

#include <memory>
#include <string>

namespace orsanta {

struct C_Display {
  std::string platform;  // name of the Qt platform to start on, or empty
  std::string reason;    // why there is none, one clear sentence
  std::shared_ptr<void>
      keeps;  // holds the display until Qt has connected: a server may restart when its last client goes
};

C_Display Find_Display();

}  // namespace orsanta
