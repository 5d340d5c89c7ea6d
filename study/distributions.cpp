#include "study/distributions.h"

#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/students_t.hpp>
#include <cmath>

namespace study {

namespace math = boost::math;

double Student_Quantile(double p, double df) {
  return math::quantile(math::students_t(df), p);
}

double Student_Two_Sided_P(double t, double df) {
  if (std::isinf(t)) return 0.0;
  return 2.0 * math::cdf(math::complement(math::students_t(df), std::abs(t)));
}

double Chi_Squared_Quantile(double p, double df) {
  return math::quantile(math::chi_squared(df), p);
}

double F_Quantile(double p, double df_above, double df_below) {
  return math::quantile(math::fisher_f(df_above, df_below), p);
}

double F_Upper_P(double f, double df_above, double df_below) {
  if (std::isinf(f)) return 0.0;
  return math::cdf(math::complement(math::fisher_f(df_above, df_below), f));
}

}  // namespace study
