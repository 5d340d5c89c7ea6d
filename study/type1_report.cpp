#include <algorithm>
#include <cmath>

#include "study/reports.h"

namespace study {

namespace {

constexpr double Capable = 1.33, Just_Capable = 1.0;  // Cg and Cgk
constexpr double Resolution_Percent = 5.0;            // of the tolerance
constexpr int Histogram_Bars = 9;
constexpr double Tolerance_In_Sight = 6.0;  // times the spread of the values, so that the values stay to be seen

C_Chart Run_Chart(const std::vector<double>& values_mm, const C_Type1_Settings& settings, const C_Type1& result) {
  C_Chart chart{{"运行图：与参考值之差", "Run chart: difference from the reference"},
                {"测量次序", "measurement"},
                Same("µm"),
                {}};
  C_Series values{C_Series::Kind::Linked_Points, {}, 0, {}, {}};
  for (const double value : values_mm) {
    values.x.push_back(static_cast<double>(values.x.size() + 1));
    values.y.push_back((value - settings.reference_mm) * 1000.0);
  }
  chart.series.push_back(values);
  const double bias = result.bias_mm * 1000.0, spread = 3.0 * result.values.deviation * 1000.0;
  chart.Add_Limit({"参考值", "reference"}, 0.0, 6);
  chart.Add_Limit({"平均值", "mean"}, bias, 2);
  chart.Add_Limit(Same("± 3 s"), bias + spread, 1);
  chart.Add_Limit({}, bias - spread, 1);
  const double tenth = 100.0 * settings.tolerance_mm;  // um
  if (tenth <= Tolerance_In_Sight * (std::abs(bias) + spread)) {
    chart.Add_Limit({"± 10 % 公差", "± 10 % of tolerance"}, tenth);
    chart.Add_Limit({}, -tenth);
  }
  return chart;
}

C_Chart Histogram(const std::vector<double>& values_mm, const C_Type1_Settings& settings, const C_Type1& result) {
  C_Chart chart{
      {"直方图", "Histogram"}, {"与参考值之差 (µm)", "difference from the reference (µm)"}, {"次数", "count"}, {}};
  C_Series bars{C_Series::Kind::Bars, {}, 0, {}, std::vector<double>(Histogram_Bars)};
  const double width = result.values.Range() / Histogram_Bars;
  for (const double value : values_mm) {
    const int bar = std::min(Histogram_Bars - 1, static_cast<int>((value - result.values.smallest) / width));
    bars.y[static_cast<size_t>(bar)] += 1.0;
  }
  for (int i = 0; i < Histogram_Bars; ++i) {
    bars.x.push_back(i);
    const double middle = result.values.smallest + (i + 0.5) * width - settings.reference_mm;
    chart.x_names.emplace_back(i, Micrometres(middle));
  }
  chart.series.push_back(bars);
  return chart;
}

}  // namespace

C_Report Report_Type1(const std::vector<double>& values_mm, const C_Type1_Settings& settings, const C_Type1& result) {
  C_Report report;
  report.study = "type1";
  report.title = {"第一类测量系统研究", "Type 1 gauge study"};
  report.method = {
      "Cg = 0.2 T / (6 s)，Cgk = (0.1 T − |偏倚|) / (3 s)（VDA 5，ISO 22514-7），T 为公差全宽，s 为标准差。偏倚用 t "
      "检验，"
      "置信区间为双侧。假设：各次测量相互独立、服从正态分布，测量期间测量仪状态不变，参考值的不确定度远小于测量仪的误差"
      "。",
      "Cg = 0.2 T / (6 s), Cgk = (0.1 T − |bias|) / (3 s) (VDA 5, ISO 22514-7) with the tolerance's whole width T and "
      "the "
      "standard deviation s. The bias is tested with t; its confidence interval is two-sided. Assumed: independent, "
      "normally distributed values from one state of the gauge, and a reference known far better than the gauge "
      "measures."};
  report.checks = {{Same("Cg"), Fixed(result.cg, 2), Limit_At_Least(Capable, Just_Capable),
                    At_Least(result.cg, Capable, Just_Capable)},
                   {Same("Cgk"), Fixed(result.cgk, 2), Limit_At_Least(Capable, Just_Capable),
                    At_Least(result.cgk, Capable, Just_Capable)},
                   {{"分辨力 / 公差", "Resolution of the tolerance"},
                    Fixed(result.percent_resolution, 2) + " %",
                    Limit_At_Most(Resolution_Percent, Resolution_Percent, " %"),
                    At_Most(result.percent_resolution, Resolution_Percent, Resolution_Percent)}};
  const std::string percent = Short(100.0 * settings.confidence) + " %";
  report.tables = {{{"结果 (µm)", "Results (µm)"},
                    {{"项目", "Figure"}, {"数值", "Value"}},
                    {{{"测量次数", "Repeats"}, Same(std::to_string(result.values.count))},
                     {{"偏倚", "Bias"}, Same(Micrometres(result.bias_mm))},
                     {{"偏倚的 " + percent + " 置信区间", percent + " confidence interval of the bias"},
                      Same(Micrometres(result.bias_test.low, result.bias_test.high))},
                     {{"偏倚 t 检验：t", "t of the bias"}, Same(Fixed(result.bias_test.t, 3))},
                     {{"偏倚 t 检验：p", "p of the bias"}, Same(Short(result.bias_test.p, 4))},
                     {{"重复性 s", "Repeatability s"}, Same(Micrometres(result.values.deviation))},
                     {{"极差", "Range"}, Same(Micrometres(result.values.Range()))}}}};
  if (result.bias_test.p < 1.0 - settings.confidence) {
    report.notes.push_back({"偏倚在统计上显著（p = " + Short(result.bias_test.p, 3) + "）；是否要紧由 Cgk 判定。",
                            "The bias is statistically significant (p = " + Short(result.bias_test.p, 3) +
                                "); whether it matters is judged by Cgk."});
  }
  report.Add_Chart(Run_Chart(values_mm, settings, result));
  report.Add_Chart(Histogram(values_mm, settings, result));
  report.numbers["type1"] = {{"count", result.values.count},
                             {"reference_mm", settings.reference_mm},
                             {"mean_mm", result.values.mean},
                             {"bias_mm", result.bias_mm},
                             {"bias_low_mm", result.bias_test.low},
                             {"bias_high_mm", result.bias_test.high},
                             {"t", result.bias_test.t},
                             {"p", result.bias_test.p},
                             {"repeatability_mm", result.values.deviation},
                             {"Cg", result.cg},
                             {"Cgk", result.cgk},
                             {"percent_resolution", result.percent_resolution}};
  return report;
}

}  // namespace study
