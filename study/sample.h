// Count, mean and standard deviation of a sample, and what its mean tells about a true value.
#pragma once

#include <vector>

namespace study {

struct C_Sample {
  int count = 0;
  double mean = 0.0;
  double deviation = 0.0;  // with count - 1 in the denominator; 0 for a single value
  double smallest = 0.0;
  double largest = 0.0;

  double Range() const { return largest - smallest; }
  // Sum of squared deviations from the mean.
  double Squares() const { return (count - 1) * deviation * deviation; }
};

// values: at least one.
C_Sample Describe(const std::vector<double>& values);

// The two-sided t-test of a mean against 0, and its confidence interval. Assumes independent, normally distributed
// values.
struct C_Mean_Test {
  double t = 0.0;
  double p = 1.0;
  double low = 0.0;
  double high = 0.0;
};

// confidence: between 0 and 1. The sample has at least two values that are not all equal.
C_Mean_Test Test_Against_Zero(const C_Sample& sample, double confidence);

}  // namespace study
