#include "numeric/polyfit.h"

#include <algorithm>
#include <vector>

#include "numeric/least_squares.h"

namespace orsanta {
namespace {

// How many different values x holds, counted up to `limit`. A not-a-number value differs from every other.
int Count_Distinct(const CMyArray<double>& x, int limit) {
  std::vector<double> distinct;
  for (const double value : x) {
    if (static_cast<int>(distinct.size()) == limit) break;
    if (std::find(distinct.begin(), distinct.end(), value) == distinct.end()) distinct.push_back(value);
  }
  return static_cast<int>(distinct.size());
}

}  // namespace

int CMyPolyfit::My_PolyFit(const CMyArray<double>& x, const CMyArray<double>& y, int degree,
                           CMyArray<double>& coefficients) {
  MY_ASSERT(x.GetSize() == y.GetSize());
  MY_ASSERT(x.GetSize() > degree);
  MY_ASSERT(degree >= 1);
  const int rows = x.GetSize();

  // Powers by repeated multiplication, from the constant term on the right to the highest power on the left.
  C_Matrix powers(rows, degree + 1);
  std::fill_n(powers.Column(degree), rows, 1.0);
  std::copy(x.begin(), x.end(), powers.Column(degree - 1));
  for (int j = degree - 2; j >= 0; --j) {
    for (int i = 0; i < rows; ++i) powers(i, j) = x[i] * powers(i, j + 1);
  }

  // A polynomial of degree n needs n + 1 different places: with fewer, that many columns are independent and no more.
  const std::vector<double> p = Solve_Keeping_All_Columns(std::move(powers), std::vector<double>(y.begin(), y.end()),
                                                          Count_Distinct(x, degree + 1));
  coefficients.SetArraySize(degree + 1);
  std::copy(p.begin(), p.end(), coefficients.begin());
  return 1;
}

int CMyPolyfit::My_PolyVal(const CMyArray<double>& coefficients, double x, double& y) {
  MY_ASSERT(coefficients.GetSize() >= 2);
  double value = coefficients[0];
  for (int k = 1; k < coefficients.GetSize(); ++k) value = x * value + coefficients[k];
  y = value;
  return 1;
}

}  // namespace orsanta
