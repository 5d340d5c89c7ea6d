#include "desktop/chart_line.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace orsanta {

namespace {

// The points of one pixel column that matter for its look, as indices.
class C_Pixel_Column {
 public:
  explicit C_Pixel_Column(size_t i) : m_First(i), m_Lowest(i), m_Highest(i), m_Last(i) {}

  void Add(const std::vector<double>& y, size_t i) {
    if (y[i] < y[m_Lowest]) m_Lowest = i;
    if (y[i] > y[m_Highest]) m_Highest = i;
    m_Last = i;
  }

  template <class Draw>
  void For_Each(const Draw& draw) const {
    std::array<size_t, 4> order = {m_First, m_Lowest, m_Highest, m_Last};
    std::sort(order.begin(), order.end());
    for (size_t k = 0; k < order.size(); ++k) {
      if (k == 0 || order[k] != order[k - 1]) draw(order[k]);
    }
  }

 private:
  size_t m_First, m_Lowest, m_Highest, m_Last;
};

}  // namespace

C_Point_Range Points_In(const std::vector<double>& x, const C_Chart_Axis& axis) {
  const auto low = std::lower_bound(x.begin(), x.end(), axis.low);
  const auto high = std::upper_bound(low, x.end(), axis.high);
  C_Point_Range range{static_cast<size_t>(low - x.begin()), static_cast<size_t>(high - x.begin())};
  if (range.first > 0) --range.first;
  if (range.last < x.size()) ++range.last;
  return range;
}

QPolygonF Make_Line(const std::vector<double>& x, const std::vector<double>& y, const C_Chart_Axis& x_axis,
                    const C_Chart_Axis& y_axis) {
  QPolygonF line;
  const C_Point_Range range = std::is_sorted(x.begin(), x.end()) ? Points_In(x, x_axis) : C_Point_Range{0, x.size()};
  const auto draw = [&](size_t i) { line.append(QPointF(x_axis.To_Pixel(x[i]), y_axis.To_Pixel(y[i]))); };

  size_t i = range.first;
  while (i < range.last) {
    if (!std::isfinite(x[i]) || !std::isfinite(y[i])) {
      ++i;
      continue;
    }
    const double pixel = std::floor(x_axis.To_Pixel(x[i]));
    C_Pixel_Column column(i);
    for (++i; i < range.last; ++i) {
      if (!std::isfinite(x[i]) || !std::isfinite(y[i])) continue;
      if (std::floor(x_axis.To_Pixel(x[i])) != pixel) break;
      column.Add(y, i);
    }
    column.For_Each(draw);
  }
  return line;
}

}  // namespace orsanta
