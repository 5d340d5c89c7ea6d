// Type 1 study: one reference part, measured again and again. It tells the gauge's bias and repeatability, and whether
// both are small enough for a tolerance.
//
// Formulas (VDA 5, ISO 22514-7; tolerance T is the whole width of the tolerance field):
//
//   bias = mean - reference        Cg  = 0.2 T / (6 s)
//   s    = standard deviation      Cgk = (0.1 T - |bias|) / (3 s)
//
// Assumes that the values are independent, normally distributed and come from one state of the gauge, and that the
// reference is known far better than the gauge measures.
#pragma once

#include <vector>

#include "study/sample.h"

namespace study {

struct C_Type1_Settings {
  double reference_mm = 0.0;
  double tolerance_mm = 0.0;   // whole width
  double resolution_mm = 0.0;  // smallest step of the gauge
  double confidence = 0.95;
};

struct C_Type1 {
  C_Sample values;  // mm
  double bias_mm = 0.0;
  C_Mean_Test bias_test;  // its interval in mm
  double cg = 0.0;
  double cgk = 0.0;
  double percent_resolution = 0.0;  // of the tolerance
};

constexpr int Type1_Least_Repeats = 25;

// values in mm. Throws C_Refused for fewer than Type1_Least_Repeats values, for values that are all equal, and without
// a tolerance.
C_Type1 Work_Out_Type1(const std::vector<double>& values, const C_Type1_Settings& settings);

}  // namespace study
