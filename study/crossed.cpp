#include "study/crossed.h"

#include <algorithm>
#include <unordered_map>

#include "study/refused.h"

namespace study {

namespace {

// Numbers names, in the order in which they first come up.
class C_Names {
 public:
  size_t Number(const std::string& name) {
    const auto [place, added] = m_Numbers.try_emplace(name, m_Names.size());
    if (added) m_Names.push_back(name);
    return place->second;
  }
  const std::vector<std::string>& All() const { return m_Names; }
  // Names that are all whole numbers come in their order from now on: measured in random order, they would be hard to
  // find in a chart.
  void Sort_Numbers() {
    const auto whole = [](const std::string& name) {
      return name.size() < 10 && name.find_first_not_of("0123456789") == std::string::npos;
    };
    if (!std::all_of(m_Names.begin(), m_Names.end(), whole)) return;
    std::stable_sort(m_Names.begin(), m_Names.end(),
                     [](const std::string& a, const std::string& b) { return std::stoi(a) < std::stoi(b); });
    for (size_t i = 0; i < m_Names.size(); ++i) m_Numbers[m_Names[i]] = i;
  }

 private:
  std::unordered_map<std::string, size_t> m_Numbers;
  std::vector<std::string> m_Names;
};

std::string Cell(const std::string& part, const std::string& appraiser, const std::string& trial) {
  return "part " + part + ", appraiser " + appraiser + ", trial " + trial;
}

std::string In_Line(int line) {
  return line > 0 ? " (line " + std::to_string(line) + ")" : std::string();
}

}  // namespace

C_Crossed Cross(const std::vector<C_Reading>& readings) {
  C_Names parts, appraisers, trials;
  for (const C_Reading& reading : readings) {
    parts.Number(reading.part);
    appraisers.Number(reading.appraiser);
    trials.Number(reading.trial);
  }
  for (C_Names* names : {&parts, &appraisers, &trials}) names->Sort_Numbers();
  const size_t trial_count = trials.All().size(), appraiser_count = appraisers.All().size();
  const size_t cell_count = parts.All().size() * appraiser_count * trial_count;
  // Of more cells than readings one is missing among the first ones, however many there would be.
  std::vector<const C_Reading*> cells(std::min(cell_count, readings.size() + 1));
  for (const C_Reading& reading : readings) {
    const size_t row = parts.Number(reading.part) * appraiser_count + appraisers.Number(reading.appraiser);
    const size_t index = row * trial_count + trials.Number(reading.trial);
    if (index >= cells.size()) continue;
    const C_Reading*& cell = cells[index];
    if (cell != nullptr) {
      throw C_Refused(Cell(reading.part, reading.appraiser, reading.trial) + " is there twice" + In_Line(reading.line) +
                      "; leave one of the two out");
    }
    cell = &reading;
  }
  C_Crossed crossed;
  crossed.parts = parts.All();
  crossed.appraisers = appraisers.All();
  crossed.trials = static_cast<int>(trial_count);
  crossed.values_mm.reserve(cells.size());
  for (size_t i = 0; i < cells.size(); ++i) {
    if (cells[i] == nullptr) {
      const size_t row = i / trial_count;
      throw C_Refused("the study is not balanced: " +
                      Cell(parts.All()[row / appraiser_count], appraisers.All()[row % appraiser_count],
                           trials.All()[i % trial_count]) +
                      " is missing; every appraiser measures every part equally often");
    }
    crossed.values_mm.push_back(cells[i]->value_mm);
  }
  return crossed;
}

}  // namespace study
