// Analysis of variance of a crossed study: parts x appraisers x trials, all effects random.
//
// With P parts, O appraisers and R trials, and the mean squares MSP, MSO, MSPO (interaction) and MSE (AIAG Measurement
// Systems Analysis, 4th edition, chapter III-B):
//
//   with the interaction                 without it; MSE over SSPO and SSE together
//   EV^2  = MSE                          EV^2 = MSE
//   INT^2 = (MSPO - MSE) / R             INT  = 0
//   AV^2  = (MSO - MSPO) / (P R)         AV^2 = (MSO - MSE) / (P R)
//   PV^2  = (MSP - MSPO) / (O R)         PV^2 = (MSP - MSE) / (O R)
//
// The interaction goes into MSE when its p is above alpha. A negative component is set to 0. A single appraiser leaves
// AV and INT at 0, since they cannot be told from such data. Assumes independent, normally distributed effects with
// equal spread for all parts and appraisers.
#pragma once

#include <vector>

#include "study/components.h"
#include "study/crossed.h"
#include "study/variances.h"

namespace study {

struct C_Anova_Row {
  double sum_of_squares = 0.0;  // mm^2
  int df = 0;
  double mean_square = 0.0;
  double f = 0.0;  // 0 where there is none
  double p = 1.0;
};

struct C_Anova {
  C_Anova_Row parts, appraisers, interaction, equipment, total;  // always with the interaction in a row of its own
  C_Anova_Row pooled;  // interaction and equipment together; df 0 where they were not pooled
  double grand_mean_mm = 0.0;
  C_Components components;
  C_Interval EV, AV, INT, GRR, PV, TV;  // confidence intervals of the components, mm
  std::vector<const char*> negative;    // names of the components that were set to 0

  bool Pooled() const { return pooled.df > 0; }
};

struct C_Anova_Settings {
  double alpha = 0.25;
  double confidence = 0.95;
};

// Throws C_Refused for fewer than 2 parts or trials, and for values that are all equal.
C_Anova Work_Out_Anova(const C_Crossed& data, const C_Anova_Settings& settings = {});

}  // namespace study
