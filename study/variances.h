// Components of variance as sums of mean squares, and their confidence intervals.
#pragma once

#include <vector>

namespace study {

// A mean square of an analysis of variance, with its factor in a sum.
struct C_Term {
  double factor = 0.0;
  double mean_square = 0.0;
  double df = 0.0;
};

struct C_Interval {
  double low = 0.0;
  double high = 0.0;
};

// The sum of the terms; it may be negative.
double Sum(const std::vector<C_Term>& terms);

// The confidence interval of that sum; limits below 0 are set to 0. confidence: between 0 and 1. Terms with a positive
// factor first; at most one has a negative factor, and then there is one before it.
//
// One term: exact, by the chi-squared distribution. Several: the modified large-sample intervals of Graybill and Wang
// (1980) for sums and of Ting, Burdick, Graybill, Jeyaratnam and Lu (1990) for a difference, as Burdick, Borror and
// Montgomery (2005, "Design and Analysis of Gauge R&R Studies") use them. Assumes normally distributed, independent
// effects.
C_Interval Interval(const std::vector<C_Term>& terms, double confidence);

}  // namespace study
