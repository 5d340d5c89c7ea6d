// The arithmetic of a chart: what is left of a long line, and where the ticks stand.
#include "desktop/chart_line.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <random>

namespace orsanta {

namespace {

// The vertical extent of a line in every pixel column, which is what the eye sees of it.
std::map<double, std::pair<double, double>> Extents(const QPolygonF& line) {
  std::map<double, std::pair<double, double>> extents;
  for (const QPointF& point : line) {
    auto& [least, greatest] = extents.try_emplace(std::floor(point.x()), point.y(), point.y()).first->second;
    least = std::min(least, point.y());
    greatest = std::max(greatest, point.y());
  }
  return extents;
}

TEST(Chart_Line, Thinning_Changes_No_Pixel_Column) {
  std::mt19937 random(3);
  std::normal_distribution<double> noise(0.0, 1.0);
  std::vector<double> x, y;
  QPolygonF whole;
  const C_Chart_Axis x_axis{0.0, 50000.0, 0.0, 500.0}, y_axis{-10.0, 10.0, 400.0, 0.0};
  for (int i = 0; i < 50000; ++i) {
    x.push_back(i);
    y.push_back(noise(random) + (i == 31234 ? 8.0 : 0.0));  // one outlier, which must not get lost
    whole.append(QPointF(x_axis.To_Pixel(x.back()), y_axis.To_Pixel(y.back())));
  }
  const QPolygonF line = Make_Line(x, y, x_axis, y_axis);
  EXPECT_LE(line.size(), 4 * 501);
  EXPECT_EQ(Extents(line), Extents(whole));
  for (int i = 1; i < line.size(); ++i) ASSERT_GE(line[i].x(), line[i - 1].x());
  EXPECT_EQ(line.back(), whole.back());

  // Zoomed in to a few points: all of them, and one beyond each border, so that the line leaves the picture.
  const C_Chart_Axis close_up{99.5, 104.5, 0.0, 500.0};
  EXPECT_EQ(Make_Line(x, y, close_up, y_axis).size(), 5 + 2);

  const double none = std::numeric_limits<double>::quiet_NaN();
  EXPECT_EQ(Make_Line({0, 1, 2, 3}, {1, none, 3, none}, {0, 3, 0, 100}, y_axis).size(), 2);
  EXPECT_TRUE(Make_Line({}, {}, close_up, y_axis).isEmpty());
}

TEST(Chart_Axis, Ticks_Are_Round_And_Zoom_Keeps_Its_Center) {
  const auto labels = [](const C_Chart_Axis& axis, int most, bool whole) {
    QString text;
    for (const C_Chart_Tick& tick : Make_Ticks(axis, most, whole)) text += tick.label + " ";
    return text;
  };
  EXPECT_EQ(labels({2.34412, 2.34562, 300, 0}, 6, false), "2.3445 2.3450 2.3455 ");
  EXPECT_EQ(labels({-0.3, 2.2, 0, 300}, 8, true), "0 1 2 ") << "measurements have whole numbers";

  C_Chart_Axis axis{0.0, 10.0, 100.0, 200.0};
  axis.Zoom(130.0, 0.5);
  EXPECT_NEAR(axis.To_Value(130.0), 3.0, 1e-12);
  EXPECT_NEAR(axis.high - axis.low, 5.0, 1e-12);
  for (int i = 0; i < 500; ++i) axis.Zoom(130.0, 0.5);  // ends before the numbers do
  EXPECT_GT(axis.high, axis.low);
  EXPECT_FALSE(Make_Ticks(axis, 6, false).empty());
  for (int i = 0; i < 5000; ++i) axis.Zoom(130.0, 2.0);
  EXPECT_TRUE(std::isfinite(axis.high - axis.low));
  axis.Show(5.0, 5.0, 0.1);  // all values alike
  EXPECT_GT(axis.high, axis.low);
  EXPECT_EQ(Value_Text(2.34551234, 0.0015), "2.34551");
  EXPECT_EQ(Value_Text(523.5, 100.0), "523.5000");
}

}  // namespace

}  // namespace orsanta
