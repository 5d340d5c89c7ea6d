// CMyPolyfit: polynomials of one variable, fitted by least squares and evaluated.
//
// Coefficients stand highest power first: element 0 of a polynomial of degree n belongs to x to the power n, element n
// is the constant term. The fit works on the powers of x as they are, without centring or scaling.
//
// The class holds no data; any thread may call, each on arrays of its own.
#pragma once

#include "support/base/array.h"

namespace orsanta {

class CMyPolyfit {
 public:
  // Fits y(x) by a polynomial in the least-squares sense.
  // x, y: samples, of equal size, more than `degree` of them; units are the caller's. degree: at least 1.
  // coefficients: receives degree + 1 elements. Always returns 1.
  // Samples that do not determine the polynomial (all x equal, say) are not an error: there is no rank cut, and the
  // coefficients come out infinite, not-a-number, or of a size that only rounding decides.
  // A broken precondition is an assertion report.
  int My_PolyFit(const CMyArray<double>& x, const CMyArray<double>& y, int degree, CMyArray<double>& coefficients);

  // Evaluates the polynomial at x by Horner's rule into y. Always returns 1.
  // coefficients: at least 2, else an assertion report.
  int My_PolyVal(const CMyArray<double>& coefficients, double x, double& y);
};

}  // namespace orsanta
