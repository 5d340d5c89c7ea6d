#include "study/text.h"

#include <cmath>
#include <cstdio>

namespace study {

namespace {

std::string Print(const char* format, int digits, double value) {
  if (!std::isfinite(value)) return "–";
  char text[64];
  std::snprintf(text, sizeof text, format, digits, value);
  return text;
}

}  // namespace

C_Text Same(const std::string& text) {
  return {text, text};
}

std::string Fixed(double value, int decimals) {
  const std::string text = Print("%.*f", decimals, value);
  // No minus before a value that rounds to zero.
  return text.find_first_not_of("-0.") == std::string::npos && text.front() == '-' ? text.substr(1) : text;
}

std::string Short(double value, int digits) {
  return Print("%.*g", digits, value);
}

std::string Micrometres(double mm) {
  return Fixed(mm * 1000.0, 3);
}

std::string Micrometres(double low_mm, double high_mm) {
  return Micrometres(low_mm) + " … " + Micrometres(high_mm);
}

}  // namespace study
