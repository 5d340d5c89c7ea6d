// Force study: the true force of the probe, read from a force gauge, against the set force, over heights of the part.
#pragma once

#include <vector>

namespace study {

struct C_Force_Reading {
  double height_mm = 0.0;  // of the part, from the anvil
  double set_g = 0.0;
  double true_g = 0.0;  // read from the force gauge

  double Error_Percent() const { return 100.0 * (true_g - set_g) / set_g; }
};

// All readings at one height or at one set force.
struct C_Force_Group {
  double at = 0.0;  // mm or g
  double mean_error_percent = 0.0;
  double greatest_error_percent = 0.0;  // without its sign
};

struct C_Force {
  std::vector<C_Force_Group> heights;  // from the smallest
  std::vector<C_Force_Group> forces;
  C_Force_Reading worst;
  double greatest_error_percent = 0.0;
};

// Throws C_Refused without readings, and for a set force that is not above 0.
C_Force Work_Out_Force(const std::vector<C_Force_Reading>& readings);

}  // namespace study
