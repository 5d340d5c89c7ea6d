// The fits against those that LAPACK works out: reference/make_reference.py writes what is read here.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "numeric/basis_fit.h"
#include "numeric/force_surface.h"
#include "numeric/polyfit.h"

namespace orsanta {
namespace {

struct Reference_Case {
  std::string kind, name;
  std::map<std::string, CMyArray<double>> rows;
};

std::vector<Reference_Case> Read_Cases() {
  std::vector<Reference_Case> cases;
  std::ifstream file(REFERENCE_FILE);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string key, word;
    words >> key;
    if (key == "case") {
      words >> cases.emplace_back().kind >> cases.back().name;
      continue;
    }
    while (words >> word) cases.back().rows[key].Add(std::strtod(word.c_str(), nullptr));
  }
  return cases;
}

// Coefficients that are 0 or not finite must be so in both.
void Expect_Close(const CMyArray<double>& values, const CMyArray<double>& expected, const CMyArray<double>& tolerance) {
  ASSERT_GE(values.GetSize(), expected.GetSize());
  for (int i = 0; i < expected.GetSize(); ++i) {
    if (!std::isfinite(expected[i])) {
      EXPECT_FALSE(std::isfinite(values[i])) << "element " << i;
    } else {
      EXPECT_NEAR(values[i], expected[i], tolerance[i] * std::fabs(expected[i])) << "element " << i;
    }
  }
}

TEST(Reference, FitsAgreeWithLapack) {
  std::vector<Reference_Case> cases = Read_Cases();
  ASSERT_GE(cases.size(), 30u);
  for (Reference_Case& reference : cases) {
    SCOPED_TRACE(reference.kind + " " + reference.name);
    auto& rows = reference.rows;
    CMyArray<double> p;
    if (reference.kind == "polynomial") {
      CMyPolyfit().My_PolyFit(rows["x"], rows["y"], static_cast<int>(rows["degree"][0]), p);
    } else if (reference.kind == "surface") {
      C_My3DPolyfit().my3dfit(rows["current"], rows["position"], rows["force"], p);
      EXPECT_EQ(p.GetSize(), 6);
    } else {
      FitData fit;
      EXPECT_EQ(mExpFit().Fit(rows["x"], rows["y"], static_cast<int>(rows["n"][0]), fit), 1);
      for (int i = 0; i < rows["centres"].GetSize(); ++i) EXPECT_DOUBLE_EQ(fit.BasisList[i], rows["centres"][i]);
      EXPECT_DOUBLE_EQ(fit.xscale, rows["xscale"][0]);
      p = fit.p;
    }
    Expect_Close(p, rows["p"], rows["tolerance"]);
  }
}

}  // namespace
}  // namespace orsanta
