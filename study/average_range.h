// Average and range method: the older, graphical way to take a crossed study apart. It stands beside the analysis of
// variance as a second opinion; the two differ a little, and much where parts and appraisers interact.
//
// With the mean range of the cells R, the span of the appraisers' means X and the span of the parts' means Y (AIAG
// Measurement Systems Analysis, 4th edition, chapter III-B):
//
//   EV = R / d2(trials)     AV^2 = (X / d2*(appraisers))^2 - EV^2 / (parts trials)     PV = Y / d2*(parts)
//
// The handbook's K1, K2 and K3 are the reciprocals of these factors, to four digits. A negative AV^2 is set to 0. The
// method knows no interaction, so that INT is 0. Assumes normally distributed values.
#pragma once

#include <optional>
#include <vector>

#include "study/components.h"
#include "study/crossed.h"

namespace study {

constexpr int Longest_Range = 25;  // values in a range; those of more are of little use, and no factors are kept

struct C_Average_Range {
  C_Components components;
  std::vector<double> cell_means_mm;   // part by part, in it appraiser by appraiser
  std::vector<double> cell_ranges_mm;  // the same
  double mean_range_mm = 0.0;
  double grand_mean_mm = 0.0;
  // Limits of the charts: a cell's range stays below, its mean between them when only repeatability is at work.
  double range_limit_mm = 0.0;
  double mean_low_mm = 0.0;
  double mean_high_mm = 0.0;
};

// data: at least 2 parts and trials. Nothing where there are more than Longest_Range parts, appraisers or trials.
std::optional<C_Average_Range> Work_Out_Average_Range(const C_Crossed& data);

}  // namespace study
