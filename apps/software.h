// Which software runs: the version, and the build ids of the program and the libraries that measure.
#pragma once

#include <string>

namespace app {

// On one line: "orsanta 1.0.0 (1f3a...), liborsanta.so (...), libtremalink.so (...)". A build id differs with every
// change of the code.
std::string Software();

// The same for a person, one line each, with where each library was loaded from.
std::string Software_Lines();

}  // namespace app
