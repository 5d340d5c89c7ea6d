#include "study/components.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace study {

namespace {

constexpr double Categories = 1.41;       // of the handbook: the square root of 2, cut
constexpr double Tolerance_Spread = 6.0;  // standard deviations

}  // namespace

void C_Components::Add_Up() {
  GRR = std::sqrt(EV * EV + AV * AV + INT * INT);
  TV = std::hypot(GRR, PV);
}

int C_Components::Ndc() const {
  if (GRR == 0.0) return -1;
  constexpr double Most = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(Categories * PV / GRR, Most));
}

double Percent_Of_Tolerance(double component_mm, double tolerance_mm) {
  return 100.0 * Tolerance_Spread * component_mm / tolerance_mm;
}

}  // namespace study
