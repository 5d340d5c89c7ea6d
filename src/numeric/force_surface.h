// C_My3DPolyfit: the force of the voice coil over coil current and probe position.
//
//   F = p0 + p1 I + p2 P + p3 I P + p4 I P^2      I current in A, P position in mm, F force in g
//
// A coefficient array has exactly six elements: p0 to p4, and a sixth that a fit sets to 0 and nothing reads.
//
// The class holds no data; any thread may call, each on arrays of its own. A broken precondition is an assertion
// report.
#pragma once

#include <span>

#include "support/base/array.h"

namespace orsanta {

// The fit on plain views of equal size: p receives p0 to p4. Returns the largest residual (model less force, with its
// sign: a negative one does not count), in g.
// Without a sample all of them are 0. With exactly five samples the five equations are solved as they stand, and a
// singular set gives infinite or not-a-number coefficients. With any other number the least-squares solution is taken,
// and the coefficients that the samples do not determine are 0.
double Fit_Force_Surface(std::span<const double> current, std::span<const double> position,
                         std::span<const double> force, std::span<double, 5> p);

class C_My3DPolyfit {
 public:
  // Fits the model to triples of current (A), position (mm) and force (g), of equal sizes of at least 1.
  // coefficients: set to six elements; see Fit_Force_Surface for a set of samples that does not determine them. Always
  // returns 1.
  int my3dfit(const CMyArray<double>& current, const CMyArray<double>& position, const CMyArray<double>& force,
              CMyArray<double>& coefficients);

  // force: set to the size of the inputs, element i the force (g) at current i (A) and position i (mm).
  // coefficients: exactly six elements. Always returns 1.
  int my3dval(const CMyArray<double>& current, const CMyArray<double>& position, const CMyArray<double>& coefficients,
              CMyArray<double>& force);

  // current: set to the size of the inputs, element i the current (A) that gives force i (g) at position i (mm).
  // Where the model's force does not depend on the current the result is infinite or not-a-number.
  // coefficients: exactly six elements. Always returns 1.
  int my3dinvval(const CMyArray<double>& force, const CMyArray<double>& position, const CMyArray<double>& coefficients,
                 CMyArray<double>& current);
};

}  // namespace orsanta
