// The line of a chart, thinned out to what the screen can show.
#pragma once

#include <QPolygonF>
#include <vector>

#include "desktop/chart_axis.h"

namespace orsanta {

// The points i with x[i] within the axis, one neighbour beyond either end included, as a half-open range.
struct C_Point_Range {
  size_t first = 0;
  size_t last = 0;
};
// x must ascend.
C_Point_Range Points_In(const std::vector<double>& x, const C_Chart_Axis& axis);

// The line through the points in pixels. Where many points fall into one column of pixels only the first, the lowest,
// the highest and the last of them are kept, in their order: the drawing is the same to the pixel, and its cost depends
// on the width of the window and no longer on the number of points. Points that are no number interrupt nothing; they
// are left out.
QPolygonF Make_Line(const std::vector<double>& x, const std::vector<double>& y, const C_Chart_Axis& x_axis,
                    const C_Chart_Axis& y_axis);

}  // namespace orsanta
