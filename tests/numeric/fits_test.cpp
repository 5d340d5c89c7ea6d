#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <iterator>
#include <map>
#include <numeric>

#include "common/arrays.h"
#include "common/failed_check.h"
#include "common/temp_folder.h"
#include "numeric/basis_fit.h"
#include "numeric/force_surface.h"
#include "numeric/least_squares.h"
#include "numeric/polyfit.h"
#include "numeric/runtime_check.h"

namespace orsanta {

using Rows = std::map<std::string, CMyArray<double>>;

static CMyArray<double> Fit(const std::string& kind, Rows& rows) {
  CMyArray<double> p;
  if (kind == "polynomial") CMyPolyfit().My_PolyFit(rows["x"], rows["y"], static_cast<int>(rows["degree"][0]), p);
  if (kind == "surface") C_My3DPolyfit().my3dfit(rows["current"], rows["position"], rows["force"], p);
  if (kind != "basis") return p;
  FitData fit;
  EXPECT_EQ(mExpFit().Fit(rows["x"], rows["y"], static_cast<int>(rows["n"][0]), fit), 1);
  EXPECT_DOUBLE_EQ(fit.xscale, rows["xscale"][0]);
  for (int i = 0; i < rows["centres"].GetSize(); ++i) EXPECT_DOUBLE_EQ(fit.BasisList[i], rows["centres"][i]);
  return fit.p;
}

// Against what reference/make_reference.py works out. A coefficient of 0, or one that is not finite, must be so in
// both.
TEST(Fits, Agree_With_Lapack) {
  std::ifstream file(REFERENCE_FILE);
  std::string key, kind, name;
  Rows rows;
  int cases = 0;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    words >> key;
    if (key == "case") {
      words >> kind >> name;
      rows.clear();
      continue;
    }
    for (std::string word; words >> word;) rows[key].Add(std::strtod(word.c_str(), nullptr));
    if (key != "tolerance") continue;  // the last row of a case

    ++cases;
    const CMyArray<double> p = Fit(kind, rows);
    EXPECT_EQ(p.GetSize(), rows["p"].GetSize() + (kind == "surface" ? 1 : 0));  // its sixth is always 0
    for (int i = 0; i < rows["p"].GetSize(); ++i) {
      const double expected = rows["p"][i];
      const bool is_close = std::fabs(p[i] - expected) <= rows["tolerance"][i] * std::fabs(expected);
      EXPECT_TRUE(std::isfinite(expected) ? is_close : !std::isfinite(p[i]))
          << kind << " " << name << ": element " << i << " is " << p[i] << " and not " << expected;
    }
  }
  EXPECT_GE(cases, 30);
}

// A reflection of a column that starts with 0, of one whose rest is 1 long, and of one without a rest. The matrix is
// given column by column.
TEST(Left_Division, Solves_By_Reflection_And_Leaves_Out_What_It_Cannot_Tell) {
  const auto solve = [](const std::string& columns, const std::vector<double>& right) {
    std::istringstream text(columns);
    const std::vector<double> numbers{std::istream_iterator<double>(text), {}};
    C_Matrix matrix(static_cast<int>(right.size()), static_cast<int>(numbers.size() / right.size()));
    std::copy(numbers.begin(), numbers.end(), matrix.Column(0));
    return Left_Divide(matrix, right);
  };
  // 1 and another number on the diagonal: it counts from the tolerance on, which goes by the larger dimension.
  const std::string empty_columns = "  0 0  0 0  0 0  0 0  0 0";
  EXPECT_NE(solve("1 0 0  0 6.67e-15 0", {0, 1, 0})[1], 0.0);
  EXPECT_EQ(solve("1 0 0  0 6.65e-15 0", {0, 1, 0})[1], 0.0);
  EXPECT_NE(solve("1 0  0 1.56e-14" + empty_columns, {0, 1})[1], 0.0);
  EXPECT_EQ(solve("1 0  0 1.55e-14" + empty_columns, {0, 1})[1], 0.0);
  EXPECT_EQ(solve("0 1 0  0.5 0 0", {3, 4, 0}), (std::vector<double>{4, 6}));
  EXPECT_EQ(solve("0 0 0  0 0 0", {1, 2, 3}), (std::vector<double>{0, 0}));
  EXPECT_EQ(Left_Divide(C_Matrix(0, 2), {}), (std::vector<double>{0, 0}));
  // Two columns that differ in sign alone, when a third and a fourth have cancelled most of both: the first serves.
  const std::vector<double> p =
      solve("1 -1 1  -1 1 -1  -199.9999 199.9998 -199.9997  0.010003 -0.009999000000000001 0.010003", {1, 2, 3});
  EXPECT_NE(p[0], 0.0);
  EXPECT_EQ(p[1], 0.0);
  // Norms that cancel in two steps, each too small to be formed anew by itself.
  const std::vector<double> q = solve(
      "-300 0 -200 100  -300 300 -300 0  -300.297 300.001 -300.197 0.103  -300.30002 300.00001 -300.19997 0.10003  "
      "-299.69997 299.99999 -299.79997 -0.09998",
      {1, 2, 3, 4});
  EXPECT_EQ(q[1], 0.0);
  EXPECT_NE(q[4], 0.0);
}

