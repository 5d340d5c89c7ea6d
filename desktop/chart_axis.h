// One axis of a chart: which values it shows, and where on the screen. Plain data, no thread of its own.
#pragma once

#include <QString>
#include <vector>

namespace orsanta {

struct C_Chart_Axis {
  double low = 0.0;    // value at the first pixel
  double high = 1.0;   // value at the last pixel; above low
  double first = 0.0;  // pixel of low
  double last = 1.0;   // pixel of high

  double To_Pixel(double value) const { return first + (value - low) / (high - low) * (last - first); }
  double To_Value(double pixel) const { return low + (pixel - first) / (last - first) * (high - low); }
  // Narrows (factor below 1) or widens the span around the value that stands at `pixel`.
  void Zoom(double pixel, double factor);
  void Shift(double pixels);
  // Shows low_value to high_value with a share of the span left free at either side.
  void Show(double low_value, double high_value, double margin);
};

struct C_Chart_Tick {
  double value = 0.0;
  QString label;
};

// Round values over the axis, at most `most` of them: 1, 2 or 5 times a power of ten apart. whole: not closer than 1.
std::vector<C_Chart_Tick> Make_Ticks(const C_Chart_Axis& axis, int most, bool whole);

// A value with four decimals, or with more where the axis is so fine that four would not tell neighbours apart.
QString Value_Text(double value, double span);

}  // namespace orsanta
