#include "study/reports.h"

namespace study {

C_Text Limit_At_Most(double accepted, double conditional, const std::string& unit) {
  const std::string base = "≤ " + Short(accepted) + unit, reach = Short(conditional) + unit;
  if (conditional <= accepted) return Same(base);
  return {base + "；到 " + reach + " 有条件", base + "; up to " + reach + " conditional"};
}

C_Text Limit_At_Least(double accepted, double conditional) {
  const std::string base = "≥ " + Short(accepted), reach = Short(conditional);
  if (conditional >= accepted) return Same(base);
  return {base + "；到 " + reach + " 有条件", base + "; down to " + reach + " conditional"};
}

}  // namespace study