TEST(Polynomial, Too_Few_Places_Give_No_Finite_Coefficients) {
  CMyPolyfit polynomial;
  CMyArray<double> p;
  // Rounding would leave something beside the zero on the diagonal in most of these.
  for (const double place : {0.0, 0.1, 2.0, 3.7, -5.0, 49.0, 1000.0}) {
    CMyArray<double> x = Array({place}), y = Array({1});
    for (int n = 2; n < 8; ++n) {
      x.Add(place);
      y.Add(n);
      EXPECT_EQ(polynomial.My_PolyFit(x, y, 1, p), 1);
      EXPECT_FALSE(std::isfinite(p[0]) || std::isfinite(p[1])) << place << ", " << n << " samples";
    }
  }
  polynomial.My_PolyFit(Array({1, 2, 1, 2}), Array({1, 2, 3, 5}), 2, p);
  EXPECT_FALSE(std::isfinite(p[0] + p[1] + p[2]));
  double y = 0.0;
  EXPECT_EQ(polynomial.My_PolyVal(Array({1, 0, 5}), 3.0, y), 1);
  EXPECT_EQ(y, 14.0) << "the highest power stands first";
}

TEST(Force_Surface, Turns_Force_Into_Current_And_Back) {
  C_My3DPolyfit surface;
  const CMyArray<double> model = Array({2, 3, 0.5, 0.25, 0.125, -77});
  CMyArray<double> force, current, p;
  EXPECT_EQ(surface.my3dval(Array({0.5, 2}), Array({2, 4}), model, force), 1);
  EXPECT_EQ(force[0], 2 + 1.5 + 1 + 0.25 + 0.25);
  EXPECT_EQ(surface.my3dinvval(force, Array({2, 4}), model, current), 1);
  EXPECT_NEAR(current[1], 2.0, 1e-15);
  surface.my3dinvval(Array({100}), Array({2}), Array({2, 0, 0.5, 0, 0, 0}), current);
  EXPECT_EQ(current[0], HUGE_VAL);

  p = Array({7, 7, 7, 7, 7, 7, 7});  // as memory that was in use
  EXPECT_EQ(surface.my3dfit(Array({1, 2, 4, 8, 16}), Array({2, 2, 2, 2, 2}), Array({0, 0, 0, 0, 0}), p), 1);
  EXPECT_EQ(Values(p), std::vector<double>(6)) << "a square set with forces of 0 divides by no pivot";
  // Forces 4 and 0 at one place: the model says 2, which is 2 too little for one and 2 too much for the other.
  double q[5];
  EXPECT_NEAR(Fit_Force_Surface(std::vector{1.0, 1.0}, std::vector{0.0, 0.0}, std::vector{4.0, 0.0}, q), 2.0, 1e-14);
  EXPECT_EQ(Fit_Force_Surface({}, {}, {}, q), 0.0);
  for (const double coefficient : q) EXPECT_EQ(coefficient, 0.0);
}

TEST(Fits, Refuse_Samples_That_Do_Not_Belong_Together) {
  const C_Temp_Folder folder;  // for the reports
  CMyArray<double> of[7], out;
  for (int size = 0; size < 7; ++size) of[size].SetArraySize(size);
  double y = 0.0;
  const auto expect_refusal = [](auto action) { EXPECT_NE(Failed_Check_Line(action), 0); };
  for (const auto& n : {std::array{5, 2, 1}, {2, 2, 2}, {2, 2, 0}})
    expect_refusal([&] { CMyPolyfit().My_PolyFit(of[n[0]], of[n[1]], n[2], out); });
  expect_refusal([&] { CMyPolyfit().My_PolyVal(of[1], 1.0, y); });
  for (const auto& n : {std::array{2, 1, 2}, {2, 2, 1}, {0, 0, 0}})
    expect_refusal([&] { C_My3DPolyfit().my3dfit(of[n[0]], of[n[1]], of[n[2]], out); });
  for (const auto& n : {std::array{2, 1, 6}, {2, 2, 5}}) {
    expect_refusal([&] { C_My3DPolyfit().my3dval(of[n[0]], of[n[1]], of[n[2]], out); });
    expect_refusal([&] { C_My3DPolyfit().my3dinvval(of[n[0]], of[n[1]], of[n[2]], out); });
  }
}

