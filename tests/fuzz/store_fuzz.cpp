// Feeds the store's reader with arbitrary bytes. What it takes must survive being written and read again.
#include "fuzz/fuzz.h"
#include "support/store/store_parser.h"

void Fuzz(std::string input) {
  using namespace orsanta;
  C_Store_Content content, again, merged;
  std::vector<C_Store_Fault> faults;
  const C_Store_State state = Parse_Store(input, content, faults);
  Demand(faults.empty() == (state == C_Store_State::Whole), "the faults do not go with the state");
  for (const C_Store_Fault& fault : faults) Demand(fault.line >= 1 && !fault.text.empty(), "no line or no reason");
  Demand(state != C_Store_State::Broken || content.entries.empty(), "takes entries of a broken file");
  const std::string text = Format_Store(content);
  Demand(Parse_Store(text, again, faults) == C_Store_State::Whole, "refuses what it has written itself");
  Demand(Format_Store(again) == text, "writes another text the second time");
  Keep_Unknown_Entries(content, merged);
  Demand(Format_Store(merged) == text, "loses entries that it is to keep");
}
