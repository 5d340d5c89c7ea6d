// What a study tells, as data: checks against limits, tables, charts and notes; and from it the summary at the
// terminal, the result file and the report that is signed.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <utility>
#include <vector>

#include "study/chart.h"
#include "study/text.h"

namespace study {

enum class C_Verdict { Accepted, Conditional, Rejected };

// One figure against its limits.
struct C_Check {
  C_Text name;
  std::string value;
  C_Text limit;  // "≤ 10 %; up to 30 % conditional"
  C_Verdict verdict = C_Verdict::Accepted;
};

struct C_Table {
  C_Text title;
  std::vector<C_Text> columns;
  std::vector<std::vector<C_Text>> rows;
};

struct C_Report {     // NOLINT(bugprone-exception-escape): the moves of the JSON object throw nothing
  std::string study;  // name of the study in the result file: "grr"
  C_Text title;
  C_Text method;                                  // formulas' source and assumptions
  std::vector<std::pair<C_Text, C_Text>> header;  // station, software, force, ...
  std::vector<C_Check> checks;
  std::vector<C_Table> tables;
  std::vector<C_Chart> charts;
  std::vector<C_Text> notes;
  nlohmann::ordered_json numbers;  // the study's own objects in the result file

  // The worst of the checks.
  C_Verdict Verdict() const;
  // Adds the chart, or a note in its place when it has more marks than a page can show.
  void Add_Chart(C_Chart chart);
};

// Judges a figure of which less is better: accepted up to `accepted`, conditional up to `conditional`.
C_Verdict At_Most(double value, double accepted, double conditional);
// The same for a figure of which more is better.
C_Verdict At_Least(double value, double accepted, double conditional);

// Lines for the terminal: the checks with their limits, the notes, the verdict.
std::string Summary(const C_Report& report, C_Language language);

// The result file. setup: what the program was asked for. Its format is told in docs/studies.md.
constexpr int Result_Version = 1;
nlohmann::ordered_json Result(const C_Report& report, const nlohmann::ordered_json& setup);

// One HTML file for A4, without scripts and without references to anything outside.
std::string Html(const C_Report& report, C_Language language);

}  // namespace study
