#include "study/uncertainty.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "study/refused.h"
#include "study/text.h"

namespace study {

namespace {

constexpr double Coverage = 2.0;
constexpr double Spread_Share = 0.3;  // of the tolerance, in the capability figures of ISO 22514-7
constexpr double Certain = std::numeric_limits<double>::infinity();  // degrees of freedom of a type B contribution
const double Rectangular = std::sqrt(3.0);

// What the references tell: one pass over their biases.
struct C_Biases {
  double mean_mm = 0.0;
  double greatest_step_mm = 0.0;  // of a size's bias against the mean
  double repeatability_mm = 0.0;
  double df = 0.0;
  double largest_size_mm = 0.0;
};

C_Biases Look_At(const std::vector<C_Reference_Values>& references) {
  C_Biases biases;
  std::vector<double> means;
  double squares = 0.0, count = 0.0;
  for (const C_Reference_Values& one : references) {
    if (one.values_mm.size() < 2) {
      throw C_Refused("reference " + Short(one.reference_mm) +
                      " mm was measured once; the budget needs repeats, best " +
                      std::to_string(Linearity_Least_Repeats) + " or more of each");
    }
    const C_Sample sample = Describe(one.values_mm);
    means.push_back(sample.mean - one.reference_mm);
    biases.mean_mm += sample.count * means.back();
    count += sample.count;
    squares += sample.Squares();
    biases.largest_size_mm = std::max(biases.largest_size_mm, one.reference_mm);
  }
  biases.mean_mm /= count;
  biases.df = count - static_cast<double>(references.size());
  biases.repeatability_mm = std::sqrt(squares / biases.df);
  for (const double mean : means) {
    biases.greatest_step_mm = std::max(biases.greatest_step_mm, std::abs(mean - biases.mean_mm));
  }
  return biases;
}

// Of some contributions that describe the same thing the largest counts, the others do not.
void Keep_Largest(std::vector<C_Contribution>& budget, bool C_Contribution::*where) {
  C_Contribution* largest = nullptr;
  for (C_Contribution& one : budget) {
    if (one.name != "RE" && one.name != "EVR" && one.name != "EVO") continue;
    if (!(one.*where)) continue;
    if (largest != nullptr && one.u_mm <= largest->u_mm) {
      one.*where = false;
      continue;
    }
    if (largest != nullptr) largest->*where = false;
    largest = &one;
  }
}

C_Capability Combine(const std::vector<C_Contribution>& budget, bool C_Contribution::*where, double tolerance_mm,
                     double divisor) {
  double squares = 0.0, fourths = 0.0;
  for (const C_Contribution& one : budget) {
    if (!(one.*where)) continue;
    squares += one.u_mm * one.u_mm;
    fourths += std::pow(one.u_mm, 4) / one.df;
  }
  C_Capability result;
  result.u_mm = std::sqrt(squares);
  result.expanded_mm = Coverage * result.u_mm;
  result.percent = 100.0 * 2.0 * result.expanded_mm / tolerance_mm;
  result.capability = Spread_Share * tolerance_mm / (divisor * result.u_mm);
  result.df = fourths > 0.0 ? squares * squares / fourths : Certain;
  return result;
}

// The degrees of freedom that belong to a component of a crossed study: those of its first mean square.
void Add_Crossed(const C_Anova& grr, std::vector<C_Contribution>& budget) {
  const double repeats = grr.Pooled() ? grr.pooled.df : grr.equipment.df;
  budget.push_back({"EVO", grr.components.EV, repeats, false, true});
  if (grr.appraisers.df == 0) return;
  budget.push_back({"AV", grr.components.AV, static_cast<double>(grr.appraisers.df), false, true});
  budget.push_back({"IA", grr.components.INT, static_cast<double>(grr.interaction.df), false, true});
}

}  // namespace

C_Uncertainty Work_Out_Uncertainty(const std::vector<C_Reference_Values>& references, const std::optional<C_Anova>& grr,
                                   const C_Uncertainty_Settings& settings) {
  if (!(settings.tolerance_mm > 0.0)) throw C_Refused("an uncertainty budget needs a tolerance; give --tolerance");
  const C_Biases biases = Look_At(references);
  C_Uncertainty result;
  result.size_mm = biases.largest_size_mm;
  const double warming = biases.largest_size_mm * settings.expansion_per_k * settings.temperature_range_k;
  result.budget = {
      {"CAL", settings.reference_uncertainty_mm / settings.reference_k, Certain, true, true},
      {"RE", settings.resolution_mm / (2.0 * Rectangular), Certain, true, true},
      {"EVR", biases.repeatability_mm, biases.df, true, true},
      {"BI", std::abs(biases.mean_mm) / Rectangular, Certain, true, true},
      {"LIN", biases.greatest_step_mm / Rectangular, Certain, true, true},
      {"T", warming / Rectangular, Certain, false, true},
  };
  if (grr) Add_Crossed(*grr, result.budget);
  Keep_Largest(result.budget, &C_Contribution::in_system);
  Keep_Largest(result.budget, &C_Contribution::in_process);
  result.system = Combine(result.budget, &C_Contribution::in_system, settings.tolerance_mm, 6.0);
  result.process = Combine(result.budget, &C_Contribution::in_process, settings.tolerance_mm, 3.0);
  if (result.system.u_mm == 0.0) {
    throw C_Refused("every contribution to the uncertainty is 0; give the values with more digits, or --resolution");
  }
  return result;
}

}  // namespace study
