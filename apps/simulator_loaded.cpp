#include "simulator_loaded.h"

#include <cstdio>

namespace app {

bool On_Simulator() {
  return &simulator::Reset != nullptr;
}

bool Need_Simulator(const char* command) {
  if (On_Simulator()) return true;
  std::fprintf(
      stderr,
      "orsanta: %s needs the simulator, but the libtremalink.so that was loaded is another client library, such as a "
      "machine's; put the simulator's beside liborsanta.so, or use orsanta study, which measures on a machine\n",
      command);
  return false;
}

}  // namespace app
