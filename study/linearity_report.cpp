#include "study/reports.h"

namespace study {

namespace {

constexpr double Good_Percent = 5.0, Usable_Percent = 10.0;  // greatest bias of the tolerance

C_Chart Bias_By_Size(const std::vector<C_Reference_Values>& references, const C_Linearity& result) {
  C_Chart chart{{"偏倚与尺寸", "Bias by size"}, {"参考值 (mm)", "reference (mm)"}, Same("µm"), {}};
  C_Series values{C_Series::Kind::Points, {"单次测量", "single values"}, 4, {}, {}};
  for (const C_Reference_Values& one : references) {
    for (const double value : one.values_mm) {
      values.x.push_back(one.reference_mm);
      values.y.push_back((value - one.reference_mm) * 1000.0);
    }
  }
  C_Series means{C_Series::Kind::Points, {"平均偏倚", "mean bias"}, 1, {}, {}};
  C_Series line{C_Series::Kind::Line, {"回归线与置信带", "regression and its band"}, 0, {}, {}};
  C_Series band{C_Series::Kind::Band, {}, 0, {}, {}, {}};
  for (const C_Size& size : result.sizes) {
    for (C_Series* series : {&means, &line, &band}) series->x.push_back(size.reference_mm);
    means.y.push_back(size.bias.mean * 1000.0);
    line.y.push_back(size.fit_mm * 1000.0);
    band.y.push_back(size.band_low_mm * 1000.0);
    band.high.push_back(size.band_high_mm * 1000.0);
  }
  chart.series = {band, values, line, means};
  chart.Add_Limit({}, 0.0, 6);
  return chart;
}

C_Table Size_Table(const C_Linearity& result) {
  C_Table table{{"各尺寸的偏倚", "Bias by size"},
                {{"参考值 (mm)", "Reference (mm)"},
                 {"次数", "Count"},
                 {"偏倚 (µm)", "Bias (µm)"},
                 {"置信区间 (µm)", "Confidence interval (µm)"},
                 {"标准差 (µm)", "Std dev (µm)"},
                 Same("p")},
                {}};
  for (const C_Size& size : result.sizes) {
    table.rows.push_back({Same(Short(size.reference_mm)), Same(std::to_string(size.bias.count)),
                          Same(Micrometres(size.bias.mean)), Same(Micrometres(size.bias_test.low, size.bias_test.high)),
                          Same(Micrometres(size.bias.deviation)), Same(Short(size.bias_test.p, 4))});
  }
  return table;
}

C_Table Line_Table(const C_Linearity& result) {
  return {{"回归：偏倚 = 截距 + 斜率 × 尺寸", "Regression: bias = intercept + slope × size"},
          {{"项目", "Figure"}, {"数值", "Value"}, {"标准误差", "Standard error"}, Same("t"), Same("p")},
          {{{"斜率 (µm/mm)", "Slope (µm/mm)"},
            Same(Short(result.slope * 1000.0, 4)),
            Same(Short(result.slope_error * 1000.0, 3)),
            Same(Fixed(result.slope_t, 3)),
            Same(Short(result.slope_p, 4))},
           {{"截距 (µm)", "Intercept (µm)"},
            Same(Micrometres(result.intercept_mm)),
            Same(Micrometres(result.intercept_error_mm)),
            Same(Fixed(result.intercept_t, 3)),
            Same(Short(result.intercept_p, 4))},
           {{"%线性", "%linearity"}, Same(Short(result.Percent_Linearity(), 4)), Same(""), Same(""), Same("")},
           {{"重复性 s (µm)", "Repeatability s (µm)"},
            Same(Micrometres(result.repeatability_mm)),
            Same(""),
            Same(""),
            Same("")},
           {Same("R²"), Same(Fixed(result.r_squared, 4)), Same(""), Same(""), Same("")}}};
}

nlohmann::ordered_json Json(const C_Linearity& result) {
  nlohmann::ordered_json json = {{"count", result.count},
                                 {"slope", result.slope},
                                 {"intercept_mm", result.intercept_mm},
                                 {"slope_error", result.slope_error},
                                 {"intercept_error_mm", result.intercept_error_mm},
                                 {"slope_t", result.slope_t},
                                 {"slope_p", result.slope_p},
                                 {"intercept_t", result.intercept_t},
                                 {"intercept_p", result.intercept_p},
                                 {"residual_deviation_mm", result.residual_deviation_mm},
                                 {"r_squared", result.r_squared},
                                 {"repeatability_mm", result.repeatability_mm},
                                 {"percent_linearity", result.Percent_Linearity()},
                                 {"mean_bias_mm", result.mean_bias_mm},
                                 {"greatest_bias_mm", result.greatest_bias_mm},
                                 {"zero_in_band", result.Zero_In_Band()}};
  for (const C_Size& size : result.sizes) {
    json["sizes"].push_back({{"reference_mm", size.reference_mm},
                             {"count", size.bias.count},
                             {"bias_mm", size.bias.mean},
                             {"bias_low_mm", size.bias_test.low},
                             {"bias_high_mm", size.bias_test.high},
                             {"deviation_mm", size.bias.deviation},
                             {"t", size.bias_test.t},
                             {"p", size.bias_test.p},
                             {"fit_mm", size.fit_mm},
                             {"band_low_mm", size.band_low_mm},
                             {"band_high_mm", size.band_high_mm}});
  }
  return json;
}

}  // namespace

C_Report Report_Linearity(const std::vector<C_Reference_Values>& references, double confidence, double tolerance_mm,
                          const C_Linearity& result) {
  C_Report report;
  report.study = "linearity";
  report.title = {"线性与偏倚研究", "Linearity and bias"};
  const std::string percent = Short(100.0 * confidence) + " %";
  report.method = {"各次测量的偏倚对参考尺寸作最小二乘回归（AIAG MSA 第 4 版，第 III-B 章），置信带和置信区间为 " +
                       percent +
                       "；斜率和截距分别对 0 作 t 检验；%线性 = 100 "
                       "|斜率|。假设：各次测量独立、服从正态分布、各尺寸方差相同，参考值的"
                       "不确定度远小于测量仪的误差。",
                   "Least-squares regression of the single biases over the reference sizes (AIAG MSA, 4th edition, "
                   "chapter III-B); band "
                   "and intervals are at " +
                       percent +
                       "; slope and intercept are each tested against 0 with t; %linearity = 100 |slope|. Assumed: "
                       "independent, normally "
                       "distributed values of equal spread, and references known far better than the gauge measures."};
  if (tolerance_mm > 0.0) {
    const double share = 100.0 * result.greatest_bias_mm / tolerance_mm;
    report.checks.push_back({{"最大偏倚（占公差）", "Greatest bias of the tolerance"},
                             Fixed(share, 2) + " %",
                             Limit_At_Most(Good_Percent, Usable_Percent, " %"),
                             At_Most(share, Good_Percent, Usable_Percent)});
  } else {
    const bool inside = result.Zero_In_Band();
    report.checks.push_back({{"零偏倚线", "Line of no bias"},
                             inside ? "0" : "≠ 0",
                             {"在置信带内", "inside the confidence band"},
                             inside ? C_Verdict::Accepted : C_Verdict::Rejected});
  }
  if (!result.Zero_In_Band()) {
    report.notes.push_back({"零偏倚线不完全在置信带内：偏倚在统计上显著。是否要紧，按公差判断。",
                            "The line of no bias leaves the confidence band: the bias is statistically significant. "
                            "Whether it matters is judged by the tolerance."});
  }
  report.tables = {Line_Table(result), Size_Table(result)};
  report.Add_Chart(Bias_By_Size(references, result));
  report.numbers["linearity"] = Json(result);
  return report;
}

}  // namespace study
