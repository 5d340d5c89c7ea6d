#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <vector>

#include "numeric/basis_fit.h"
#include "numeric/force_surface.h"
#include "numeric/polyfit.h"
#include "tests/common/temp_folder.h"

namespace orsanta {
namespace {

CMyArray<double> Array(std::initializer_list<double> values) {
  CMyArray<double> array;
  for (const double value : values) array.Add(value);
  return array;
}

bool All_Finite(const CMyArray<double>& values, int count) {
  bool finite = true;
  for (int i = 0; i < count; ++i) finite = finite && std::isfinite(values[i]);
  return finite;
}

TEST(Polynomial, HighestPowerStandsFirst) {
  CMyPolyfit polynomial;
  CMyArray<double> p;
  EXPECT_EQ(polynomial.My_PolyFit(Array({1, 3}), Array({5, 9}), 1, p), 1);
  ASSERT_EQ(p.GetSize(), 2);
  EXPECT_NEAR(p[0], 2.0, 1e-14);
  EXPECT_NEAR(p[1], 3.0, 1e-14);
  double y = 0.0;
  EXPECT_EQ(polynomial.My_PolyVal(Array({1, 0, 0}), 3.0, y), 1);
  EXPECT_EQ(y, 9.0);
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
}

TEST(Force_Surface, TurnsForceIntoCurrentAndBack) {
  const std::vector<double> I{0.1, 0.4, 0.9, 0.3, 0.7, 0.2, 0.5}, P{1, 3, 2, 5, 0.5, 4, 6};
  std::vector<double> F;
  for (size_t i = 0; i < I.size(); ++i) {
    F.push_back(2 + 3 * I[i] + 0.5 * P[i] + 0.25 * I[i] * P[i] + 0.125 * I[i] * P[i] * P[i]);
  }
  double p[5];
  EXPECT_NEAR(Fit_Force_Surface(I, P, F, p), 0.0, 1e-13);
  const double truth[] = {2, 3, 0.5, 0.25, 0.125};
  for (int j = 0; j < 5; ++j) EXPECT_NEAR(p[j], truth[j], 1e-12);
  // Forces 4 and 0 at one place: the model says 2, which is 2 too little for one and 2 too much for the other.
  EXPECT_NEAR(Fit_Force_Surface(std::vector{1.0, 1.0}, std::vector{0.0, 0.0}, std::vector{4.0, 0.0}, p), 2.0, 1e-14);

  C_My3DPolyfit surface;
  const CMyArray<double> model = Array({2, 3, 0.5, 0.25, 0.125, -77});
  CMyArray<double> force, current;
  EXPECT_EQ(surface.my3dval(Array({0.5, 2}), Array({2, 4}), model, force), 1);
  EXPECT_EQ(force[0], 2 + 1.5 + 1 + 0.25 + 0.25);
  EXPECT_EQ(surface.my3dinvval(force, Array({2, 4}), model, current), 1);
  EXPECT_NEAR(current[0], 0.5, 1e-15);
  EXPECT_NEAR(current[1], 2.0, 1e-15);
  surface.my3dinvval(Array({100}), Array({2}), Array({2, 0, 0.5, 0, 0, 0}), current);
  EXPECT_EQ(current[0], std::numeric_limits<double>::infinity());
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
  fit.xscale = 4.0;
  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1}), 2, fit), 0);
  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1, 2}), 0, fit), 0);
  EXPECT_EQ(fit.xscale, 4.0);

  EXPECT_EQ(basis.Fit(Array({3, 3, 3}), Array({1, 2, 4}), 2, fit), 1);
  EXPECT_EQ(fit.xscale, 0.0);
  EXPECT_TRUE(std::isnan(OneDemVal(fit, 3.0)));

  const double nan = std::numeric_limits<double>::quiet_NaN();
  basis.Fit(Array({nan, -3, 1, 3}), Array({1, 2, 3, 4}), 5, fit);
  EXPECT_EQ(fit.BasisList[0], -3.0);
  EXPECT_EQ(fit.BasisList[2], 0.0);
  EXPECT_EQ(fit.BasisList[3], -fit.BasisList[1]);
  basis.Fit(Array({-1.7e308, 1.6e308}), Array({1, 2}), 3, fit);
  EXPECT_NEAR(fit.BasisList[1], -5e306, 1e293);
}

TEST(Basis_Fit_Death, RunTimeChecksPrintAndAbort) {
  FitData fit;
  EXPECT_EXIT(mExpFit().Fit({}, {}, 1, fit), testing::KilledBySignal(SIGABRT),
              "^If the working dimension of MAX or MIN is variable in length, it must not have zero length at "
              "runtime\\.\nError in OneDemFit \\(line [0-9]+\\)\n$");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), -2, fit), "Value -2 is not greater than or equal to zero.\nExiting");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), 1.5, fit), "type 'int'.  Found 1.5 instead.\n");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1, 2}), 1, fit), "Matrix dimensions must agree.\n");
  fit.BasisList = Array({1});
  fit.p = Array({1, 2});
  fit.xscale = 1.0;
  EXPECT_DEATH(OneDemVal(fit, 1.0), "Index value 2 exceeds valid range \\[1-1\\] of array BasisList.\n");
}

TEST(Fits, BrokenPreconditionsAreAssertionReports) {
  const C_Temp_Folder folder;  // the trace log goes here
  CMyPolyfit polynomial;
  C_My3DPolyfit surface;
  CMyArray<double> out;
  double y = 0.0;
  EXPECT_THROW(polynomial.My_PolyFit(Array({1, 2}), Array({1, 2}), 2, out), CMy_Assert_Exception);
  EXPECT_THROW(polynomial.My_PolyFit(Array({1, 2}), Array({1, 2}), 0, out), CMy_Assert_Exception);
  EXPECT_THROW(polynomial.My_PolyVal(Array({1}), 1.0, y), CMy_Assert_Exception);
  EXPECT_THROW(surface.my3dfit({}, {}, {}, out), CMy_Assert_Exception);
  EXPECT_THROW(surface.my3dval(Array({1}), Array({1}), Array({1, 2, 3, 4, 5}), out), CMy_Assert_Exception);
  EXPECT_THROW(surface.my3dinvval(Array({1, 2}), Array({1}), Array({1, 2, 3, 4, 5, 6}), out), CMy_Assert_Exception);
}

}  // namespace
}  // namespace orsanta
