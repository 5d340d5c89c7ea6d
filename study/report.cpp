#include "study/report.h"

#include <algorithm>

namespace study {

namespace {

constexpr size_t Most_Marks = 4000;

const C_Text& Word(C_Verdict verdict) {
  static const C_Text words[] = {
      {"合格", "accepted"}, {"有条件合格", "conditionally accepted"}, {"不合格", "rejected"}};
  return words[static_cast<size_t>(verdict)];
}

const char* Key(C_Verdict verdict) {
  constexpr const char* Keys[] = {"accepted", "conditional", "rejected"};
  return Keys[static_cast<size_t>(verdict)];
}

}  // namespace

C_Verdict C_Report::Verdict() const {
  C_Verdict worst = C_Verdict::Accepted;
  for (const C_Check& check : checks) worst = std::max(worst, check.verdict);
  return worst;
}

void C_Report::Add_Chart(C_Chart chart) {
  if (chart.Marks() <= Most_Marks) {
    charts.push_back(std::move(chart));
    return;
  }
  const std::string most = std::to_string(Most_Marks);
  notes.push_back({"图“" + chart.title.zh + "”的点数超过 " + most + "，未画出；数值见 data.csv。",
                   "The chart \"" + chart.title.en + "\" would have more than " + most +
                       " marks and is left out; the values stand in data.csv."});
}

C_Verdict At_Most(double value, double accepted, double conditional) {
  if (value <= accepted) return C_Verdict::Accepted;
  return value <= conditional ? C_Verdict::Conditional : C_Verdict::Rejected;
}

C_Verdict At_Least(double value, double accepted, double conditional) {
  return At_Most(-value, -accepted, -conditional);
}

std::string Summary(const C_Report& report, C_Language language) {
  std::string text = report.title.In(language) + "\n";
  for (const C_Check& check : report.checks) {
    text += "  " + check.name.In(language) + ": " + check.value + "  (" + check.limit.In(language) + ")  " +
            Word(check.verdict).In(language) + "\n";
  }
  for (const C_Text& note : report.notes) text += "  " + note.In(language) + "\n";
  return text + C_Text{"结论：", "Verdict: "}.In(language) + Word(report.Verdict()).In(language) + "\n";
}

nlohmann::ordered_json Result(const C_Report& report, const nlohmann::ordered_json& setup) {
  nlohmann::ordered_json result = {{"format", "orsanta study"}, {"version", Result_Version}, {"study", report.study}};
  result["verdict"] = Key(report.Verdict());
  for (const C_Check& check : report.checks) {
    result["checks"].push_back(
        {{"name", check.name.en}, {"value", check.value}, {"limit", check.limit.en}, {"verdict", Key(check.verdict)}});
  }
  result["setup"] = setup;
  for (const auto& [name, text] : report.header) result["header"][name.en] = text.en;
  result.update(report.numbers);
  result["notes"] = nlohmann::ordered_json::array();
  for (const C_Text& note : report.notes) result["notes"].push_back(note.en);
  return result;
}

namespace {

constexpr const char Style[] = R"(
@page { size: A4; margin: 14mm; }
body { font: 10pt/1.4 "Noto Sans CJK SC", "Microsoft YaHei", "WenQuanYi Micro Hei", sans-serif; color: #222;
  max-width: 182mm; margin: 0 auto; }
h1 { font-size: 16pt; margin: 4mm 0 2mm; }
h2 { font-size: 12pt; margin: 5mm 0 1mm; break-after: avoid; }
table { border-collapse: collapse; width: 100%; }
th, td { border: 0.3pt solid #999; padding: 1mm 2mm; text-align: left; vertical-align: top; overflow-wrap: anywhere; }
th { background: #eef2f6; font-weight: 600; }
td.number { text-align: right; white-space: nowrap; }
.verdict { font-size: 13pt; font-weight: 700; padding: 2mm 4mm; margin: 3mm 0; border-left: 2mm solid; }
.accepted { color: #00704a; } .conditional { color: #9a5b00; } .rejected { color: #b00000; }
.method, .notes { color: #444; font-size: 9pt; }
figure { margin: 3mm 0; break-inside: avoid; }
svg { width: 100%; height: auto; display: block; font-size: 11px; }
svg .title { font-size: 13px; font-weight: 600; }
svg .number { font-size: 10px; }
svg .grid { stroke: #e2e2e2; } svg .divider { stroke: #aaa; stroke-dasharray: 2 3; }
svg .frame { fill: none; stroke: #777; } svg .line { stroke-width: 1.3; }
.sign { display: flex; gap: 8mm; margin-top: 12mm; break-inside: avoid; }
.sign div { flex: 1; border-top: 0.5pt solid #222; padding-top: 1mm; }
@media print { .verdict, th { print-color-adjust: exact; } }
)";

class C_Html {
 public:
  C_Html(const C_Report& report, C_Language language) : m_Report(report), m_Language(language) {}

  std::string Write() {
    m_Html = "<!DOCTYPE html>\n<html lang=\"" + In({"zh-CN", "en"}) + "\">\n<head>\n<meta charset=\"utf-8\">\n<title>" +
             In(m_Report.title) + "</title>\n<style>" + Style + "</style>\n</head>\n<body>\n";
    m_Html += "<h1>" + In(m_Report.title) + "</h1>\n";
    Write_Header();
    m_Html += "<p class=\"verdict " + std::string(Key(m_Report.Verdict())) + "\">" + In({"结论：", "Verdict: "}) +
              In(Word(m_Report.Verdict())) + "</p>\n";
    Write_Checks();
    for (const C_Table& table : m_Report.tables) Write_Table(table);
    Write_Notes();
    for (const C_Chart& chart : m_Report.charts) {
      m_Html += "<figure>\n" + Draw_Svg(chart, m_Language) + "</figure>\n";
    }
    m_Html += "<h2>" + In({"方法与假设", "Method and assumptions"}) + "</h2>\n<p class=\"method\">" +
              In(m_Report.method) + "</p>\n<div class=\"sign\">";
    for (const C_Text& who : {C_Text{"测量", "Measured by"}, C_Text{"审核", "Checked by"}, C_Text{"日期", "Date"}}) {
      m_Html += "<div>" + In(who) + "</div>";
    }
    return m_Html + "</div>\n</body>\n</html>\n";
  }

 private:
  std::string In(const C_Text& text) const { return Escaped(text.In(m_Language)); }

  void Write_Header() {
    m_Html += "<table class=\"header\">\n";
    for (const auto& [name, text] : m_Report.header) {
      m_Html += "<tr><th>" + In(name) + "</th><td>" + In(text) + "</td></tr>\n";
    }
    m_Html += "</table>\n";
  }
  void Write_Checks() {
    C_Table table{
        {"判定", "Checks"}, {{"项目", "Figure"}, {"结果", "Result"}, {"限值", "Limit"}, {"判定", "Verdict"}}, {}};
    for (const C_Check& check : m_Report.checks) {
      table.rows.push_back({check.name, Same(check.value), check.limit, Word(check.verdict)});
    }
    Write_Table(table);
  }
  void Write_Table(const C_Table& table) {
    m_Html += "<h2>" + In(table.title) + "</h2>\n<table>\n<tr>";
    for (const C_Text& column : table.columns) m_Html += "<th>" + In(column) + "</th>";
    m_Html += "</tr>\n";
    for (const auto& row : table.rows) {
      m_Html += "<tr>";
      for (const C_Text& cell : row) {
        const bool number = !cell.en.empty() && cell.en.find_first_not_of("+-–….0123456789 e") == std::string::npos;
        m_Html += (number ? "<td class=\"number\">" : "<td>") + In(cell) + "</td>";
      }
      m_Html += "</tr>\n";
    }
    m_Html += "</table>\n";
  }
  void Write_Notes() {
    if (m_Report.notes.empty()) return;
    m_Html += "<h2>" + In({"说明", "Notes"}) + "</h2>\n<ul class=\"notes\">\n";
    for (const C_Text& note : m_Report.notes) m_Html += "<li>" + In(note) + "</li>\n";
    m_Html += "</ul>\n";
  }

  const C_Report& m_Report;
  C_Language m_Language;
  std::string m_Html;
};

}  // namespace

std::string Html(const C_Report& report, C_Language language) {
  return C_Html(report, language).Write();
}

}  // namespace study
