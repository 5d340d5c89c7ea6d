#include "study/linearity.h"

#include <algorithm>
#include <cmath>

#include "study/distributions.h"
#include "study/refused.h"
#include "study/text.h"

namespace study {

namespace {

void Check(const std::vector<C_Reference_Values>& references) {
  if (references.size() < Linearity_Least_References) {
    throw C_Refused("a linearity study needs at least " + std::to_string(Linearity_Least_References) +
                    " references, there are " + std::to_string(references.size()) + "; add references");
  }
  for (const C_Reference_Values& one : references) {
    if (one.values_mm.size() >= Linearity_Least_Repeats) continue;
    throw C_Refused("reference " + Short(one.reference_mm) + " mm has " + std::to_string(one.values_mm.size()) +
                    " values; a linearity study needs at least " + std::to_string(Linearity_Least_Repeats) +
                    " of each");
  }
}

void Describe_Sizes(const std::vector<C_Reference_Values>& references, double confidence, C_Linearity& result) {
  double squares = 0.0, sum = 0.0;
  for (const C_Reference_Values& one : references) {
    std::vector<double> biases;
    for (const double value : one.values_mm) biases.push_back(value - one.reference_mm);
    C_Size size;
    size.reference_mm = one.reference_mm;
    size.bias = Describe(biases);
    if (size.bias.Range() > 0.0) {
      size.bias_test = Test_Against_Zero(size.bias, confidence);
    } else {  // no spread at all: the mean is what it is
      size.bias_test = {0.0, size.bias.mean == 0.0 ? 1.0 : 0.0, size.bias.mean, size.bias.mean};
    }
    result.count += size.bias.count;
    sum += size.bias.count * size.bias.mean;
    squares += size.bias.Squares();
    result.greatest_bias_mm = std::max(result.greatest_bias_mm, std::abs(size.bias.mean));
    result.sizes.push_back(size);
  }
  result.mean_bias_mm = sum / result.count;
  result.repeatability_mm = std::sqrt(squares / (result.count - static_cast<double>(references.size())));
}

// The line through the biases, and its tests and band.
void Fit(double confidence, C_Linearity& result) {
  const double n = result.count, df = n - 2.0;
  double mean_x = 0.0;
  for (const C_Size& size : result.sizes) mean_x += size.bias.count * size.reference_mm / n;
  double xx = 0.0, xy = 0.0, yy = 0.0;
  for (const C_Size& size : result.sizes) {
    const double x = size.reference_mm - mean_x, y = size.bias.mean - result.mean_bias_mm;
    xx += size.bias.count * x * x;
    xy += size.bias.count * x * y;
    yy += size.bias.count * y * y + size.bias.Squares();
  }
  result.slope = xy / xx;
  result.intercept_mm = result.mean_bias_mm - result.slope * mean_x;
  // From the residuals of the sizes' means, not from yy: a good fit would lose its digits.
  double residuals = 0.0;
  for (C_Size& size : result.sizes) {
    size.fit_mm = result.intercept_mm + result.slope * size.reference_mm;
    const double off = size.bias.mean - size.fit_mm;
    residuals += size.bias.count * off * off + size.bias.Squares();
  }
  result.r_squared = 1.0 - residuals / yy;
  result.residual_deviation_mm = std::sqrt(residuals / df);
  const double s = result.residual_deviation_mm;
  result.slope_error = s / std::sqrt(xx);
  result.intercept_error_mm = s * std::sqrt(1.0 / n + mean_x * mean_x / xx);
  result.slope_t = result.slope / result.slope_error;
  result.slope_p = Student_Two_Sided_P(result.slope_t, df);
  result.intercept_t = result.intercept_mm / result.intercept_error_mm;
  result.intercept_p = Student_Two_Sided_P(result.intercept_t, df);
  const double quantile = Student_Quantile(0.5 + confidence / 2.0, df);
  for (C_Size& size : result.sizes) {
    const double x = size.reference_mm - mean_x;
    const double half = quantile * s * std::sqrt(1.0 / n + x * x / xx);
    size.band_low_mm = size.fit_mm - half;
    size.band_high_mm = size.fit_mm + half;
  }
}

}  // namespace

double C_Linearity::Percent_Linearity() const {
  return 100.0 * std::abs(slope);
}

bool C_Linearity::Zero_In_Band() const {
  return std::all_of(sizes.begin(), sizes.end(),
                     [](const C_Size& size) { return size.band_low_mm <= 0.0 && size.band_high_mm >= 0.0; });
}

C_Linearity Work_Out_Linearity(std::vector<C_Reference_Values> references, double confidence) {
  Check(references);
  std::sort(references.begin(), references.end(),
            [](const C_Reference_Values& a, const C_Reference_Values& b) { return a.reference_mm < b.reference_mm; });
  C_Linearity result;
  Describe_Sizes(references, confidence, result);
  if (result.repeatability_mm == 0.0) {
    throw C_Refused(
        "the values of each reference are identical: nothing tells how well the line is known; give the "
        "values with more digits");
  }
  Fit(confidence, result);
  return result;
}

}  // namespace study
