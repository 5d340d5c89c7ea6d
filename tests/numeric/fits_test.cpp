#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <vector>

#include "numeric/basis_fit.h"
#include "numeric/force_surface.h"
#include "numeric/polyfit.h"

namespace orsanta {
namespace {

CMyArray<double> Array(std::initializer_list<double> values) {
  CMyArray<double> array;
  for (const double value : values) array.Add(value);
  return array;
}

bool All_Finite(const CMyArray<double>& values, int count) {
  return std::all_of(values.begin(), values.begin() + count, [](double value) { return std::isfinite(value); });
}

// Rounding would leave something beside the zero on the diagonal in most of these.
TEST(Polynomial, TooFewPlacesGiveNoFiniteCoefficients) {
  CMyPolyfit polynomial;
  CMyArray<double> p;
  for (const double place : {0.0, 0.1, 2.0, 3.7, -5.0, 49.0, 1000.0}) {
    CMyArray<double> x, y;
    for (int i = 0; i < 7; ++i) {
      x.Add(place);
      y.Add(i);
      if (i == 0) continue;
      EXPECT_EQ(polynomial.My_PolyFit(x, y, 1, p), 1);
      EXPECT_FALSE(std::isfinite(p[0]) || std::isfinite(p[1])) << place << ", " << i + 1 << " samples";
    }
  }
  polynomial.My_PolyFit(Array({1, 2, 1, 2}), Array({1, 2, 3, 5}), 2, p);
  EXPECT_FALSE(All_Finite(p, 3));
  double y = 0.0;
  polynomial.My_PolyVal(Array({1, 0, 0}), 3.0, y);
  EXPECT_EQ(y, 9.0) << "the highest power stands first";
}

TEST(Force_Surface, TurnsForceIntoCurrentAndBack) {
  C_My3DPolyfit surface;
  const CMyArray<double> model = Array({2, 3, 0.5, 0.25, 0.125, -77});
  CMyArray<double> force, current;
  surface.my3dval(Array({0.5, 2}), Array({2, 4}), model, force);
  EXPECT_EQ(force[0], 2 + 1.5 + 1 + 0.25 + 0.25);
  surface.my3dinvval(force, Array({2, 4}), model, current);
  EXPECT_NEAR(current[0], 0.5, 1e-15);
  EXPECT_NEAR(current[1], 2.0, 1e-15);
  surface.my3dinvval(Array({100}), Array({2}), Array({2, 0, 0.5, 0, 0, 0}), current);
  EXPECT_EQ(current[0], std::numeric_limits<double>::infinity());

  // Forces 4 and 0 at one place: the model says 2, which is 2 too little for one and 2 too much for the other.
  double p[5];
  EXPECT_NEAR(Fit_Force_Surface(std::vector{1.0, 1.0}, std::vector{0.0, 0.0}, std::vector{4.0, 0.0}, p), 2.0, 1e-14);
}

TEST(Force_Surface, FiveSamplesAreSolvedAsTheyStand) {
  C_My3DPolyfit surface;
  const CMyArray<double> I = Array({1, 2, 4, 8, 16}), P = Array({2, 2, 2, 2, 2});
  CMyArray<double> p;
  surface.my3dfit(I, P, Array({1, 2, 3, 4, 6}), p);
  EXPECT_FALSE(All_Finite(p, 5)) << "singular";
  surface.my3dfit(I, P, Array({0, 0, 0, 0, 0}), p);
  for (int j = 0; j < 5; ++j) EXPECT_EQ(p[j], 0.0) << "a right side of zeros divides by no pivot";
}

TEST(Basis_Fit, SaturatedStepsCountAsOne) {
  FitData fit;
  fit.BasisList = Array({1, 2, 3});
  fit.p = Array({10, 20, 30});
  fit.xscale = 0.5;
  CMyArray<double> y;
  EXPECT_EQ(mExpFit().Evaluate(fit, Array({100, -100, 2}), y), 1);
  EXPECT_EQ(y[0], 3.0);
  EXPECT_EQ(y[1], 0.0);
  EXPECT_NEAR(y[2], 10 / (1 + std::exp(-2.0)) + 10 + 30 / (1 + std::exp(2.0)), 1e-13);
}

TEST(Basis_Fit, OddSamples) {
  mExpFit basis;
  FitData fit;
  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1}), 2, fit), 0);
  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1, 2}), 0, fit), 0);
  EXPECT_EQ(basis.Fit(Array({3, 3, 3}), Array({1, 2, 4}), 2, fit), 1);
  EXPECT_TRUE(std::isnan(OneDemVal(fit, 3.0)));
  // A not-a-number place does not count for the range, and a range beyond the largest number has its middle.
  basis.Fit(Array({std::nan(""), -3, 1, 3}), Array({1, 2, 3, 4}), 5, fit);
  EXPECT_EQ(fit.BasisList[0], -3.0);
  EXPECT_EQ(fit.BasisList[2], 0.0);
  basis.Fit(Array({-1.7e308, 1.6e308}), Array({1, 2}), 3, fit);
  EXPECT_NEAR(fit.BasisList[1], -5e306, 1e293);
}

TEST(Basis_Fit_Death, RunTimeChecksPrintAndAbort) {
  FitData fit;
  EXPECT_EXIT(mExpFit().Fit({}, {}, 1, fit), testing::KilledBySignal(SIGABRT),
              "^If the working dimension of MAX or MIN is variable in length, it must not have zero length at "
              "runtime\\.\nError in OneDemFit \\(line [0-9]+\\)\n$");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), 1.5, fit), "type 'int'.  Found 1.5 instead.\n");
  fit.p = Array({1});
  EXPECT_DEATH(OneDemVal(fit, 1.0), "Index value 1 exceeds valid range \\[1-0\\] of array BasisList.\n");
}

}  // namespace
}  // namespace orsanta
