#include "study/anova.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "study/distributions.h"
#include "study/refused.h"

namespace study {

namespace {

// Deviations from the grand mean are summed, never squares of the values: a thickness of millimetres would swallow its
// last digits.
struct C_Means {
  explicit C_Means(const C_Crossed& data);

  double grand = 0.0;
  std::vector<double> parts, appraisers;  // less the grand mean
  std::vector<double> cells;              // part by part; less the grand mean
};

C_Means::C_Means(const C_Crossed& data)
    : parts(data.parts.size()), appraisers(data.appraisers.size()), cells(parts.size() * appraisers.size()) {
  const double first = data.values_mm.front();
  double sum = 0.0;
  for (const double value : data.values_mm) sum += value - first;
  grand = first + sum / static_cast<double>(data.values_mm.size());
  size_t next = 0;
  for (size_t i = 0; i < parts.size(); ++i) {
    for (size_t j = 0; j < appraisers.size(); ++j) {
      double& cell = cells[i * appraisers.size() + j];
      for (int k = 0; k < data.trials; ++k) cell += data.values_mm[next++] - grand;
      cell /= data.trials;
      parts[i] += cell / static_cast<double>(appraisers.size());
      appraisers[j] += cell / static_cast<double>(parts.size());
    }
  }
}

void Close(C_Anova_Row& row) {
  if (row.df > 0) row.mean_square = row.sum_of_squares / row.df;
}

// The sum of squares that rounding alone leaves where there is no variation.
double Rounding(const C_Crossed& data) {
  double greatest = 0.0;
  for (const double value : data.values_mm) greatest = std::max(greatest, std::abs(value));
  const double error = 4.0 * std::numeric_limits<double>::epsilon() * greatest;
  return static_cast<double>(data.values_mm.size()) * error * error;
}

// The F test of a row against the one below it.
void Test(C_Anova_Row& row, const C_Anova_Row& below) {
  if (row.df == 0 || below.df == 0 || row.mean_square == 0.0) return;
  row.f = below.mean_square > 0.0 ? row.mean_square / below.mean_square : std::numeric_limits<double>::infinity();
  row.p = F_Upper_P(row.f, row.df, below.df);
}

void Sum_Squares(const C_Crossed& data, C_Anova& anova) {
  const C_Means means(data);
  const int p = data.Parts(), o = data.Appraisers(), r = data.trials;
  anova.grand_mean_mm = means.grand;
  for (const double part : means.parts) anova.parts.sum_of_squares += o * r * part * part;
  for (const double appraiser : means.appraisers) anova.appraisers.sum_of_squares += p * r * appraiser * appraiser;
  size_t cell = 0, next = 0;
  for (const double part : means.parts) {
    for (const double appraiser : means.appraisers) {
      const double apart = means.cells[cell] - part - appraiser;
      anova.interaction.sum_of_squares += r * apart * apart;
      for (int k = 0; k < r; ++k) {
        const double value = data.values_mm[next++] - means.grand;
        anova.total.sum_of_squares += value * value;
        anova.equipment.sum_of_squares += (value - means.cells[cell]) * (value - means.cells[cell]);
      }
      ++cell;
    }
  }
  anova.parts.df = p - 1;
  anova.appraisers.df = o - 1;
  anova.interaction.df = (p - 1) * (o - 1);
  anova.equipment.df = p * o * (r - 1);
  anova.total.df = p * o * r - 1;
  const double rounding = Rounding(data);
  for (C_Anova_Row* row : {&anova.parts, &anova.appraisers, &anova.interaction, &anova.equipment, &anova.total}) {
    if (row->sum_of_squares <= rounding) row->sum_of_squares = 0.0;
    Close(*row);
  }
}

// Tests every row, and takes the interaction into the equipment where it does not show. Returns the row against which
// parts and appraisers stand.
const C_Anova_Row& Test_Rows(C_Anova& anova, double alpha) {
  const C_Anova_Row* below = &anova.equipment;
  if (anova.interaction.df > 0) {
    Test(anova.interaction, anova.equipment);
    if (anova.interaction.p > alpha) {
      anova.pooled.sum_of_squares = anova.interaction.sum_of_squares + anova.equipment.sum_of_squares;
      anova.pooled.df = anova.interaction.df + anova.equipment.df;
      Close(anova.pooled);
      below = &anova.pooled;
    } else {
      below = &anova.interaction;
    }
  }
  Test(anova.parts, *below);
  Test(anova.appraisers, *below);
  return *below;
}

// Takes a component and its interval from its terms.
class C_Estimates {
 public:
  C_Estimates(C_Anova& anova, double confidence) : m_Anova(anova), m_Confidence(confidence) {}

