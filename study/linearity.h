// Linearity study: reference parts over the gauge's range, each measured repeatedly. It tells how the bias changes with
// the size of the part.
//
// The bias of every single value is fitted by least squares over the reference sizes x (AIAG Measurement Systems
// Analysis, 4th edition, chapter III-B):
//
//   bias = intercept + slope x          s^2 = sum of squared residuals / (n - 2)
//   band at x: fit +- t(1 - a/2, n - 2) s sqrt(1/n + (x - mean x)^2 / sum (x - mean x)^2)
//   %linearity = 100 |slope|
//
// Slope and intercept are each tested against 0 with t. Assumes independent, normally distributed values with equal
// spread at every size, and references known far better than the gauge measures.
#pragma once

#include <vector>

#include "study/sample.h"

namespace study {

struct C_Reference_Values {
  double reference_mm = 0.0;
  std::vector<double> values_mm;
};

struct C_Size {
  double reference_mm = 0.0;
  C_Sample bias;  // mm
  C_Mean_Test bias_test;
  double fit_mm = 0.0;  // the regression line here, and its confidence band
  double band_low_mm = 0.0;
  double band_high_mm = 0.0;
};

struct C_Linearity {
  int count = 0;
  std::vector<C_Size> sizes;  // by size
  double slope = 0.0;         // mm per mm
  double intercept_mm = 0.0;
  double slope_error = 0.0;  // standard errors
  double intercept_error_mm = 0.0;
  double slope_t = 0.0, slope_p = 1.0;
  double intercept_t = 0.0, intercept_p = 1.0;
  double residual_deviation_mm = 0.0;
  double r_squared = 0.0;
  double repeatability_mm = 0.0;  // pooled standard deviation within the sizes
  double mean_bias_mm = 0.0;      // of all values
  double greatest_bias_mm = 0.0;  // greatest mean bias of a size, without its sign

  double Percent_Linearity() const;
  // True when the line "no bias" lies inside the band at every size.
  bool Zero_In_Band() const;
};

constexpr int Linearity_Least_References = 5;
constexpr int Linearity_Least_Repeats = 10;

// Throws C_Refused, with the reference named, for too few references or repeats and for values that are all equal.
C_Linearity Work_Out_Linearity(std::vector<C_Reference_Values> references, double confidence = 0.95);

}  // namespace study
