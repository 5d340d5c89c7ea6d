// Thrown by a study for numbers from which it cannot be computed. The text says what is wrong and what to do.
#pragma once

#include <stdexcept>

namespace study {

class C_Refused : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace study
