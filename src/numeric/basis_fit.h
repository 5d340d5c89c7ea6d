// The basis-function fit: a curve over the stroke as a sum of logistic steps, such as friction over position.
//
//   y(x) = sum over j of p[j] * s((x - BasisList[j]) / xscale),    s(t) = e^t / (e^t + 1)
//
// Far from its centre a step is saturated: 0 for t below -37. Required: for t above 37 it adds a plain 1, without its
// weight, and the curve jumps there, since stored fits are evaluated so.
//
// Nothing here holds data; any thread may call, each on records of its own. What is called a run-time check prints its
// message and the routine on the standard error stream and ends the process with abort.
#pragma once

#include "support/base/array.h"

namespace orsanta {

struct FitData {
  CMyArray<double> BasisList;  // centres of the steps, ascending, in the unit of x
  CMyArray<double> p;          // weight of each step, in the unit of y
  double xscale = 0.0;         // common width of the steps, in the unit of x
};

// The fit of n steps to the samples y(x). Run-time checks: x is not empty, n is a whole number not below 0, and x and y
// have the same size. The least-squares solution is taken, and steps that the samples do not determine get the weight
// 0; with exactly n samples the equations are solved as they stand. If all x are equal the width is 0 and the weights
// are 0 or not finite.
void OneDemFit(const CMyArray<double>& x, const CMyArray<double>& y, double n, FitData& fit);

// The curve at x. Run-time check: BasisList is not shorter than p.
double OneDemVal(const FitData& fit, double x);

class mExpFit {
 public:
  // Fits n steps to the samples y(x). Returns 1; 0, and leaves `fit` alone, if x and y differ in size or n is not
  // above 0. An empty x ends in a run-time check.
  int Fit(const CMyArray<double>& x, const CMyArray<double>& y, int n, FitData& fit);

  // y: set to the size of x, element i the curve at x[i]; must be another array than x. Always returns 1.
  int Evaluate(const FitData& fit, const CMyArray<double>& x, CMyArray<double>& y);
};

}  // namespace orsanta
