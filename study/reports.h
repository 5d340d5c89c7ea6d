// From the numbers of each study to its report: the checks with their limits, tables, charts, notes, and the objects of
// the result file.
#pragma once

#include <optional>
#include <vector>

#include "study/average_range.h"
#include "study/force.h"
#include "study/report.h"
#include "study/type1.h"
#include "study/uncertainty.h"

namespace study {

C_Report Report_Type1(const std::vector<double>& values_mm, const C_Type1_Settings& settings, const C_Type1& result);

// tolerance_mm: 0 for none.
C_Report Report_Crossed(const C_Crossed& data, const C_Anova_Settings& settings, double tolerance_mm,
                        const C_Anova& anova, const std::optional<C_Average_Range>& range);

// tolerance_mm: 0 for none.
C_Report Report_Linearity(const std::vector<C_Reference_Values>& references, double confidence, double tolerance_mm,
                          const C_Linearity& result);

C_Report Report_Uncertainty(const C_Uncertainty_Settings& settings, const C_Uncertainty& result);

C_Report Report_Force(const std::vector<C_Force_Reading>& readings, const C_Force& result);

// A limit's text: "≤ 10 %", and "up to 30 % conditional" where there is such a range.
C_Text Limit_At_Most(double accepted, double conditional, const std::string& unit);
C_Text Limit_At_Least(double accepted, double conditional);

}  // namespace study
