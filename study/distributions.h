// The distributions that the tests and confidence intervals of the studies need. p is a probability strictly between 0
// and 1, df a number of degrees of freedom above 0.
#pragma once

namespace study {

double Student_Quantile(double p, double df);
// The probability of a |t| at least as large.
double Student_Two_Sided_P(double t, double df);
double Chi_Squared_Quantile(double p, double df);
double F_Quantile(double p, double df_above, double df_below);
// The probability of an F at least as large.
double F_Upper_P(double f, double df_above, double df_below);

}  // namespace study