TEST(Basis_Fit, Saturated_Steps_Count_As_One_And_Odd_Samples_Are_Fitted) {
  mExpFit basis;
  CMyArray<double> y;
  // A step is full beyond 37 widths, without its weight, and nothing beyond as many on the other side.
  FitData fit{Array({0, 100}), Array({10, 20}), 1.0};
  EXPECT_EQ(basis.Evaluate(fit, Array({37.1, 37.0, -37.0, -37.1, 100}), y), 1);
  EXPECT_THAT(Values(y), testing::Pointwise(testing::DoubleEq(), {1.0, 10.0, 10 * std::exp(-37.0), 0.0, 11.0}));

  // So many steps that the far ones are full or nothing: the first is half and full at the ends, one in the middle
  // nothing and full.
  EXPECT_EQ(basis.Fit(Array({0, 100}), Array({1, 1}), 200, fit), 1);
  EXPECT_NEAR(fit.p[0], 2.0, 1e-6);
  EXPECT_NEAR(std::accumulate(fit.p.begin(), fit.p.end(), 0.0), 1.0, 1e-6);
  OneDemFit(Array({1}), Array({1}), 0, fit);
  EXPECT_EQ(fit.p.GetSize() + fit.BasisList.GetSize(), 0);

  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1}), 2, fit), 0);
  EXPECT_EQ(basis.Fit(Array({1, 2}), Array({1, 2}), 0, fit), 0);
  EXPECT_EQ(basis.Fit(Array({3, 3, 3}), Array({1, 2, 4}), 2, fit), 1);
  EXPECT_TRUE(std::isnan(OneDemVal(fit, 3.0)));
  // A not-a-number place does not count for the range, the ends are exact, and a range beyond the largest number has a
  // middle.
  const std::vector<std::pair<CMyArray<double>, std::vector<double>>> ranges = {
      {Array({std::nan(""), -3, 1, 3}), {-3, -1.5, 0, 1.5, 3}},
      {Array({0.1, 0.3}), {0.1, 1 / 6.0, 7 / 30.0, 0.3}},
      {Array({-1.7e308, 0.3e308}), {-1.7e308, -0.7e308, 0.3e308}},
      {Array({-0.5e308, 1.7e308}), {-0.5e308, 0.6e308, 1.7e308}},
      {Array({-HUGE_VAL, HUGE_VAL}), {-HUGE_VAL, 0, HUGE_VAL}},
      {Array({7, 5}), {7}},
      {Array({7, 5}), {5, 7}}};
  for (const auto& [x, centres] : ranges) {
    basis.Fit(x, x, static_cast<int>(centres.size()), fit);
    EXPECT_THAT(Values(fit.BasisList), testing::Pointwise(testing::DoubleEq(), centres));
    EXPECT_EQ(fit.BasisList.GetEndData(), centres.back());
  }
  basis.Fit(Array({-0.3, 0.3}), Array({1, 2}), 4, fit);
  EXPECT_EQ(fit.BasisList[1], -fit.BasisList[2]) << "symmetric ends have symmetric centres, to the bit";
}

TEST(Basis_Fit_DeathTest, Run_Time_Checks_Print_And_Abort) {
  FitData fit;
  EXPECT_EXIT(mExpFit().Fit({}, {}, 1, fit), testing::KilledBySignal(SIGABRT),
              "^If the working dimension of MAX or MIN is variable in length, it must not have zero length at "
              "runtime\\.\nError in OneDemFit \\(line [0-9]+\\)\n$");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), 1.5, fit), "type 'int'.  Found 1.5 instead.\n");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), 2147483648.0, fit), "type 'int'.  Found 2.14748e\\+09 instead.\n");
  EXPECT_DEATH(OneDemFit(Array({1}), Array({1}), -1, fit), "Value -1 is not greater than or equal to zero.\n");
  EXPECT_DEATH(OneDemFit(Array({1, 2}), Array({1}), 1, fit), "Matrix dimensions must agree.\n");
  EXPECT_DEATH(Fail_Index_Check("Routine", 7, 3, 2, nullptr), "valid range \\[1-2\\]\\.\nError in Routine \\(line 7");
  fit.p = Array({1});
  EXPECT_DEATH(OneDemVal(fit, 1.0), "Index value 1 exceeds valid range \\[1-0\\] of array BasisList.\n");
}

}  // namespace orsanta