  void Component(const char* name, const std::vector<C_Term>& terms, double& deviation, C_Interval& interval) {
    const double variance = Sum(terms);
    if (variance < 0.0) m_Anova.negative.push_back(name);
    deviation = std::sqrt(std::max(0.0, variance));
    Limits(terms, interval);
  }
  void Limits(const std::vector<C_Term>& terms, C_Interval& interval) const {
    const C_Interval variance = Interval(terms, m_Confidence);
    interval = {std::sqrt(variance.low), std::sqrt(variance.high)};
  }

 private:
  C_Anova& m_Anova;
  double m_Confidence;
};

C_Term Times(double factor, const C_Anova_Row& row) {
  return {factor, row.mean_square, static_cast<double>(row.df)};
}

// below: the row against which parts and appraisers stand.
void Estimate(const C_Crossed& data, const C_Anova_Row& below, double confidence, C_Anova& anova) {
  const double p = data.Parts(), o = data.Appraisers(), r = data.trials;
  const double per_part = 1.0 / (o * r), per_appraiser = 1.0 / (p * r);
  C_Estimates estimates(anova, confidence);
  C_Components& found = anova.components;
  const C_Anova_Row& equipment = anova.Pooled() ? anova.pooled : anova.equipment;
  std::vector<C_Term> gauge;  // the sum of EV, AV and INT, in terms of the mean squares
  estimates.Component("EV", {Times(1.0, equipment)}, found.EV, anova.EV);
  if (data.Appraisers() == 1) {
    gauge = {Times(1.0, equipment)};
  } else {
    estimates.Component("AV", {Times(per_appraiser, anova.appraisers), Times(-per_appraiser, below)}, found.AV,
                        anova.AV);
    gauge = {Times(per_appraiser, anova.appraisers)};
    if (anova.Pooled()) {
      gauge.push_back(Times(1.0 - per_appraiser, equipment));
    } else {
      estimates.Component("INT", {Times(1.0 / r, below), Times(-1.0 / r, equipment)}, found.INT, anova.INT);
      gauge.push_back(Times(1.0 / r - per_appraiser, below));
      gauge.push_back(Times(1.0 - 1.0 / r, equipment));
    }
  }
  estimates.Component("PV", {Times(per_part, anova.parts), Times(-per_part, below)}, found.PV, anova.PV);
  found.Add_Up();
  estimates.Limits(gauge, anova.GRR);
  // The parts' component adds its mean square and takes its share off the row that it stands against.
  std::vector<C_Term> total = gauge;
  C_Term& shared = data.Appraisers() == 1 ? total[0] : total[1];
  shared.factor -= per_part;
  total.push_back(Times(per_part, anova.parts));
  estimates.Limits(total, anova.TV);
}

}  // namespace

C_Anova Work_Out_Anova(const C_Crossed& data, const C_Anova_Settings& settings) {
  if (data.Parts() < 2) throw C_Refused("the study needs at least 2 parts, there is 1; add parts");
  if (data.trials < 2) {
    throw C_Refused("every appraiser must measure every part at least twice, there is 1 trial; add trials");
  }
  const auto [least, greatest] = std::minmax_element(data.values_mm.begin(), data.values_mm.end());
  if (*least == *greatest) {
    throw C_Refused("all " + std::to_string(data.values_mm.size()) +
                    " values are identical: there is no variation to take apart; give the values with more digits");
  }
  C_Anova anova;
  Sum_Squares(data, anova);
  Estimate(data, Test_Rows(anova, settings.alpha), settings.confidence, anova);
  return anova;
}

}  // namespace study
