// Types arbitrary text into the entries of a dialog. What is taken for a number must show and read back as that number.
#include <cmath>

#include "fuzz/fuzz.h"
#include "support/dialog/dialog_entry.h"
#include "support/system/wide_string.h"

void Fuzz(std::string input) {
  using namespace orsanta;
  const std::wstring text = From_Utf8(input);
  double value = -1.5, shown = 0.0;
  int whole = 7;
  if (!Read_Typed(text, value)) {
    Demand(value == -1.5, "changes the value of a refused entry");
  } else {
    Demand(std::isfinite(value) && Read_Typed(Number_Text(value, 6), shown), "does not read what it shows");
    Demand(std::abs(shown - value) <= 1e-6 + std::abs(value) * 1e-15, "shows another number");
  }
  Demand(Read_Typed(text, whole) ? value == whole : whole == 7, "takes an integer for another number");
}
