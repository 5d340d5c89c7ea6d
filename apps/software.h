// Which software runs: the version, and the build ids of the program and the libraries that measure.
#pragma once

#include <string>

namespace app {

// "orsanta 1.0 (1f3a...), liborsanta.so (...), libtremalink.so (...)". A build id differs with every change of the
// code.
std::string Software();

}  // namespace app
