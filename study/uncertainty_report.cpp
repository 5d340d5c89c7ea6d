#include <map>

#include "study/reports.h"

namespace study {

namespace {

constexpr double System_Percent = 15.0, Process_Percent = 30.0;  // Q_MS, Q_MP
constexpr double Capable = 1.33;                                 // C_MS, C_MP
constexpr double Resolution_Percent = 5.0;

const C_Text& Name(const std::string& key) {
  static const std::map<std::string, C_Text> names = {{"CAL", {"参考件的不确定度", "reference"}},
                                                      {"RE", {"分辨力", "resolution"}},
                                                      {"EVR", {"参考件上的重复性", "repeatability on references"}},
                                                      {"BI", {"偏倚", "bias"}},
                                                      {"LIN", {"线性", "linearity"}},
                                                      {"T", {"温度", "temperature"}},
                                                      {"EVO", {"零件上的重复性", "repeatability on parts"}},
                                                      {"AV", {"评价人", "appraisers"}},
                                                      {"IA", {"零件×评价人", "parts × appraisers"}}};
  return names.at(key);
}

C_Table Budget(const C_Uncertainty& result) {
  const C_Text counts[] = {Same("–"), {"计入", "counts"}};
  C_Table table{{"不确定度分量", "Budget"},
                {{"分量", "Contribution"},
                 {"标准不确定度 u (µm)", "Standard uncertainty u (µm)"},
                 {"自由度", "df"},
                 {"测量系统", "Measuring system"},
                 {"测量过程", "Measurement process"}},
                {}};
  for (const C_Contribution& one : result.budget) {
    const C_Text& name = Name(one.name);
    table.rows.push_back({{one.name + " " + name.zh, one.name + " " + name.en},
                          Same(Fixed(one.u_mm * 1000.0, 4)),
                          Same(Short(one.df, 4)),
                          counts[one.in_system],
                          counts[one.in_process]});
  }
  return table;
}

std::vector<C_Text> Row(const C_Text& name, const C_Capability& one) {
  return {name,
          Same(Micrometres(one.u_mm)),
          Same(Micrometres(one.expanded_mm)),
          Same(Short(one.df, 4)),
          Same(Fixed(one.percent, 2)),
          Same(Fixed(one.capability, 2))};
}

C_Chart Bars(const C_Uncertainty& result) {
  C_Chart chart{
      {"不确定度分量", "Contributions to the uncertainty"}, {"分量", "contribution"}, {"u (µm)", "u (µm)"}, {}};
  C_Series bars{C_Series::Kind::Bars, {}, 0, {}, {}};
  for (const C_Contribution& one : result.budget) {
    bars.x.push_back(static_cast<double>(bars.x.size()));
    bars.y.push_back(one.u_mm * 1000.0);
    chart.x_names.emplace_back(bars.x.back(), one.name);
  }
  chart.series.push_back(bars);
  return chart;
}

nlohmann::ordered_json Json(const C_Capability& one, const char* percent, const char* capability) {
  return {{"u_mm", one.u_mm}, {"U_mm", one.expanded_mm}, {"k", 2},
          {"df", one.df},     {percent, one.percent},    {capability, one.capability}};
}

}  // namespace

C_Report Report_Uncertainty(const C_Uncertainty_Settings& settings, const C_Uncertainty& result) {
  C_Report report;
  report.study = "uncertainty";
  report.title = {"测量不确定度与测量过程能力", "Uncertainty and capability of the measurement process"};
  report.method = {
      "ISO 22514-7 与 GUM（JCGM 100:2008）。u_MS² = CAL² + max(EVR, RE)² + BI² + LIN²；u_MP² = CAL² + max(EVR, EVO, "
      "RE)² + "
      "BI² + LIN² + AV² + IA² + T²。扩展不确定度 U = 2u；Q = 2U/T；C_MS = 0.3 T/(6 u_MS)，C_MP = 0.3 T/(3 "
      "u_MP)。有效自由度"
      "按 Welch-Satterthwaite 公式。假设各分量相互独立。",
      "ISO 22514-7 and GUM (JCGM 100:2008). u_MS² = CAL² + max(EVR, RE)² + BI² + LIN²; u_MP² = CAL² + max(EVR, EVO, "
      "RE)² + "
      "BI² + LIN² + AV² + IA² + T². Expanded uncertainty U = 2u; Q = 2U/T; C_MS = 0.3 T/(6 u_MS), C_MP = 0.3 T/(3 "
      "u_MP). "
      "Effective degrees of freedom after Welch and Satterthwaite. Assumed: independent contributions."};
  const double resolution = 100.0 * settings.resolution_mm / settings.tolerance_mm;
  report.checks = {
      {{"分辨力 / 公差", "Resolution of the tolerance"},
       Fixed(resolution, 2) + " %",
       Limit_At_Most(Resolution_Percent, Resolution_Percent, " %"),
       At_Most(resolution, Resolution_Percent, Resolution_Percent)},
      {Same("Q_MS"), Fixed(result.system.percent, 2) + " %", Limit_At_Most(System_Percent, System_Percent, " %"),
       At_Most(result.system.percent, System_Percent, System_Percent)},
      {Same("C_MS"), Fixed(result.system.capability, 2), Limit_At_Least(Capable, Capable),
       At_Least(result.system.capability, Capable, Capable)},
      {Same("Q_MP"), Fixed(result.process.percent, 2) + " %", Limit_At_Most(Process_Percent, Process_Percent, " %"),
       At_Most(result.process.percent, Process_Percent, Process_Percent)},
      {Same("C_MP"), Fixed(result.process.capability, 2), Limit_At_Least(Capable, Capable),
       At_Least(result.process.capability, Capable, Capable)}};
  report.tables = {
      Budget(result),
      {{"合成与扩展不确定度", "Combined and expanded uncertainty"},
       {Same(""), Same("u (µm)"), Same("U, k = 2 (µm)"), {"有效自由度", "Effective df"}, Same("Q (%)"), Same("C")},
       {Row({"测量系统", "Measuring system"}, result.system),
        Row({"测量过程", "Measurement process"}, result.process)}}};
  const std::string range = Short(settings.temperature_range_k), size = Short(result.size_mm);
  const std::string expansion = Short(settings.expansion_per_k * 1e6);
  report.notes = {{"温度：零件与基准量块的温差不超过 ±" + range + " K，最大尺寸 " + size + " mm，膨胀系数 " +
                       expansion + "·10⁻⁶/K。",
                   "Temperature: the part stays within ±" + range + " K of the reference block, at " + size +
                       " mm and " + expansion + "·10⁻⁶/K."}};
  if (result.budget.back().name == "T") {
    report.notes.push_back({"没有给出 GRR：评价人和零件的影响未计入测量过程。",
                            "No crossed study was given: appraisers and parts are left out of the process."});
  }
  report.Add_Chart(Bars(result));
  nlohmann::ordered_json& json = report.numbers["uncertainty"];
  for (const C_Contribution& one : result.budget) {
    json["budget"].push_back({{"name", one.name},
                              {"u_mm", one.u_mm},
                              {"df", one.df},
                              {"in_system", one.in_system},
                              {"in_process", one.in_process}});
  }
  json["system"] = Json(result.system, "Q_MS", "C_MS");
  json["process"] = Json(result.process, "Q_MP", "C_MP");
  return report;
}

}  // namespace study
