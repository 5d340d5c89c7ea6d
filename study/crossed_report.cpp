#include <cmath>

#include "study/reports.h"

namespace study {

namespace {

constexpr double Good_Percent = 10.0, Usable_Percent = 30.0;  // GRR of the total variation, or of the tolerance
constexpr double Good_Categories = 5.0, Usable_Categories = 2.0;

struct C_Named {
  const char* key;
  C_Text name;
  double C_Components::*component;
  C_Interval C_Anova::*interval;
};

const C_Named Named[] = {
    {"EV", {"EV 重复性（设备）", "EV repeatability (equipment)"}, &C_Components::EV, &C_Anova::EV},
    {"AV", {"AV 再现性（评价人）", "AV reproducibility (appraisers)"}, &C_Components::AV, &C_Anova::AV},
    {"INT", {"INT 零件×评价人", "INT parts × appraisers"}, &C_Components::INT, &C_Anova::INT},
    {"GRR", {"GRR 测量系统", "GRR measuring system"}, &C_Components::GRR, &C_Anova::GRR},
    {"PV", {"PV 零件", "PV parts"}, &C_Components::PV, &C_Anova::PV},
    {"TV", {"TV 总变差", "TV total variation"}, &C_Components::TV, &C_Anova::TV}};

std::string Categories(const C_Components& components) {
  return components.Ndc() < 0 ? "∞" : std::to_string(components.Ndc());
}

void Add_Checks(const C_Components& found, double tolerance_mm, C_Report& report) {
  const C_Text limit = Limit_At_Most(Good_Percent, Usable_Percent, " %");
  if (tolerance_mm > 0.0) {
    const double percent = Percent_Of_Tolerance(found.GRR, tolerance_mm);
    report.checks.push_back({{"%GRR（占公差）", "%GRR of the tolerance"},
                             Fixed(percent, 2) + " %",
                             limit,
                             At_Most(percent, Good_Percent, Usable_Percent)});
  }
  // Parts that do not differ say nothing about the process; then the tolerance alone judges.
  if (tolerance_mm > 0.0 && found.PV == 0.0) return;
  report.checks.push_back({{"%GRR（占总变差）", "%GRR of the total variation"},
                           Fixed(found.Percent_GRR(), 2) + " %",
                           limit,
                           At_Most(found.Percent_GRR(), Good_Percent, Usable_Percent)});
  const double ndc = found.Ndc() < 0 ? Good_Categories : found.Ndc();
  report.checks.push_back({{"可区分类别数 ndc", "Distinct categories ndc"},
                           Categories(found),
                           Limit_At_Least(Good_Categories, Usable_Categories),
                           At_Least(ndc, Good_Categories, Usable_Categories)});
}

std::vector<C_Text> Row(const C_Text& source, const C_Anova_Row& row) {
  const double um2 = 1e6;  // mm^2 in um^2
  std::vector<C_Text> cells = {source,
                               Same(std::to_string(row.df)),
                               Same(Short(row.sum_of_squares * um2)),
                               Same(Short(row.mean_square * um2)),
                               Same(""),
                               Same("")};
  if (row.f > 0.0) {
    cells[4] = Same(Short(row.f, 5));
    cells[5] = Same(Short(row.p, 4));
  }
  return cells;
}

C_Table Anova_Table(const C_Anova& anova) {
  C_Table table{{"方差分析", "Analysis of variance"},
                {{"来源", "Source"},
                 {"自由度", "df"},
                 {"平方和 (µm²)", "Sum of squares (µm²)"},
                 {"均方 (µm²)", "Mean square (µm²)"},
                 Same("F"),
                 Same("p")},
                {Row({"零件", "Parts"}, anova.parts)}};
  if (anova.appraisers.df > 0) {
    table.rows.push_back(Row({"评价人", "Appraisers"}, anova.appraisers));
    table.rows.push_back(Row({"零件×评价人", "Parts × appraisers"}, anova.interaction));
  }
  table.rows.push_back(Row({"重复性", "Repeatability"}, anova.equipment));
  if (anova.Pooled()) table.rows.push_back(Row({"合并后的重复性", "Repeatability, pooled"}, anova.pooled));
  C_Anova_Row total = anova.total;
  total.f = 0.0;
  table.rows.push_back(Row({"合计", "Total"}, total));
  return table;
}

C_Table Component_Table(const C_Anova& anova, const std::optional<C_Average_Range>& range, double tolerance_mm,
                        double confidence) {
  const std::string percent = Short(100.0 * confidence) + " %";
  C_Table table{{"变差分量", "Components of the variation"},
                {{"分量", "Component"},
                 {"标准差 (µm)", "Standard deviation (µm)"},
                 {percent + " 置信区间 (µm)", percent + " confidence interval (µm)"},
                 {"占总变差 %", "% of total"},
                 {"占公差 %", "% of tolerance"},
                 {"均值极差法 (µm)", "Average and range (µm)"}},
                {}};
  for (const C_Named& one : Named) {
    const double component = anova.components.*one.component;
    const C_Interval& interval = anova.*one.interval;
    table.rows.push_back({one.name, Same(Micrometres(component)), Same(Micrometres(interval.low, interval.high)),
                          Same(Fixed(anova.components.Percent(component), 2)),
                          Same(tolerance_mm > 0.0 ? Fixed(Percent_Of_Tolerance(component, tolerance_mm), 2) : "–"),
                          Same(range ? Micrometres(range->components.*one.component) : "–")});
  }
  if (range) {
    table.rows.push_back(
        {{"%GRR，ndc", "%GRR, ndc"},
         Same(""),
         Same(""),
         Same(Fixed(anova.components.Percent_GRR(), 2)),
         Same("ndc " + Categories(anova.components)),
         Same(Fixed(range->components.Percent_GRR(), 2) + " %, ndc " + Categories(range->components))});
  }
  return table;
}

void Add_Notes(const C_Crossed& data, const C_Anova_Settings& settings, const C_Anova& anova, bool with_range,
               C_Report& report) {
  std::vector<C_Text>& notes = report.notes;
  if (anova.Pooled()) {
    notes.push_back({"零件×评价人的交互作用不显著（p = " + Short(anova.interaction.p, 3) + " > " +
                         Short(settings.alpha) + "），并入重复性。",
                     "The interaction of parts and appraisers does not show (p = " + Short(anova.interaction.p, 3) +
                         " > " + Short(settings.alpha) + ") and counts as repeatability."});
  }
  if (data.Appraisers() == 1) {
    notes.push_back({"只有一位评价人：AV 和 INT 无法得出，计为 0；GRR 只是重复性。",
                     "There is one appraiser: AV and INT cannot be told and count as 0; GRR is repeatability alone."});
  }
  for (const std::string name : anova.negative) {
    notes.push_back(
        {name + " 的方差估计为负，按 0 计。", "The estimate of " + name + " was negative and is set to 0."});
  }
  if (anova.components.PV == 0.0) {
    notes.push_back({"零件之间没有可见的差别：占总变差的百分数没有意义，请按公差判断，或选取有代表性的零件。",
                     "The parts do not differ visibly: percentages of the total variation say nothing. Judge by the "
                     "tolerance, or take parts that stand for the process."});
  }
  if (anova.components.GRR == 0.0) {
    notes.push_back({"重复测量完全相同：分辨力不足以看出测量系统的变差。",
                     "All repeats are identical: the resolution does not show the gauge's spread."});
  }
  if (!with_range) {
    notes.push_back({"零件、评价人或次数多于 " + std::to_string(Longest_Range) + "，不作均值极差法。",
                     "With more than " + std::to_string(Longest_Range) +
                         " parts, appraisers or trials the average and range method is left out."});
  }
}

double Mean_Of_Part(const C_Crossed& data, int part) {
  double sum = 0.0;
  for (int j = 0; j < data.Appraisers(); ++j)
    for (int k = 0; k < data.trials; ++k) sum += data.Value(part, j, k);
  return sum / (data.Appraisers() * data.trials);
}

C_Chart Run_Chart(const C_Crossed& data) {
  C_Chart chart{{"按零件的运行图：与该零件平均值之差", "Run chart by part: difference from the part's mean"},
                {"零件", "part"},
                Same("µm"),
                {}};
  for (const std::string& name : data.appraisers) {
    chart.series.push_back({C_Series::Kind::Points, Same(name), static_cast<int>(chart.series.size()), {}, {}});
  }
  int x = 0;
  for (int i = 0; i < data.Parts(); ++i) {
    const double mean = Mean_Of_Part(data, i);
    const int first = x;
    for (int j = 0; j < data.Appraisers(); ++j) {
      for (int k = 0; k < data.trials; ++k) {
        C_Series& series = chart.series[static_cast<size_t>(j)];
        series.x.push_back(x++);
        series.y.push_back((data.Value(i, j, k) - mean) * 1000.0);
      }
    }
    chart.x_names.emplace_back((first + x - 1) / 2.0, data.parts[static_cast<size_t>(i)]);
    if (i > 0) chart.dividers.push_back(first - 0.5);
  }
  return chart;
}

// Where the cell of a part and an appraiser stands in a list of all.
size_t Cell(const C_Crossed& data, int part, int appraiser) {
  return static_cast<size_t>(part) * data.appraisers.size() + static_cast<size_t>(appraiser);
}

// One mark for each cell, appraiser beside appraiser. values: part by part.
C_Chart By_Appraiser(const C_Crossed& data, const std::vector<double>& values, double factor, const C_Text& title,
                     const C_Text& unit) {
  C_Chart chart{title, {"评价人（依零件次序）", "appraiser, part by part"}, unit, {}};
  for (int j = 0; j < data.Appraisers(); ++j) {
    C_Series series{C_Series::Kind::Linked_Points, {}, j, {}, {}};
    const int first = j * data.Parts();
    for (int i = 0; i < data.Parts(); ++i) {
      series.x.push_back(first + i);
      series.y.push_back(factor * values[Cell(data, i, j)]);
    }
    chart.series.push_back(series);
    chart.x_names.emplace_back(first + (data.Parts() - 1) / 2.0, data.appraisers[static_cast<size_t>(j)]);
    if (j > 0) chart.dividers.push_back(first - 0.5);
  }
  return chart;
}

C_Chart Interaction(const C_Crossed& data, const std::vector<double>& cell_means) {
  C_Chart chart{{"交互作用：评价人平均值与零件平均值之差", "Interaction: appraiser's mean less the part's mean"},
                {"零件", "part"},
                Same("µm"),
                {}};
  for (int j = 0; j < data.Appraisers(); ++j) {
    C_Series series{C_Series::Kind::Linked_Points, Same(data.appraisers[static_cast<size_t>(j)]), j, {}, {}};
    for (int i = 0; i < data.Parts(); ++i) {
      series.x.push_back(i);
      series.y.push_back((cell_means[Cell(data, i, j)] - Mean_Of_Part(data, i)) * 1000.0);
    }
    chart.series.push_back(series);
  }
  for (int i = 0; i < data.Parts(); ++i) chart.x_names.emplace_back(i, data.parts[static_cast<size_t>(i)]);
  return chart;
}

C_Chart Component_Chart(const C_Components& found, double tolerance_mm) {
  C_Chart chart{{"变差分量", "Components of the variation"}, {"分量", "component"}, Same("%"), {}};
  C_Series of_total{C_Series::Kind::Bars, {"占总变差", "of total variation"}, 0, {}, {}};
  C_Series of_tolerance{C_Series::Kind::Bars, {"占公差", "of tolerance"}, 1, {}, {}};
  for (const C_Named& one : Named) {
    if (one.component == &C_Components::TV) continue;
    const auto x = static_cast<double>(chart.x_names.size());
    chart.x_names.emplace_back(x, one.key);
    of_total.x.push_back(x);
    of_total.y.push_back(found.Percent(found.*one.component));
    // What lies outside the gauge is no matter of the tolerance here.
    if (one.component == &C_Components::PV) continue;
    of_tolerance.x.push_back(x);
    of_tolerance.y.push_back(Percent_Of_Tolerance(found.*one.component, tolerance_mm));
  }
  chart.series = {of_total};
  if (tolerance_mm > 0.0) chart.series.push_back(of_tolerance);
  return chart;
}

void Add_Charts(const C_Crossed& data, const C_Anova& anova, const std::optional<C_Average_Range>& range,
                double tolerance_mm, C_Report& report) {
  report.Add_Chart(Component_Chart(anova.components, tolerance_mm));
  report.Add_Chart(Run_Chart(data));
  if (!range) return;
  C_Chart ranges = By_Appraiser(data, range->cell_ranges_mm, 1000.0, {"极差图", "Range chart"}, Same("µm"));
  ranges.Add_Limit({"平均极差", "mean range"}, range->mean_range_mm * 1000.0, 6);
  ranges.Add_Limit({"上限 UCL", "upper limit UCL"}, range->range_limit_mm * 1000.0);
  report.Add_Chart(std::move(ranges));
  C_Chart means = By_Appraiser(data, range->cell_means_mm, 1.0, {"均值图", "Mean chart"}, Same("mm"));
  means.Add_Limit({"总平均", "grand mean"}, range->grand_mean_mm, 6);
  means.Add_Limit({"限 UCL、LCL", "limits UCL, LCL"}, range->mean_high_mm);
  means.Add_Limit({}, range->mean_low_mm);
  report.Add_Chart(std::move(means));
  if (data.Appraisers() > 1) report.Add_Chart(Interaction(data, range->cell_means_mm));
}

nlohmann::ordered_json Json(const C_Components& found, double tolerance_mm) {
  nlohmann::ordered_json json;
  for (const C_Named& one : Named) json[one.key] = found.*one.component;
  for (const C_Named& one : Named) json[std::string("percent_") + one.key] = found.Percent(found.*one.component);
  if (tolerance_mm > 0.0) {
    for (const C_Named& one : Named) {
      json["percent_tolerance_" + std::string(one.key)] = Percent_Of_Tolerance(found.*one.component, tolerance_mm);
    }
  }
  json["ndc"] = nullptr;
  if (found.Ndc() >= 0) json["ndc"] = found.Ndc();
  return json;
}

nlohmann::ordered_json Json(const C_Anova_Row& row) {
  nlohmann::ordered_json json = {
      {"df", row.df}, {"sum_of_squares", row.sum_of_squares}, {"mean_square", row.mean_square}};
  if (row.f > 0.0) json.update({{"F", row.f}, {"p", row.p}});
  return json;
}

nlohmann::ordered_json Json(const C_Anova& anova, double tolerance_mm) {
  nlohmann::ordered_json json = Json(anova.components, tolerance_mm);
  json["interaction_p"] = nullptr;
  if (anova.interaction.df > 0) json["interaction_p"] = anova.interaction.p;
  json["pooled"] = anova.Pooled();
  for (const C_Named& one : Named) {
    const C_Interval& interval = anova.*one.interval;
    json["intervals"][one.key] = {interval.low, interval.high};
  }
  json["table"] = {{"parts", Json(anova.parts)},
                   {"appraisers", Json(anova.appraisers)},
                   {"interaction", Json(anova.interaction)},
                   {"equipment", Json(anova.equipment)},
                   {"total", Json(anova.total)}};
  if (anova.Pooled()) json["table"]["pooled"] = Json(anova.pooled);
  return json;
}

}  // namespace

C_Report Report_Crossed(const C_Crossed& data, const C_Anova_Settings& settings, double tolerance_mm,
                        const C_Anova& anova, const std::optional<C_Average_Range>& range) {
  C_Report report;
  report.study = "grr";
  report.title = {"测量系统重复性与再现性研究（GRR）", "Gauge repeatability and reproducibility (GRR)"};
  report.method = {
      "方差分析（AIAG MSA 第 4 版，第 III-B 章），零件、评价人和交互作用均为随机效应；交互作用的 p 大于 " +
          Short(settings.alpha) +
          " 时并入重复性，负的方差分量按 0 计。置信区间：EV 用 χ² 分布，其余用修正大样本法（Burdick、Borror、"
          "Montgomery 2005）。占公差的百分数为 6σ/T。ndc = 1.41 PV/GRR "
          "取整。均值极差法作为第二意见，不含交互作用。假设："
          "各效应独立、服从正态分布，零件代表生产过程，测量次序随机。",
      "Analysis of variance (AIAG MSA, 4th edition, chapter III-B) with parts, appraisers and their interaction as "
      "random "
      "effects; an interaction with p above " +
          Short(settings.alpha) +
          " counts as repeatability, negative components as 0. Confidence intervals: EV by the chi-squared "
          "distribution, "
          "the others by the modified large-sample method (Burdick, Borror, Montgomery 2005). Percentages of the "
          "tolerance "
          "are 6σ/T. ndc = 1.41 PV/GRR, cut. The average and range method is a second opinion without interaction. "
          "Assumed: independent, normally distributed effects, parts that stand for the process, a random order."};
  Add_Checks(anova.components, tolerance_mm, report);
  report.tables = {Component_Table(anova, range, tolerance_mm, settings.confidence), Anova_Table(anova)};
  Add_Notes(data, settings, anova, range.has_value(), report);
  Add_Charts(data, anova, range, tolerance_mm, report);
  report.numbers["design"] = {{"parts", data.parts}, {"appraisers", data.appraisers}, {"trials", data.trials}};
  report.numbers["anova"] = Json(anova, tolerance_mm);
  report.numbers["range"] = nullptr;
  if (range) report.numbers["range"] = Json(range->components, tolerance_mm);
  return report;
}

}  // namespace study
