#include "study/csv.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>

#include "study/refused.h"

namespace study {

namespace {

constexpr int Told_Lines = 20;  // bad lines that are told one by one

std::string Trimmed(const std::string& text) {
  const size_t begin = text.find_first_not_of(" \t\r");
  return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(" \t\r") + 1 - begin);
}

std::string Lower_Case(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// The fields of a line. Marks around a field go, doubled marks in it become one.
std::vector<std::string> Split(const std::string& line, char separator) {
  std::vector<std::string> fields(1);
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"' && quoted && i + 1 < line.size() && line[i + 1] == '"') {
      fields.back() += line[i++];
    } else if (line[i] == '"') {
      quoted = !quoted;
    } else if (line[i] == separator && !quoted) {
      fields.emplace_back();
    } else {
      fields.back() += line[i];
    }
  }
  for (std::string& field : fields) field = Trimmed(field);
  return fields;
}

std::optional<double> Number(std::string text) {
  if (std::count(text.begin(), text.end(), ',') == 1 && text.find('.') == std::string::npos) {
    text[text.find(',')] = '.';
  }
  const char* begin = text.data() + (text.rfind('+', 0) == 0 ? 1 : 0);
  const char* end = text.data() + text.size();
  double value = 0.0;
  const auto [stop, error] = std::from_chars(begin, end, value);
  if (error != std::errc() || stop != end || !std::isfinite(value)) return std::nullopt;
  return value;
}

// The lines of a text one after the other, and what is wrong with them.
class C_Lines {
 public:
  explicit C_Lines(const std::string& text) : m_Text(text) {
    if (m_Text.rfind("\xEF\xBB\xBF", 0) == 0) m_Next = 3;
    std::string line;
    if (!Next_Line(line)) throw C_Refused("the file is empty; its first line names the columns");
    m_Separator = line.find(';') != std::string::npos ? ';' : line.find('\t') != std::string::npos ? '\t' : ',';
    for (const std::string& name : Split(line, m_Separator)) m_Columns.push_back(Lower_Case(name));
  }

  bool Has(const std::string& name) const { return Find(name) != m_Columns.end(); }

  // Number of the column; refuses a text without it, or with two of them.
  size_t Column(const std::string& name) const {
    if (!Has(name)) {
      std::string found;
      for (const std::string& one : m_Columns) found += (found.empty() ? "\"" : ", \"") + one + "\"";
      throw C_Refused("the first line names no column \"" + name + "\", only " + found);
    }
    if (std::count(m_Columns.begin(), m_Columns.end(), name) > 1) {
      throw C_Refused("the first line names the column \"" + name + "\" twice; leave one out");
    }
    return static_cast<size_t>(Find(name) - m_Columns.begin());
  }

  // Goes to the next line that has as many fields as there are columns. False at the end.
  bool Next() {
    std::string line;
    while (Next_Line(line)) {
      m_Fields = Split(line, m_Separator);
      if (m_Fields.size() == m_Columns.size()) return true;
      Tell(std::to_string(m_Fields.size()) + " fields, not " + std::to_string(m_Columns.size()) +
           (m_Separator == ',' ? "; with decimal commas separate the columns by semicolons" : ""));
    }
    return false;
  }
  int Number_Of_Line() const { return m_Number; }

  // The field of the present line; an empty one is told and leaves `good` false.
  std::string Name(size_t column, bool& good) {
    if (m_Fields[column].empty()) {
      Tell("the column \"" + m_Columns[column] + "\" is empty");
      good = false;
    }
    return m_Fields[column];
  }
  double Value(size_t column, bool& good) {
    const std::optional<double> value = Number(m_Fields[column]);
    if (!value) {
      Tell("the column \"" + m_Columns[column] + "\" holds \"" + m_Fields[column] + "\", which is no number");
      good = false;
    }
    return value.value_or(0.0);
  }

  // Refuses what was told.
  void Close(bool any) const {
    if (m_Bad > Told_Lines) throw C_Refused(m_Told + "\nand " + std::to_string(m_Bad - Told_Lines) + " more");
    if (m_Bad > 0) throw C_Refused(m_Told);
    if (!any) throw C_Refused("the file holds no values, only the names of the columns");
  }

 private:
  std::vector<std::string>::const_iterator Find(const std::string& name) const {
    return std::find(m_Columns.begin(), m_Columns.end(), name);
  }
  bool Next_Line(std::string& line) {
    while (m_Next < m_Text.size()) {
      const size_t end = std::min(m_Text.find('\n', m_Next), m_Text.size());
      line = m_Text.substr(m_Next, end - m_Next);
      m_Next = end + 1;
      ++m_Number;
      if (!Trimmed(line).empty()) return true;
    }
    return false;
  }
  void Tell(const std::string& what) {
    if (++m_Bad > Told_Lines) return;
    m_Told += (m_Told.empty() ? "line " : "\nline ") + std::to_string(m_Number) + ": " + what;
  }

  const std::string& m_Text;
  size_t m_Next = 0;
  int m_Number = 0;
  char m_Separator = ',';
  std::vector<std::string> m_Columns, m_Fields;
  int m_Bad = 0;
  std::string m_Told;
};

}  // namespace

std::vector<C_Reading> Read_Crossed(const std::string& text) {
  C_Lines lines(text);
  const size_t part = lines.Column("part"), appraiser = lines.Column("appraiser"), trial = lines.Column("trial");
  const size_t value = lines.Column("value");
  std::vector<C_Reading> readings;
  while (lines.Next()) {
    bool good = true;
    const C_Reading reading{lines.Name(part, good), lines.Name(appraiser, good), lines.Name(trial, good),
                            lines.Value(value, good), lines.Number_Of_Line()};
    if (good) readings.push_back(reading);
  }
  lines.Close(!readings.empty());
  return readings;
}

std::vector<C_Reference_Values> Read_References(const std::string& text, std::optional<double> reference_mm) {
  C_Lines lines(text);
  const bool named = lines.Has("reference") || !reference_mm;
  const size_t reference = named ? lines.Column("reference") : 0;
  const size_t value = lines.Column("value");
  std::vector<C_Reference_Values> references;
  while (lines.Next()) {
    bool good = true;
    const double size = named ? lines.Value(reference, good) : *reference_mm;
    const double measured = lines.Value(value, good);
    if (!good) continue;
    auto place = std::find_if(references.begin(), references.end(),
                              [size](const C_Reference_Values& one) { return one.reference_mm == size; });
    if (place == references.end()) place = references.insert(place, {size, {}});
    place->values_mm.push_back(measured);
  }
  lines.Close(!references.empty());
  return references;
}

std::vector<C_Force_Reading> Read_Forces(const std::string& text) {
  C_Lines lines(text);
  const size_t height = lines.Column("height"), set = lines.Column("set"), true_force = lines.Column("true");
  std::vector<C_Force_Reading> readings;
  while (lines.Next()) {
    bool good = true;
    const C_Force_Reading reading{lines.Value(height, good), lines.Value(set, good), lines.Value(true_force, good)};
    if (good) readings.push_back(reading);
  }
  lines.Close(!readings.empty());
  return readings;
}

std::string Csv_Line(const std::vector<std::string>& fields) {
  std::string line;
  for (size_t i = 0; i < fields.size(); ++i) {
    if (i > 0) line += ',';
    if (fields[i].find_first_of(",;\"\n") == std::string::npos) {
      line += fields[i];
      continue;
    }
    line += '"';
    for (const char c : fields[i]) line += c == '"' ? std::string("\"\"") : std::string(1, c);
    line += '"';
  }
  return line;
}

}  // namespace study
