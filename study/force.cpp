#include "study/force.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "study/refused.h"
#include "study/text.h"

namespace study {

namespace {

std::vector<C_Force_Group> Group(const std::vector<C_Force_Reading>& readings, double C_Force_Reading::*key) {
  std::map<double, std::vector<double>> errors;
  for (const C_Force_Reading& one : readings) errors[one.*key].push_back(one.Error_Percent());
  std::vector<C_Force_Group> groups;
  for (const auto& [at, percent] : errors) {
    C_Force_Group group{at};
    for (const double error : percent) {
      group.mean_error_percent += error / static_cast<double>(percent.size());
      group.greatest_error_percent = std::max(group.greatest_error_percent, std::abs(error));
    }
    groups.push_back(group);
  }
  return groups;
}

}  // namespace

C_Force Work_Out_Force(const std::vector<C_Force_Reading>& readings) {
  if (readings.empty()) throw C_Refused("there are no readings of the force gauge");
  C_Force result;
  for (const C_Force_Reading& one : readings) {
    if (!(one.set_g > 0.0)) {
      throw C_Refused("a set force of " + Short(one.set_g) + " g cannot be compared; set forces are above 0 g");
    }
    const double error = std::abs(one.Error_Percent());
    if (error < result.greatest_error_percent) continue;
    result.worst = one;
    result.greatest_error_percent = error;
  }
  result.heights = Group(readings, &C_Force_Reading::height_mm);
  result.forces = Group(readings, &C_Force_Reading::set_g);
  return result;
}

}  // namespace study
