// A text in the two languages of the reports, and numbers as texts.
#pragma once

#include <string>
#include <vector>

namespace study {

enum class C_Language { Chinese, English };

struct C_Text {
  std::string zh;
  std::string en;

  const std::string& In(C_Language language) const { return language == C_Language::Chinese ? zh : en; }
};

// A text that is the same in both, such as a number or a symbol.
C_Text Same(const std::string& text);

// value with this many decimals; a dash where it is not finite.
std::string Fixed(double value, int decimals);
// value with this many significant digits.
std::string Short(double value, int digits = 6);
// A length in millimetres, in micrometres with three decimals.
std::string Micrometres(double mm);
// The interval "low ... high" of two lengths in millimetres, in micrometres.
std::string Micrometres(double low_mm, double high_mm);

}  // namespace study
