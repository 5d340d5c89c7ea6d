#include "numeric/basis_fit.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

#include "numeric/least_squares.h"
#include "numeric/nan_min_max.h"
#include "numeric/runtime_check.h"

namespace orsanta {
namespace {

constexpr double Saturation = 37.0;  // e^-37 is below half a unit in the last place of 1.0
// The width of a step in spacings of the centres.
constexpr double Width_In_Spacings = 5.0;
// Half the largest double: two ends beyond it may lie farther apart than a double can say.
constexpr double Half_Of_Largest = 8.988465674311579e307;

// The number of steps as a count.
int Whole_Number(double n) {
  if (!(n >= 0.0)) {
    Fail_Runtime_Check(__func__, __LINE__,
                       "Value %g is not greater than or equal to zero.\nExiting to prevent memory corruption.", n);
  }
  if (n != std::floor(n) || n > std::numeric_limits<int>::max()) {
    Fail_Runtime_Check(__func__, __LINE__, "Expected a value representable in the C type 'int'.  Found %g instead.", n);
  }
  return static_cast<int>(n);
}

// n evenly spaced values whose ends are exactly xmin and xmax; a single value is xmax. Symmetric ends give exactly
// symmetric values, and a span that would overflow is walked from both ends.
CMyArray<double> Evenly_Spaced(double xmin, double xmax, int n) {
  CMyArray<double> values;
  values.SetArraySize(n);
  if (n >= 1) values[n - 1] = xmax;
  if (n >= 2) values[0] = xmin;
  const double spacings = n - 1.0;
  if (xmin == -xmax) {
    for (int k = 2; k < n; ++k) values[k - 1] = xmax * ((2.0 * k - n - 1.0) / spacings);
    if (n >= 3 && n % 2 == 1) values[n / 2] = 0.0;
  } else if ((xmin < 0.0) != (xmax < 0.0) && (std::fabs(xmin) > Half_Of_Largest || std::fabs(xmax) > Half_Of_Largest)) {
    const double d1 = xmin / spacings;
    const double d2 = xmax / spacings;
    for (int k = 1; k < n - 1; ++k) values[k] = xmin + d2 * k - d1 * k;
  } else {
    const double step = (xmax - xmin) / spacings;
    for (int k = 1; k < n - 1; ++k) values[k] = xmin + k * step;
  }
  return values;
}

}  // namespace

void OneDemFit(const CMyArray<double>& x, const CMyArray<double>& y, double n, FitData& fit) {
  const int rows = x.GetSize();
  if (rows == 0) {
    Fail_Runtime_Check(
        __func__, __LINE__,
        "If the working dimension of MAX or MIN is variable in length, it must not have zero length at runtime.");
  }
  const std::span<const double> samples(x.GetData(), static_cast<size_t>(rows));
  const double xmax = Largest(samples);
  const double xmin = Smallest(samples);
  fit.xscale = (xmax - xmin) / n * Width_In_Spacings;
  const int columns = Whole_Number(n);
  fit.BasisList = Evenly_Spaced(xmin, xmax, columns);

  C_Matrix steps(rows, columns);
  for (int j = 0; j < columns; ++j) {
    for (int i = 0; i < rows; ++i) {
      const double t = (x[i] - fit.BasisList[j]) / fit.xscale;
      if (t > Saturation) {
        steps(i, j) = 1.0;
      } else if (t < -Saturation) {
        steps(i, j) = 0.0;
      } else {
        const double e = std::exp(t);
        steps(i, j) = e / (e + 1.0);
      }
    }
  }
  const std::vector<double> p = Left_Divide(std::move(steps), std::vector<double>(y.begin(), y.end()));
  fit.p.SetArraySize(columns);
  std::copy(p.begin(), p.end(), fit.p.begin());
}

double OneDemVal(const FitData& fit, double x) {
  const int centres = fit.BasisList.GetSize();
  double y = 0.0;
  for (int j = 0; j < fit.p.GetSize(); ++j) {
    if (j >= centres) Fail_Index_Check(__func__, __LINE__, j + 1, centres, "BasisList");
    const double t = (x - fit.BasisList[j]) / fit.xscale;
    if (t > Saturation) {
      y += 1.0;  // without its weight, see the header
    } else if (t < -Saturation) {
      y += 0.0;
    } else {
      const double e = std::exp(t);
      y += fit.p[j] * e / (e + 1.0);
    }
  }
  return y;
}

int mExpFit::Fit(const CMyArray<double>& x, const CMyArray<double>& y, int n, FitData& fit) {
  if (x.GetSize() != y.GetSize() || n <= 0) return 0;
  OneDemFit(x, y, n, fit);
  return 1;
}

int mExpFit::Evaluate(const FitData& fit, const CMyArray<double>& x, CMyArray<double>& y) {
  y.SetArraySize(x.GetSize());
  for (int i = 0; i < x.GetSize(); ++i) y[i] = OneDemVal(fit, x[i]);
  return 1;
}

}  // namespace orsanta
