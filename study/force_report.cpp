#include <map>

#include "study/reports.h"

namespace study {

namespace {

constexpr double Good_Percent = 1.0, Usable_Percent = 2.0;  // error of the force

C_Chart Errors(const std::vector<C_Force_Reading>& readings) {
  C_Chart chart{{"推力误差", "Error of the force"}, {"设定推力 (g)", "set force (g)"}, Same("%"), {}};
  std::map<double, C_Series> heights;
  for (const C_Force_Reading& one : readings) {
    C_Series& series = heights[one.height_mm];
    series.x.push_back(one.set_g);
    series.y.push_back(one.Error_Percent());
  }
  for (auto& [height, series] : heights) {
    series.kind = C_Series::Kind::Linked_Points;
    series.name = Same(Short(height) + " mm");
    series.color = static_cast<int>(chart.series.size());
    chart.series.push_back(series);
  }
  chart.Add_Limit({}, Good_Percent);
  chart.Add_Limit({}, -Good_Percent);
  chart.Add_Limit({}, 0.0, 6);
  return chart;
}

C_Table Groups(const C_Text& title, const C_Text& at, const std::vector<C_Force_Group>& groups) {
  C_Table table{title, {at, {"平均误差 (%)", "Mean error (%)"}, {"最大误差 (%)", "Greatest error (%)"}}, {}};
  for (const C_Force_Group& one : groups) {
    table.rows.push_back(
        {Same(Short(one.at)), Same(Fixed(one.mean_error_percent, 3)), Same(Fixed(one.greatest_error_percent, 3))});
  }
  return table;
}

nlohmann::ordered_json Json(const std::vector<C_Force_Group>& groups, const char* key) {
  nlohmann::ordered_json json;
  for (const C_Force_Group& one : groups) {
    json.push_back({{key, one.at},
                    {"mean_error_percent", one.mean_error_percent},
                    {"greatest_error_percent", one.greatest_error_percent}});
  }
  return json;
}

}  // namespace

C_Report Report_Force(const std::vector<C_Force_Reading>& readings, const C_Force& result) {
  C_Report report;
  report.study = "force";
  report.title = {"推力研究", "Force study"};
  report.method = {
      "真实推力由测头下的测力计读出；误差 = 100（真实 − 设定）/ 设定。假设：测力计的误差远小于限值，读数时测头静止"
      "在零件上。",
      "The true force is read from a force gauge under the probe; error = 100 (true − set) / set. Assumed: a "
      "force gauge far better than the limit, read while the probe rests on the part."};
  report.checks = {{{"最大推力误差", "Greatest error of the force"},
                    Fixed(result.greatest_error_percent, 2) + " %",
                    Limit_At_Most(Good_Percent, Usable_Percent, " %"),
                    At_Most(result.greatest_error_percent, Good_Percent, Usable_Percent)}};
  const C_Force_Reading& worst = result.worst;
  const std::string place = Short(worst.set_g) + " g, " + Short(worst.height_mm) + " mm: " + Short(worst.true_g) + " g";
  report.notes = {{"最大误差出现在 " + place + "。", "The greatest error: " + place + "."}};
  report.tables = {Groups({"按设定推力", "By set force"}, {"设定推力 (g)", "Set force (g)"}, result.forces),
                   Groups({"按高度", "By height"}, {"零件高度 (mm)", "Height of the part (mm)"}, result.heights)};
  report.Add_Chart(Errors(readings));
  report.numbers["force"] = {
      {"count", readings.size()},
      {"greatest_error_percent", result.greatest_error_percent},
      {"worst", {{"height_mm", worst.height_mm}, {"set_g", worst.set_g}, {"true_g", worst.true_g}}},
      {"by_force", Json(result.forces, "set_g")},
      {"by_height", Json(result.heights, "height_mm")}};
  return report;
}

}  // namespace study
