// The studies. Their numbers: against statsmodels and scipy on random designs, against published examples, and where
// there is little to work out. Their reports in a real browser: what is drawn, where, and on which paper.
#include <gmock/gmock.h>

#include <cmath>
#include <functional>

#include "common/command.h"
#include "common/temp_folder.h"
#include "study/average_range.h"
#include "study/csv.h"
#include "study/linearity.h"
#include "study/refused.h"
#include "study/reports.h"
#include "study/type1.h"
#include "study/uncertainty.h"

namespace study {
namespace {

using ::testing::DoubleNear;
using ::testing::ElementsAre;
using ::testing::FieldsAre;
using ::testing::HasSubstr;
using ::testing::Pointwise;
using ::testing::ThrowsMessage;

// SplitMix64, as in reference/make_reference.py.
class C_Random {
 public:
  explicit C_Random(uint64_t seed) : m_State(seed) {}
  int Below(int count) {
    uint64_t z = m_State += 0x9E3779B97F4A7C15;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EB;
    return static_cast<int>((z ^ (z >> 31)) % static_cast<uint64_t>(count));
  }
  int Around(int spread) { return Below(2 * spread + 1) - spread; }

 private:
  uint64_t m_State;
};

C_Crossed Empty(int parts, int appraisers, int trials) {
  C_Crossed data;
  for (int i = 1; i <= parts; ++i) data.parts.push_back(std::to_string(i));
  for (int j = 0; j < appraisers; ++j) data.appraisers.emplace_back(1, static_cast<char>('A' + j));
  data.trials = trials;
  return data;
}

C_Crossed Filled(int parts, int appraisers, int trials, double (*value)(int, int, int)) {
  C_Crossed data = Empty(parts, appraisers, trials);
  for (int i = 0; i < parts; ++i)
    for (int j = 0; j < appraisers; ++j)
      for (int k = 0; k < trials; ++k) data.values_mm.push_back(value(i, j, k));
  return data;
}

C_Crossed Random_Design(uint64_t seed) {
  C_Random random(seed);
  const int parts = 2 + random.Below(11), appraisers = 1 + random.Below(5), trials = 2 + random.Below(5);
  C_Crossed data = Empty(parts, appraisers, trials);
  int spreads[3];
  for (int& spread : spreads) spread = std::array{0, 30, 300, 3000}[static_cast<size_t>(random.Below(4))];
  std::vector<int> part, appraiser;
  for (int i = 0; i < parts; ++i) part.push_back(random.Around(spreads[0]));
  for (int j = 0; j < appraisers; ++j) appraiser.push_back(random.Around(spreads[1]));
  for (const int of_part : part) {
    for (const int of_appraiser : appraiser) {
      const int mean = 300000 + of_part + of_appraiser + random.Around(spreads[2]);
      for (int k = 0; k < trials; ++k) data.values_mm.push_back((mean + random.Around(100)) / 100000.0);
    }
  }
  return data;
}

std::vector<C_Reference_Values> Random_References(uint64_t seed) {
  C_Random random(seed);
  std::vector<C_Reference_Values> references(static_cast<size_t>(5 + random.Below(4)));
  int size = 0;
  for (auto& [reference_mm, values_mm] : references) {
    reference_mm = ++size * 0.5;
    const int bias = random.Around(60), count = 10 + random.Below(6);
    for (int k = 0; k < count; ++k) values_mm.push_back((size * 50000 + bias + random.Around(100)) / 100000.0);
  }
  return references;
}

std::vector<double> Numbers(const C_Anova& a) {
  const C_Components& c = a.components;
  std::vector<double> numbers{a.parts.sum_of_squares, a.appraisers.sum_of_squares, a.interaction.sum_of_squares};
  numbers.insert(numbers.end(), {a.equipment.sum_of_squares, a.interaction.p, c.EV, c.AV, c.INT, c.PV, c.GRR, c.TV});
  for (const auto& [low, high] : {a.EV, a.AV, a.INT, a.PV, a.GRR, a.TV}) numbers.insert(numbers.end(), {low, high});
  return numbers;
}

std::vector<double> Numbers(const C_Linearity& a) {
  const C_Size& first = a.sizes.front();
  return {a.slope,         a.intercept_mm,          a.slope_error,     a.intercept_error_mm, a.slope_p,
          a.intercept_p,   a.residual_deviation_mm, a.r_squared,       first.band_low_mm,    first.band_high_mm,
          first.bias.mean, first.bias_test.t,       first.bias_test.p, first.bias_test.low,  first.bias_test.high};
}

TEST(Studies, Agree_With_A_Second_Computation_On_Random_Designs) {
  std::ifstream file(REFERENCE_FILE);
  int compared = 0;
  for (std::string line; std::getline(file, line); ++compared) {
    std::istringstream words(line);
    std::string kind;
    uint64_t seed = 0;
    words >> kind >> seed;
    const std::vector<double> ours = kind == "crossed" ? Numbers(Work_Out_Anova(Random_Design(seed)))
                                                       : Numbers(Work_Out_Linearity(Random_References(seed)));
    for (size_t i = 0; i < ours.size(); ++i) {
      double theirs = 0.0;
      ASSERT_TRUE(words >> theirs) << line;
      // Nine digits; the second term is for numbers that are 0 but for rounding.
      EXPECT_NEAR(ours[i], theirs, 1e-9 * std::abs(theirs) + 1e-15) << kind << " " << seed << ", number " << i;
    }
  }
  EXPECT_EQ(compared, 300);
}

// The examples of the AIAG handbook, 4th edition.
TEST(Studies, Give_The_Published_Results) {
  static constexpr double Trials[3][3][10] = {{{0.29, -0.56, 1.34, 0.47, -0.80, 0.02, 0.59, -0.31, 2.26, -1.36},
                                               {0.41, -0.68, 1.17, 0.50, -0.92, -0.11, 0.75, -0.20, 1.99, -1.25},
                                               {0.64, -0.58, 1.27, 0.64, -0.84, -0.21, 0.66, -0.17, 2.01, -1.31}},
                                              {{0.08, -0.47, 1.19, 0.01, -0.56, -0.20, 0.47, -0.63, 1.80, -1.68},
                                               {0.25, -1.22, 0.94, 1.03, -1.20, 0.22, 0.55, 0.08, 2.12, -1.62},
                                               {0.07, -0.68, 1.34, 0.20, -1.28, 0.06, 0.83, -0.34, 2.19, -1.50}},
                                              {{0.04, -1.38, 0.88, 0.14, -1.46, -0.29, 0.02, -0.46, 1.77, -1.49},
                                               {-0.11, -1.13, 1.09, 0.20, -1.07, -0.67, 0.01, -0.56, 1.45, -1.77},
                                               {-0.15, -0.96, 0.67, 0.11, -1.45, -0.49, 0.21, -0.49, 1.87, -2.16}}};
  const C_Crossed crossed = Filled(10, 3, 3, [](int i, int j, int k) { return Trials[j][k][i]; });
  const C_Anova anova = Work_Out_Anova(crossed);
  EXPECT_NEAR(anova.total.sum_of_squares, 94.6471, 5e-5);
  EXPECT_TRUE(anova.Pooled());
  EXPECT_NEAR(anova.components.Percent_GRR(), 27.9, 0.05);
  EXPECT_EQ(anova.components.Ndc(), 4);

  const C_Components range = Work_Out_Average_Range(crossed)->components;
  // The handbook rounds its factors to four digits.
  EXPECT_THAT((std::vector{range.EV, range.AV, range.GRR, range.PV, range.TV}),
              Pointwise(DoubleNear(1.5e-4), {0.20188, 0.22963, 0.30575, 1.10456, 1.14610}));
  EXPECT_EQ(range.Ndc(), 5);

  const C_Linearity line =
      Work_Out_Linearity({{10, {9.1, 9.3, 9.5, 9.3, 9.4, 9.5, 9.5, 9.5, 9.6, 9.2, 9.3, 9.4}},  // in any order
                          {2, {2.7, 2.5, 2.4, 2.5, 2.7, 2.3, 2.5, 2.5, 2.4, 2.4, 2.6, 2.4}},
                          {4, {5.1, 3.9, 4.2, 5.0, 3.8, 3.9, 3.9, 3.9, 3.9, 4.0, 4.1, 3.8}},
                          {6, {5.8, 5.7, 5.9, 5.9, 6.0, 6.1, 6.0, 6.1, 6.4, 6.3, 6.0, 6.1}},
                          {8, {7.6, 7.7, 7.8, 7.7, 7.8, 7.8, 7.8, 7.7, 7.8, 7.5, 7.6, 7.7}}});
  EXPECT_THAT((std::vector{line.slope_t, line.intercept_t, line.Percent_Linearity()}),
              Pointwise(DoubleNear(5e-4), {-12.043, 10.158, 13.1667}));
  EXPECT_FALSE(line.Zero_In_Band());
}

std::vector<double> Twenty_Five(double mean) {  // with a standard deviation of 0.0001
  std::vector<double> values(25, mean);
  for (size_t i = 0; i < 24; ++i) values[i] += i % 2 == 0 ? 0.0001 : -0.0001;
  return values;
}

TEST(Studies, Judge_A_Gauge_Against_A_Tolerance) {
  const C_Type1 type1 = Work_Out_Type1(Twenty_Five(3.0002), {3.0, 0.02, 0.0001, 0.95});
  EXPECT_NEAR(type1.bias_test.high - type1.bias_mm, 2.063898562 * 0.0001 / 5.0, 1e-12);  // t(0.975, 24)
  EXPECT_THAT((std::vector{type1.bias_mm, type1.values.deviation, type1.bias_test.t, type1.cg, type1.cgk,
                           type1.percent_resolution}),
              Pointwise(DoubleNear(1e-8), {0.0002, 0.0001, 10.0, 20.0 / 3.0, 6.0, 0.5}));

  const C_Uncertainty_Settings settings{
      .tolerance_mm = 0.02, .resolution_mm = 0.0001, .reference_uncertainty_mm = 0.0002, .temperature_range_k = 2.0};
  const C_Uncertainty alone = Work_Out_Uncertainty({{3.0, Twenty_Five(3.0002)}}, {}, settings);
  const double bias = 0.0002 / std::sqrt(3.0), warming = 3.0 * 11.5e-6 * 2.0 / std::sqrt(3.0);
  const double system = std::sqrt(0.0001 * 0.0001 + 0.0001 * 0.0001 + bias * bias);  // certificate, repeats, bias
  const std::vector<double> told{alone.system.u_mm, alone.system.percent, alone.system.capability, alone.system.df,
                                 alone.process.u_mm};
  EXPECT_THAT(told, Pointwise(DoubleNear(1e-8), {system, 20000.0 * system, 0.001 / system,
                                                 24.0 * std::pow(system / 0.0001, 4), std::hypot(system, warming)}));

  // A second size adds its linearity, a crossed study its appraisers; its repeats replace smaller ones.
  const C_Anova anova = Work_Out_Anova(Random_Design(7));
  const C_Uncertainty both =
      Work_Out_Uncertainty({{3.0, Twenty_Five(3.0002)}, {4.0, Twenty_Five(4.0004)}}, anova, settings);
  const double line = 0.0001 / std::sqrt(3.0), mean = 0.0003 / std::sqrt(3.0);
  ASSERT_GT(anova.components.EV, 0.0001);
  EXPECT_NEAR(both.system.u_mm, std::sqrt(0.0001 * 0.0001 * 2 + line * line + mean * mean), 1e-12);
  EXPECT_NEAR(
      both.process.u_mm * both.process.u_mm,
      0.0001 * 0.0001 + line * line + mean * mean + std::pow(warming * 4 / 3, 2) + std::pow(anova.components.GRR, 2),
      1e-12);

  const C_Force force = Work_Out_Force({{1, 100, 101}, {1, 200, 199}, {5, 100, 98}});
  EXPECT_THAT((std::vector{force.greatest_error_percent, force.worst.height_mm, force.forces[0].mean_error_percent,
                           force.heights[0].greatest_error_percent}),
              ElementsAre(2.0, 5.0, -0.5, 1.0));
}

TEST(Studies, Say_What_Cannot_Be_Worked_Out) {
  std::vector<C_Reference_Values> nine = Random_References(1), four(4);
  nine[1].values_mm.resize(9);
  const C_Type1_Settings settings{1.0, 1.0};
  const std::vector<C_Force_Reading> weightless{{1, 0, 5}};
  const std::pair<std::function<void()>, const char*> refused[] = {
      {[] { Work_Out_Anova(Filled(5, 3, 2, [](int, int, int) { return 1.0 / 3.0; })); }, "all 30 values are identical"},
      {[] { Work_Out_Anova(Filled(1, 3, 2, [](int, int j, int k) { return j + k * 0.1; })); }, "at least 2 parts"},
      {[] { Work_Out_Anova(Filled(5, 3, 1, [](int i, int, int) { return i * 1.0; })); }, "at least twice"},
      {[] { Work_Out_Type1(std::vector<double>(24, 1.0), {}); }, "there are 24"},
      {[] { Work_Out_Type1(Twenty_Five(3.0), {}); }, "--tolerance"},
      {[&] { Work_Out_Type1(std::vector<double>(30, 1.0), settings); }, "identical"},
      {[&] { Work_Out_Linearity(nine); }, "reference 1 mm has 9 values"},
      {[&] { Work_Out_Linearity(four); }, "there are 4"},
      {[&] { Work_Out_Force(weightless); }, "above 0 g"},
      {[] { Read_References("value\n1\n"); }, "no column \"reference\""}};
  for (const auto& [work, told] : refused) EXPECT_THAT(work, ThrowsMessage<C_Refused>(HasSubstr(told)));
}

TEST(Studies, Take_What_Little_There_Is) {
  // Identical trials: thirds, whose mean is not exact, must not pass for repeatability.
  const C_Anova exact = Work_Out_Anova(Filled(4, 2, 3, [](int i, int j, int) { return i * 0.1 + j / 3.0; }));
  EXPECT_THAT((std::vector{exact.components.EV, exact.components.INT, exact.components.AV}),
              ElementsAre(0.0, 0.0, DoubleNear(std::sqrt(1.0 / 18.0), 1e-12)));
  // One appraiser; parts that do not differ.
  const C_Anova one = Work_Out_Anova(Filled(5, 1, 2, [](int, int, int k) { return 3.0 + k * 0.001; }));
  EXPECT_THAT((std::vector{one.components.AV, one.components.PV, one.components.Percent_GRR()}),
              ElementsAre(0.0, 0.0, DoubleNear(100.0, 1e-9)));
  EXPECT_THAT(one.negative, ElementsAre(testing::StrEq("PV")));
  EXPECT_EQ(one.components.Ndc(), 0);
  // No spread of the gauge at all.
  const C_Anova parts = Work_Out_Anova(Filled(5, 2, 2, [](int i, int, int) { return i * 1.0; }));
  EXPECT_EQ(parts.components.Percent_GRR(), 0.0);
  EXPECT_EQ(parts.components.Ndc(), -1);
  EXPECT_FALSE(Work_Out_Average_Range(Empty(26, 2, 2)).has_value());
}

TEST(Csv, Reads_What_Spreadsheets_Write) {
  const char marked[] = "\uFEFFValue;note;Part;APPRAISER;trial\r\n3,002;;\"a;\"\"b\";A;1\r\n\r\n+2.5e0;x;2;B;1\r\n";
  EXPECT_THAT(Read_Crossed(marked),
              ElementsAre(FieldsAre("a;\"b", "A", "1", 3.002, 2), FieldsAre("2", "B", "1", 2.5, 4)));
  EXPECT_THAT(Cross(Read_Crossed("part,appraiser,trial,value\n10,B,1,1\n9,B,1,1\n9,A,1,1\n10,A,1,1\n")).parts,
              ElementsAre("9", "10"));
  EXPECT_THAT(Read_References("reference\tvalue\n1\t1,5\n2\t2.5\n1,0\t1.25"),
              ElementsAre(FieldsAre(1.0, ElementsAre(1.5, 1.25)), FieldsAre(2.0, ElementsAre(2.5))));
  EXPECT_EQ(Read_References("value\n1\n2\n", 3.0).front().reference_mm, 3.0);
  EXPECT_EQ(Read_Forces("height,set,true\n\"1,5\",100,99.5").front().height_mm, 1.5);
  EXPECT_EQ(Csv_Line({"a,\"b\"", "c", "1"}), "\"a,\"\"b\"\"\",c,1");
}

TEST(Csv, Tells_Every_Bad_Line) {
  const std::string head = "part,appraiser,trial,value\n";
  std::string many = head;
  for (int i = 0; i < 30; ++i) many += "x\n";
  const std::pair<std::string, testing::Matcher<const std::string&>> files[] = {
      {head + "1,A,1,3\n1,A,2,3,002\n,A,1,nan\n1,A,3,1e999\n",
       "line 3: 5 fields, not 4; with decimal commas separate the columns by semicolons\n"
       "line 4: the column \"part\" is empty\n"
       "line 4: the column \"value\" holds \"nan\", which is no number\n"
       "line 5: the column \"value\" holds \"1e999\", which is no number"},
      {many, testing::ContainsRegex("\nline 21: 1 fields.*\nand 10 more")},
      {head + "1,A,1,3\n1,A,2,3\n2,A,1,3\n1,B,1,3\n1,B,2,3\n2,B,2,3\n2,B,1,3\n",
       HasSubstr("not balanced: part 2, appraiser A, trial 2 is missing")},
      {head + "1,A,1,3\n1,A,1,3\n", HasSubstr("part 1, appraiser A, trial 1 is there twice (line 3)")},
      {"part,operator,trial,value\n", HasSubstr("no column \"appraiser\", only \"part\", \"operator\"")},
      {"part,part,appraiser,trial,value\n", HasSubstr("\"part\" twice")},
      {"", HasSubstr("empty")},
      {head, HasSubstr("no values")}};
  for (const auto& [text, told] : files)
    EXPECT_THAT([&text = text] { Cross(Read_Crossed(text)); }, ThrowsMessage<C_Refused>(told));
}

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
