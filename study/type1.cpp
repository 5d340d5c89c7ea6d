#include "study/type1.h"

#include <cmath>
#include <string>

#include "study/refused.h"

namespace study {

namespace {

constexpr double Cg_Share = 0.2;   // of the tolerance, that the gauge's spread may take
constexpr double Cg_Spread = 6.0;  // standard deviations in that spread

}  // namespace

C_Type1 Work_Out_Type1(const std::vector<double>& values, const C_Type1_Settings& settings) {
  const auto count = static_cast<int>(values.size());
  if (count < Type1_Least_Repeats) {
    throw C_Refused("a type 1 study needs at least " + std::to_string(Type1_Least_Repeats) + " repeats, there are " +
                    std::to_string(count) + "; measure the reference part more often");
  }
  if (!(settings.tolerance_mm > 0.0)) throw C_Refused("a type 1 study needs a tolerance; give --tolerance");
  C_Type1 result;
  result.values = Describe(values);
  if (result.values.Range() == 0.0) {
    throw C_Refused("all " + std::to_string(count) +
                    " values are identical: the gauge shows no repeatability at this resolution; give the values with "
                    "more digits");
  }
  result.bias_mm = result.values.mean - settings.reference_mm;
  C_Sample biases = result.values;
  biases.mean = result.bias_mm;
  result.bias_test = Test_Against_Zero(biases, settings.confidence);
  const double tolerance = settings.tolerance_mm;
  const double deviation = result.values.deviation;
  result.cg = Cg_Share * tolerance / (Cg_Spread * deviation);
  result.cgk = (Cg_Share / 2.0 * tolerance - std::abs(result.bias_mm)) / (Cg_Spread / 2.0 * deviation);
  result.percent_resolution = 100.0 * settings.resolution_mm / tolerance;
  return result;
}

}  // namespace study
