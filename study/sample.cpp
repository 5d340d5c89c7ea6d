#include "study/sample.h"

#include <algorithm>
#include <cmath>

#include "study/distributions.h"

namespace study {

C_Sample Describe(const std::vector<double>& values) {
  C_Sample sample;
  sample.count = static_cast<int>(values.size());
  sample.smallest = sample.largest = values.front();
  double sum = 0.0;
  for (const double value : values) {
    // From the first value on, so that a thickness keeps its small digits in the sum.
    sum += value - values.front();
    sample.smallest = std::min(sample.smallest, value);
    sample.largest = std::max(sample.largest, value);
  }
  sample.mean = values.front() + sum / sample.count;
  double squares = 0.0;
  for (const double value : values) squares += (value - sample.mean) * (value - sample.mean);
  if (sample.count > 1) sample.deviation = std::sqrt(squares / (sample.count - 1));
  return sample;
}

C_Mean_Test Test_Against_Zero(const C_Sample& sample, double confidence) {
  const double df = sample.count - 1;
  const double error = sample.deviation / std::sqrt(sample.count);
  const double half = Student_Quantile(0.5 + confidence / 2.0, df) * error;
  C_Mean_Test test;
  test.t = sample.mean / error;
  test.p = Student_Two_Sided_P(test.t, df);
  test.low = sample.mean - half;
  test.high = sample.mean + half;
  return test;
}

}  // namespace study
