#include "study/average_range.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace study {

namespace {

// Of the range of n normally distributed values with standard deviation 1: its mean (d2), and the root of the mean of
// its square (d2* for a single range). Integrated numerically from the distribution of the range.
struct C_Range_Factors {
  double d2;
  double d2_star;
};

constexpr C_Range_Factors Factors[] = {
    {1.1283791670956, 1.4142135623731},  // 2
    {1.6925687506433, 1.9115403961898},  // 3
    {2.0587507460080, 2.2388651384008},  // 4
    {2.3259289472811, 2.4812462732937},  // 5
    {2.5344127212231, 2.6725304770436},  // 6
    {2.7043567512139, 2.8298015070222},  // 7
    {2.8472006120907, 2.9628828861673},  // 8
    {2.9700263244186, 3.0779299184487},  // 9
    {3.0775054616705, 3.1790453980352},  // 10
    {3.1728727038161, 3.2690955180834},  // 11
    {3.2584552797440, 3.3501581063904},  // 12
    {3.3359803540984, 3.4237853389680},  // 13
    {3.4067631082001, 3.4911658682808},  // 14
    {3.4718268898822, 3.5532291904350},  // 15
    {3.5319827861097, 3.6107152399403},  // 16
    {3.5878839617655, 3.6642222067321},  // 17
    {3.6400637579376, 3.7142402467455},  // 18
    {3.6889630232078, 3.7611757856902},  // 19
    {3.7349501195968, 3.8053693889418},  // 20
    {3.7783358298428, 3.8471091316050},  // 21
    {3.8193846433630, 3.8866407584647},  // 22
    {3.8583234232852, 3.9241755129865},  // 23
    {3.8953481484515, 3.9598962465830},  // 24
    {3.9306292195073, 3.9939622406848},  // 25
};
constexpr int First_Factor = 2;

const C_Range_Factors& Of(int count) {
  return Factors[count - First_Factor];
}

double Span(const std::vector<double>& values) {
  const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
  return *greatest - *least;
}

double Mean(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// Takes the cells' means and ranges, and fills the spans of the means of parts and appraisers.
void Average(const C_Crossed& data, C_Average_Range& result, double& part_span, double& appraiser_span) {
  std::vector<double> parts(data.parts.size()), appraisers(data.appraisers.size());
  for (int i = 0; i < data.Parts(); ++i) {
    for (int j = 0; j < data.Appraisers(); ++j) {
      std::vector<double> cell;
      cell.reserve(static_cast<size_t>(data.trials));
      for (int k = 0; k < data.trials; ++k) cell.push_back(data.Value(i, j, k));
      result.cell_means_mm.push_back(Mean(cell));
      result.cell_ranges_mm.push_back(Span(cell));
      parts[static_cast<size_t>(i)] += result.cell_means_mm.back() / data.Appraisers();
      appraisers[static_cast<size_t>(j)] += result.cell_means_mm.back() / data.Parts();
    }
  }
  part_span = Span(parts);
  appraiser_span = Span(appraisers);
  result.mean_range_mm = Mean(result.cell_ranges_mm);
  result.grand_mean_mm = Mean(result.cell_means_mm);
}

// Three standard deviations about the centre lines, those taken from the mean range (ISO 7870-2).
void Draw_Limits(int trials, C_Average_Range& result) {
  const C_Range_Factors& factors = Of(trials);
  const double deviation = result.mean_range_mm / factors.d2;
  const double d3 = std::sqrt(factors.d2_star * factors.d2_star - factors.d2 * factors.d2);
  result.range_limit_mm = (factors.d2 + 3.0 * d3) * deviation;
  result.mean_low_mm = result.grand_mean_mm - 3.0 * deviation / std::sqrt(trials);
  result.mean_high_mm = result.grand_mean_mm + 3.0 * deviation / std::sqrt(trials);
}

}  // namespace

std::optional<C_Average_Range> Work_Out_Average_Range(const C_Crossed& data) {
  if (std::max({data.Parts(), data.Appraisers(), data.trials}) > Longest_Range) return std::nullopt;
  C_Average_Range result;
  double part_span = 0.0, appraiser_span = 0.0;
  Average(data, result, part_span, appraiser_span);
  C_Components& found = result.components;
  found.EV = result.mean_range_mm / Of(data.trials).d2;
  if (data.Appraisers() > 1) {
    const double appraisers = appraiser_span / Of(data.Appraisers()).d2_star;
    const double share = found.EV * found.EV / (data.Parts() * data.trials);
    found.AV = std::sqrt(std::max(0.0, appraisers * appraisers - share));
  }
  found.PV = part_span / Of(data.Parts()).d2_star;
  found.Add_Up();
  Draw_Limits(data.trials, result);
  return result;
}

}  // namespace study
