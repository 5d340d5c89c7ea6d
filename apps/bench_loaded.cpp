#include "bench_loaded.h"

#include <cstdio>

namespace app {

bool On_Bench() {
  return &bench::Reset != nullptr;
}

bool Need_Bench(const char* command) {
  if (On_Bench()) return true;
  std::fprintf(stderr,
               "orsanta: %s needs the bench, but the libtremalink.so that was loaded is another client library, such as a "
               "machine's; put the bench's beside liborsanta.so, or use orsanta study, which measures on a machine\n",
               command);
  return false;
}

}  // namespace app
