// A chart of a report as data, and the chart as SVG.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "study/text.h"

namespace study {

struct C_Series {
  enum class Kind {
    Points,
    Linked_Points,
    Line,
    Limit,  // a dashed line
    Band,   // the area between y and high
    Bars,   // from 0 to y
  };
  Kind kind = Kind::Points;
  C_Text name;  // in the legend; empty for none
  int color = 0;
  std::vector<double> x, y;
  std::vector<double> high = {};  // of a band
};

struct C_Chart {
  C_Text title, x_name, y_name;
  std::vector<C_Series> series;
  std::vector<std::pair<double, std::string>> x_names = {};  // in place of numbers under the chart
  std::vector<double> dividers = {};                         // places of upright lines

  // A horizontal line from the left end of the chart to its right end, at y.
  void Add_Limit(const C_Text& name, double y, int color = 7);
  size_t Marks() const;  // values that are drawn
};

// The chart as one <svg> element, with texts in the language. Nothing in it refers to anything outside.
std::string Draw_Svg(const C_Chart& chart, C_Language language);

// The text with &, <, > and quotation marks made safe for XML and HTML.
std::string Escaped(const std::string& text);

}  // namespace study
