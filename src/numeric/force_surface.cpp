#include "numeric/force_surface.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <vector>

#include "numeric/least_squares.h"
#include "numeric/nan_min_max.h"

namespace orsanta {
namespace {

constexpr int Term_Count = 5;
constexpr int Coefficient_Count = 6;  // the sixth is always 0 and is not read: it goes into the store with the others

std::array<double, Term_Count> Terms(double I, double P) {
  return {1.0, I, P, I * P, I * (P * P)};
}

// The terms are added in their order, starting from zero.
double Force_At(double I, double P, std::span<const double, Term_Count> p) {
  const std::array<double, Term_Count> terms = Terms(I, P);
  double force = 0.0;
  for (size_t j = 0; j < Term_Count; ++j) force += terms[j] * p[j];
  return force;
}

// A view of the array's own storage; nothing is copied.
std::span<const double> View(const CMyArray<double>& values) {
  return {values.GetData(), static_cast<size_t>(values.GetSize())};
}

std::span<double> View(CMyArray<double>& values) {
  return {values.GetData(), static_cast<size_t>(values.GetSize())};
}

}  // namespace

double Fit_Force_Surface(std::span<const double> current, std::span<const double> position,
                         std::span<const double> force, std::span<double, 5> p) {
  const size_t rows = current.size();
  if (rows == 0) {
    std::fill(p.begin(), p.end(), 0.0);
    return 0.0;
  }
  C_Matrix terms(static_cast<int>(rows), Term_Count);
  for (size_t i = 0; i < rows; ++i) {
    const std::array<double, Term_Count> row = Terms(current[i], position[i]);
    for (int j = 0; j < Term_Count; ++j) terms(static_cast<int>(i), j) = row[static_cast<size_t>(j)];
  }
  const std::vector<double> solution = Left_Divide(std::move(terms), std::vector<double>(force.begin(), force.end()));
  std::copy(solution.begin(), solution.end(), p.begin());

  std::vector<double> residuals(rows);
  for (size_t i = 0; i < rows; ++i) residuals[i] = Force_At(current[i], position[i], p) - force[i];
  return Largest(residuals);
}

int C_My3DPolyfit::my3dfit(const CMyArray<double>& current, const CMyArray<double>& position,
                           const CMyArray<double>& force, CMyArray<double>& coefficients) {
  MY_ASSERT(current.GetSize() == position.GetSize());
  MY_ASSERT(current.GetSize() == force.GetSize());
  MY_ASSERT(current.GetSize() >= 1);
  coefficients.SetArraySize(Coefficient_Count);
  coefficients[Coefficient_Count - 1] = 0.0;
  const std::span<const double> Current_matlab = View(current);
  const std::span<const double> Pos_matlab = View(position);
  const std::span<const double> Force_matlab = View(force);
  Fit_Force_Surface(Current_matlab, Pos_matlab, Force_matlab, View(coefficients).first<Term_Count>());
  return 1;
}

int C_My3DPolyfit::my3dval(const CMyArray<double>& current, const CMyArray<double>& position,
                           const CMyArray<double>& coefficients, CMyArray<double>& force) {
  MY_ASSERT(current.GetSize() == position.GetSize());
  MY_ASSERT(coefficients.GetSize() == Coefficient_Count);
  force.SetArraySize(current.GetSize());
  const std::span<const double> Current_matlab = View(current);
  const std::span<const double> Pos_matlab = View(position);
  const std::span<double> Force_matlab = View(force);
  const auto p = View(coefficients).first<Term_Count>();
  for (size_t i = 0; i < Force_matlab.size(); ++i) Force_matlab[i] = Force_At(Current_matlab[i], Pos_matlab[i], p);
  return 1;
}

int C_My3DPolyfit::my3dinvval(const CMyArray<double>& force, const CMyArray<double>& position,
                              const CMyArray<double>& coefficients, CMyArray<double>& current) {
  MY_ASSERT(force.GetSize() == position.GetSize());
  MY_ASSERT(coefficients.GetSize() == Coefficient_Count);
  current.SetArraySize(force.GetSize());
  const std::span<const double> Force_matlab = View(force);
  const std::span<const double> Pos_matlab = View(position);
  const std::span<double> Current_matlab = View(current);
  const auto p = View(coefficients).first<Term_Count>();
  // The model is linear in the current, so it is solved for it. A denominator of zero is not tested: it comes out as an
  // infinity or not-a-number.
  for (size_t i = 0; i < Current_matlab.size(); ++i) {
    const double P = Pos_matlab[i];
    Current_matlab[i] = -(p[2] * P - Force_matlab[i] + p[0]) / (p[4] * (P * P) + p[3] * P + p[1]);
  }
  return 1;
}

}  // namespace orsanta
