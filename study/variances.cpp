#include "study/variances.h"

#include <algorithm>
#include <cmath>

#include "study/distributions.h"

namespace study {

namespace {

double Square(double x) {
  return x * x;
}

// How far a limit of one mean square lies below (G) and above (H) it, as a share of it.
struct C_Reach {
  C_Reach(double df, double tail)
      : below(1.0 - df / Chi_Squared_Quantile(1.0 - tail, df)), above(df / Chi_Squared_Quantile(tail, df) - 1.0) {}
  double below;
  double above;
};

C_Interval Of_Sum(const std::vector<C_Term>& terms, double tail) {
  double below = 0.0, above = 0.0;
  for (const C_Term& term : terms) {
    const C_Reach reach(term.df, tail);
    const double size = term.factor * term.mean_square;
    below += Square(reach.below * size);
    above += Square(reach.above * size);
  }
  const double estimate = Sum(terms);
  return {estimate - std::sqrt(below), estimate + std::sqrt(above)};
}

// plus.factor > 0 > minus.factor.
C_Interval Of_Difference(const C_Term& plus, const C_Term& minus, double tail) {
  const C_Reach reach_plus(plus.df, tail), reach_minus(minus.df, tail);
  const double a = plus.factor * plus.mean_square, b = -minus.factor * minus.mean_square;
  const double f_high = F_Quantile(1.0 - tail, plus.df, minus.df), f_low = F_Quantile(tail, plus.df, minus.df);
  const double cross_below =
      (Square(f_high - 1.0) - Square(reach_plus.below * f_high) - Square(reach_minus.above)) / f_high;
  const double cross_above =
      (Square(1.0 - f_low) - Square(reach_plus.above * f_low) - Square(reach_minus.below)) / f_low;
  const double below = Square(reach_plus.below * a) + Square(reach_minus.above * b) + cross_below * a * b;
  const double above = Square(reach_plus.above * a) + Square(reach_minus.below * b) + cross_above * a * b;
  return {a - b - std::sqrt(std::max(0.0, below)), a - b + std::sqrt(std::max(0.0, above))};
}

}  // namespace

double Sum(const std::vector<C_Term>& terms) {
  double sum = 0.0;
  for (const C_Term& term : terms) sum += term.factor * term.mean_square;
  return sum;
}

C_Interval Interval(const std::vector<C_Term>& terms, double confidence) {
  const double tail = (1.0 - confidence) / 2.0;
  const bool difference = terms.back().factor < 0.0;
  const C_Interval limits = difference ? Of_Difference(terms[0], terms[1], tail) : Of_Sum(terms, tail);
  return {std::max(0.0, limits.low), std::max(0.0, limits.high)};
}

}  // namespace study
