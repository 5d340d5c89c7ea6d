// The reports in a real browser: what is drawn, where, and on which paper.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

#include "common/command.h"
#include "common/temp_folder.h"
#include "study/reports.h"

namespace study {
namespace {

using ::testing::HasSubstr;

// Looks at the page after it was laid out and writes what it sees into it, one line for each chart: the marks inside
// the plot, and whatever is wrong.
constexpr char Look[] = R"(<pre id="seen"></pre><script>
const seen = [];
const inside = (a, b, by) => a.left >= b.left - by && a.right <= b.right + by && a.top >= b.top - by && a.bottom <= b.bottom + by;
const apart = (a, b) => a.right <= b.left + 1 || b.right <= a.left + 1 || a.bottom <= b.top + 3 || b.bottom <= a.top + 3;
const root = document.documentElement;
if (root.scrollWidth > root.clientWidth) seen.push('wider than the page');
document.querySelectorAll('svg').forEach(svg => {
  const box = svg.getBoundingClientRect(), frame = svg.querySelector('.frame').getBoundingClientRect();
  const count = {};
  svg.querySelectorAll('.value, .line, .bar, .band').forEach(mark => {
    const place = mark.getBoundingClientRect(), kind = mark.getAttribute('class');
    if (inside(place, frame, 2) && getComputedStyle(mark).visibility === 'visible') count[kind] = (count[kind] || 0) + 1;
    else seen.push('outside the plot: ' + mark.outerHTML);
  });
  const texts = [...svg.querySelectorAll('text')].map(text => [text.textContent, text.getBoundingClientRect()]);
  texts.forEach(([text, place], i) => {
    if (!inside(place, box, 0.5)) seen.push('cut: ' + text);
    texts.slice(i + 1).forEach(([other, there]) => { if (!apart(place, there)) seen.push('over each other: ' + text + ' | ' + other); });
  });
  seen.push(svg.getAttribute('aria-label') + ': ' + JSON.stringify(count));
});
seen.push([...document.querySelectorAll('td')].some(cell => cell.scrollWidth > cell.clientWidth + 1) ? 'cell too narrow' : 'cells fit');
document.getElementById('seen').textContent = seen.join('\n');
</script></body>)";

std::string Chromium(const std::string& what) {
  return orsanta::Shell(
             "chromium --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
             "--disable-background-networking --disable-component-update --disable-sync --user-data-dir=profile "
             "--window-size=794,1123 " +
             what + " file://$PWD/page.html 2>&1")
      .output;
}

// What the browser sees of the report.
std::string Seen(const C_Report& report, C_Language language) {
  std::string page = Html(report, language);
  for (const char* foreign : {"<script", "href", "src=", "url(", "@import"})
    EXPECT_THAT(page, testing::Not(HasSubstr(foreign)));
  page.replace(page.find("</body>"), 7, Look);
  std::ofstream("page.html") << page;
  const std::string shown = Chromium("--dump-dom");
  const std::string begin = "<pre id=\"seen\">";
  const size_t at = shown.find(begin);
  if (at == std::string::npos) return "chromium shows no page (is it installed?): " + shown.substr(0, 2000);
  return shown.substr(at + begin.size(), shown.find("</pre>", at) - at - begin.size());
}

TEST(Report, Shows_A_Crossed_Study_On_A4) {
  const orsanta::C_Temp_Folder folder;
  C_Crossed data;
  data.parts = {"<b>1</b>&\"", "2", "3", "4", "5", "6", "7", "8", "9", "a part with a long name"};
  data.appraisers = {"A", "B", "张三"};
  data.trials = 3;
  for (int i = 0; i < 90; ++i) data.values_mm.push_back(3.0 + i / 9 * 0.002 + i / 3 % 3 * 0.0003 + i * 37 % 8 * 1e-4);
  C_Report report = Report_Crossed(data, {}, 0.02, Work_Out_Anova(data), Work_Out_Average_Range(data));
  report.header = {{{"工位", "Station"}, Same("1 <i>&amp;</i>")}};
  EXPECT_EQ(Seen(report, C_Language::English),
            "Components of the variation: {\"bar\":9}\n"
            "Run chart by part: difference from the part's mean: {\"value\":90}\n"
            "Range chart: {\"line\":5,\"value\":30}\n"
            "Mean chart: {\"line\":6,\"value\":30}\n"
            "Interaction: appraiser's mean less the part's mean: {\"line\":3,\"value\":30}\n"
            "cells fit");
  Chromium("--no-pdf-header-footer --print-to-pdf=page.pdf");
  EXPECT_THAT(orsanta::File_Text("page.pdf"), HasSubstr("/MediaBox [0 0 59"));  // 595 x 842 points are A4
}

TEST(Report, Shows_The_Other_Studies_In_Chinese) {
  const orsanta::C_Temp_Folder folder;
  std::vector<double> values;
  for (int i = 0; i < 30; ++i) values.push_back(3.0001 + i * 11 % 7 * 1e-4);
  std::vector<C_Reference_Values> references;
  for (int i = 1; i <= 5; ++i) {
    references.push_back({i * 1.0, {}});
    for (int k = 0; k < 10; ++k) references.back().values_mm.push_back(i * 1.0 + k * 3 % 5 * 1e-4 + i * 5e-5);
  }
  const C_Type1_Settings type1 = {3.0, 0.02, 0.0001, 0.95};
  const C_Uncertainty_Settings budget{0.02, 0.0001};
  const std::vector<C_Force_Reading> forces = {{1, 50, 50.2}, {1, 400, 399}, {6, 50, 49.8}, {6, 400, 401}};
  C_Report all = Report_Type1(values, type1, Work_Out_Type1(values, type1));
  for (const C_Report& other : {Report_Linearity(references, 0.95, 0.02, Work_Out_Linearity(references)),
                                Report_Uncertainty(budget, Work_Out_Uncertainty(references, {}, budget)),
                                Report_Force(forces, Work_Out_Force(forces))}) {
    all.checks.insert(all.checks.end(), other.checks.begin(), other.checks.end());
    all.tables.insert(all.tables.end(), other.tables.begin(), other.tables.end());
    all.charts.insert(all.charts.end(), other.charts.begin(), other.charts.end());
    all.notes.insert(all.notes.end(), other.notes.begin(), other.notes.end());
  }
  EXPECT_EQ(Seen(all, C_Language::Chinese),
            "运行图：与参考值之差: {\"line\":7,\"value\":30}\n"
            "直方图: {\"bar\":9}\n"
            "偏倚与尺寸: {\"band\":1,\"value\":55,\"line\":2}\n"
            "不确定度分量: {\"bar\":6}\n"
            "推力误差: {\"line\":5,\"value\":4}\n"
            "cells fit");
}

}  // namespace
}  // namespace study
