#include "desktop/chart_axis.h"

#include <algorithm>
#include <cmath>

namespace orsanta {

namespace {
// Below this share of the values' size a double has too few steps left to draw.
constexpr double Least_Relative_Span = 1e-12;
constexpr double Greatest_Value = 1e300;
}  // namespace

void C_Chart_Axis::Zoom(double pixel, double factor) {
  const double center = To_Value(pixel);
  const double new_low = center - (center - low) * factor;
  const double new_high = center + (high - center) * factor;
  const double size = std::max({std::abs(new_low), std::abs(new_high), 1e-9});
  if (!(new_high - new_low > Least_Relative_Span * size) || size > Greatest_Value) return;
  low = new_low;
  high = new_high;
}

void C_Chart_Axis::Shift(double pixels) {
  const double step = pixels / (last - first) * (high - low);
  low += step;
  high += step;
}

void C_Chart_Axis::Show(double low_value, double high_value, double margin) {
  double span = high_value - low_value;
  const double size = std::max({std::abs(low_value), std::abs(high_value), 1e-9});
  if (!(span > Least_Relative_Span * size)) span = std::max(size * 1e-3, 1e-3);
  const double center = low_value + (high_value - low_value) / 2;
  low = center - span * (0.5 + margin);
  high = center + span * (0.5 + margin);
}

std::vector<C_Chart_Tick> Make_Ticks(const C_Chart_Axis& axis, int most, bool whole) {
  std::vector<C_Chart_Tick> ticks;
  const double span = axis.high - axis.low;
  if (!(span > 0.0) || !std::isfinite(span) || most < 1) return ticks;
  const double raw = span / most;
  double step = std::pow(10.0, std::floor(std::log10(raw)));
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    if (step * factor >= raw) {
      step *= factor;
      break;
    }
  }
  if (whole) step = std::max(step, 1.0);
  const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(step) + 1e-9)), 0, 9);
  const double first = std::ceil(axis.low / step) * step;
  for (int i = 0; i <= most; ++i) {
    double value = first + i * step;
    if (value > axis.high) break;
    if (std::abs(value) < step * 1e-6) value = 0.0;
    ticks.push_back({value, QString::number(value, 'f', decimals)});
  }
  return ticks;
}

QString Value_Text(double value, double span) {
  const int decimals = span > 0.0 ? std::clamp(static_cast<int>(std::ceil(-std::log10(span))) + 2, 4, 9) : 4;
  return QString::number(value, 'f', decimals);
}

}  // namespace orsanta
