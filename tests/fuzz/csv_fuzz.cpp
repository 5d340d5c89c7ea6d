// Reads arbitrary text as measured values. It is refused, or its readings read back from the lines that are
// written of them.
#include "fuzz/fuzz.h"
#include "study/csv.h"
#include "study/refused.h"

using namespace study;

static std::string Written(const std::vector<C_Reading>& readings) {
  std::string lines = "part,appraiser,trial,value\n";
  for (const auto& one : readings) lines += Csv_Line({one.part, one.appraiser, one.trial, "1.5"}) + "\n";
  return lines;
}

void Fuzz(std::string input) {
  static const std::string heads[] = {Written({}), "reference\tvalue\n", "height;set;true\n", ""};
  const std::string text = heads[input.size() % std::size(heads)] + input;
  std::string lines = Written({}), again = lines;
  const std::function<void()> reads[] = {[&] { Read_References(text); }, [&] { Read_Forces(text); },
                                         [&] { lines = Written(Read_Crossed(text)); },
                                         [&] { again = Written(Read_Crossed(lines)); }};
  for (const auto& read : reads) {
    try {
      read();
    } catch (const C_Refused&) {
    }
  }
  orsanta::Demand(again == lines, "does not read what it has written");
}
