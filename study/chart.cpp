#include "study/chart.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace study {

namespace {

// The drawing is this large, in SVG units; the plot lies inside the margins.
constexpr double Width = 720.0, Height = 270.0;
constexpr double Left = 74.0, Right = 14.0, Top = 40.0, Bottom = 44.0;
constexpr double Bar_Share = 0.7;    // of the room of 1 that each place has
constexpr size_t Longest_Name = 10;  // characters of a name under the chart
constexpr size_t Most_Names = 24;

// Can be told apart by the colour-blind, and in grey (Okabe and Ito). The last is the colour of limits.
constexpr std::array Colors = {"#0072b2", "#d55e00", "#009e73", "#cc79a7", "#56b4e9", "#e69f00", "#555555", "#c00000"};

std::string Color(int number) {
  return Colors[static_cast<size_t>(number) % Colors.size()];
}

std::string Coordinate(double value) {
  return Fixed(value, 1);
}

struct C_Span {
  double low = 0.0;
  double high = 1.0;

  void Take(double value) {
    if (!std::isfinite(value)) return;
    low = m_Empty ? value : std::min(low, value);
    high = m_Empty ? value : std::max(high, value);
    m_Empty = false;
  }
  // Room at both ends, so that no mark lies on the frame.
  void Widen(double share) {
    const double room = high > low ? share * (high - low) : std::max(std::abs(high), 1.0) * share;
    low -= room;
    high += room;
  }

 private:
  bool m_Empty = true;
};

// The distance of some five marks on an axis: 1, 2 or 5 times a power of ten.
double Step(const C_Span& span) {
  const double rough = (span.high - span.low) / 5.0;
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= rough) return factor * power;
  }
  return 10.0 * power;
}

// The first characters of a UTF-8 text.
std::string Cut(const std::string& text) {
  size_t characters = 0, end = 0;
  while (end < text.size() && characters <= Longest_Name) {
    ++end;
    while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) ++end;
    ++characters;
  }
  return characters <= Longest_Name ? text : text.substr(0, end) + "…";
}

class C_Drawing {
 public:
  C_Drawing(const C_Chart& chart, C_Language language) : m_Chart(chart), m_Language(language) { Measure(); }

  std::string Draw() {
    m_Svg = "<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + Coordinate(Width) + " " + Coordinate(Height) +
            "\" role=\"img\" aria-label=\"" + Escaped(m_Chart.title.In(m_Language)) + "\">\n";
    Draw_Axes();
    // Bands and bars lie under everything else.
    for (const C_Series& series : m_Chart.series) {
      if (series.kind == C_Series::Kind::Band) Draw_Band(series);
      if (series.kind == C_Series::Kind::Bars) Draw_Bars(series);
    }
    for (const C_Series& series : m_Chart.series) Draw_Marks(series);
    Draw_Legend();
    return m_Svg + "</svg>\n";
  }

 private:
  void Measure() {
    for (const C_Series& series : m_Chart.series) {
      for (const double x : series.x) m_X.Take(x);
      for (const double y : series.y) m_Y.Take(y);
      for (const double y : series.high) m_Y.Take(y);
      if (series.kind == C_Series::Kind::Bars) {
        m_Y.Take(0.0);
        ++m_Bars;
      }
    }
    for (const auto& [x, name] : m_Chart.x_names) m_X.Take(x);
    if (m_Bars > 0) {
      m_X.low -= 0.5;
      m_X.high += 0.5;
    } else {
      m_X.Widen(0.03);
    }
    m_Y.Widen(0.08);
  }
  double X(double x) const { return Left + (x - m_X.low) / (m_X.high - m_X.low) * (Width - Left - Right); }
  double Y(double y) const { return Height - Bottom - (y - m_Y.low) / (m_Y.high - m_Y.low) * (Height - Top - Bottom); }

  void Line(double x1, double y1, double x2, double y2, const std::string& look) {
    m_Svg += "<line x1=\"" + Coordinate(x1) + "\" y1=\"" + Coordinate(y1) + "\" x2=\"" + Coordinate(x2) + "\" y2=\"" +
             Coordinate(y2) + "\" " + look + "/>\n";
  }
  void Text(double x, double y, const std::string& look, const std::string& text) {
    m_Svg +=
        "<text x=\"" + Coordinate(x) + "\" y=\"" + Coordinate(y) + "\" " + look + ">" + Escaped(text) + "</text>\n";
  }

  void Draw_Axes() {
    Text(Left, 16.0, "class=\"title\"", m_Chart.title.In(m_Language));
    const double step = Step(m_Y);
    for (double y = std::ceil(m_Y.low / step) * step; y <= m_Y.high; y += step) {
      Line(Left, Y(y), Width - Right, Y(y), "class=\"grid\"");
      Text(Left - 6.0, Y(y) + 4.0, "class=\"number\" text-anchor=\"end\"", Tick(y, step));
    }
    for (const double x : m_Chart.dividers) Line(X(x), Top, X(x), Height - Bottom, "class=\"divider\"");
    if (m_Chart.x_names.empty()) {
      const double x_step = Step(m_X);
      for (double x = std::ceil(m_X.low / x_step) * x_step; x <= m_X.high; x += x_step) Name(x, Tick(x, x_step));
    }
    const size_t every = 1 + m_Chart.x_names.size() / Most_Names;
    for (size_t i = 0; i < m_Chart.x_names.size(); i += every)
      Name(m_Chart.x_names[i].first, m_Chart.x_names[i].second);
    Text((Left + Width - Right) / 2.0, Height - 8.0, "text-anchor=\"middle\"", m_Chart.x_name.In(m_Language));
    const std::string middle = Coordinate((Top + Height - Bottom) / 2.0);
    Text(14.0, (Top + Height - Bottom) / 2.0, "text-anchor=\"middle\" transform=\"rotate(-90 14 " + middle + ")\"",
         m_Chart.y_name.In(m_Language));
    m_Svg += "<rect class=\"frame\" x=\"" + Coordinate(Left) + "\" y=\"" + Coordinate(Top) + "\" width=\"" +
             Coordinate(Width - Left - Right) + "\" height=\"" + Coordinate(Height - Top - Bottom) + "\"/>\n";
  }
  static std::string Tick(double value, double step) {
    const double decimals = std::max(0.0, -std::floor(std::log10(step) + 1e-9));
    return decimals > 8.0 ? Short(value, 3) : Fixed(value, static_cast<int>(decimals));
  }
  void Name(double x, const std::string& name) {
    Text(X(x), Height - Bottom + 15.0, "class=\"number\" text-anchor=\"middle\"", Cut(name));
  }

  std::string Points_Of(const std::vector<double>& x, const std::vector<double>& y) const {
    std::string points;
    for (size_t i = 0; i < x.size(); ++i) points += Coordinate(X(x[i])) + "," + Coordinate(Y(y[i])) + " ";
    return points;
  }
  void Draw_Band(const C_Series& series) {
    std::vector<double> x = series.x, y = series.y;
    x.insert(x.end(), series.x.rbegin(), series.x.rend());
    y.insert(y.end(), series.high.rbegin(), series.high.rend());
    m_Svg += "<polygon class=\"band\" fill=\"" + Color(series.color) + "\" fill-opacity=\"0.18\" points=\"" +
             Points_Of(x, y) + "\"/>\n";
  }
  // Several bar series stand side by side.
  void Draw_Bars(const C_Series& series) {
    const double width = Bar_Share / m_Bars;
    for (size_t i = 0; i < series.x.size(); ++i) {
      const double left = X(series.x[i] - Bar_Share / 2.0 + m_Bars_Drawn * width);
      const double right = X(series.x[i] - Bar_Share / 2.0 + (m_Bars_Drawn + 1) * width);
      m_Svg += "<rect class=\"bar\" fill=\"" + Color(series.color) + "\" x=\"" + Coordinate(left) + "\" y=\"" +
               Coordinate(Y(series.y[i])) + "\" width=\"" + Coordinate(right - left) + "\" height=\"" +
               Coordinate(Y(0.0) - Y(series.y[i])) + "\"/>\n";
      Text((left + right) / 2.0, Y(series.y[i]) - 3.0, "class=\"number\" text-anchor=\"middle\"",
           Short(series.y[i], 3));
    }
    ++m_Bars_Drawn;
  }
  void Draw_Marks(const C_Series& series) {
    using Kind = C_Series::Kind;
    if (series.kind == Kind::Line || series.kind == Kind::Linked_Points || series.kind == Kind::Limit) {
      const std::string dashes = series.kind == Kind::Limit ? " stroke-dasharray=\"6 4\"" : "";
      m_Svg += "<polyline class=\"line\" fill=\"none\" stroke=\"" + Color(series.color) + "\"" + dashes + " points=\"" +
               Points_Of(series.x, series.y) + "\"/>\n";
    }
    if (series.kind != Kind::Points && series.kind != Kind::Linked_Points) return;
    for (size_t i = 0; i < series.x.size(); ++i) {
      m_Svg += "<circle class=\"value\" r=\"2.4\" fill=\"" + Color(series.color) + "\" cx=\"" +
               Coordinate(X(series.x[i])) + "\" cy=\"" + Coordinate(Y(series.y[i])) + "\"/>\n";
    }
  }
  // One row over the plot.
  void Draw_Legend() {
    std::vector<const C_Series*> named;
    for (const C_Series& series : m_Chart.series) {
      if (!series.name.en.empty()) named.push_back(&series);
    }
    if (named.empty()) return;
    const double room = (Width - Left - Right) / static_cast<double>(std::max<size_t>(named.size(), 4));
    for (size_t i = 0; i < named.size(); ++i) {
      const double x = Left + room * static_cast<double>(i);
      m_Svg += "<rect fill=\"" + Color(named[i]->color) + "\" x=\"" + Coordinate(x) +
               "\" y=\"24\" width=\"10\" height=\"8\"/>\n";
      Text(x + 14.0, 32.0, "class=\"number\"", Cut_To(named[i]->name.In(m_Language), room - 16.0));
    }
  }
  // A legend of many appraisers has little room for each.
  static std::string Cut_To(const std::string& text, double room) { return room < 60.0 ? Cut(text) : text; }

  const C_Chart& m_Chart;
  C_Language m_Language;
  C_Span m_X, m_Y;
  int m_Bars = 0, m_Bars_Drawn = 0;  // series of bars
  std::string m_Svg;
};

}  // namespace

void C_Chart::Add_Limit(const C_Text& name, double y, int color) {
  C_Span span;
  for (const C_Series& one : series) {
    for (const double x : one.x) span.Take(x);
  }
  series.push_back({C_Series::Kind::Limit, name, color, {span.low, span.high}, {y, y}});
}

size_t C_Chart::Marks() const {
  size_t marks = 0;
  for (const C_Series& one : series) marks += one.x.size();
  return marks;
}

std::string Draw_Svg(const C_Chart& chart, C_Language language) {
  return C_Drawing(chart, language).Draw();
}

std::string Escaped(const std::string& text) {
  std::string safe;
  for (const char c : text) {
    switch (c) {
      case '&':
        safe += "&amp;";
        break;
      case '<':
        safe += "&lt;";
        break;
      case '>':
        safe += "&gt;";
        break;
      case '"':
        safe += "&quot;";
        break;
      default:
        safe += static_cast<unsigned char>(c) < 0x20 ? ' ' : c;
    }
  }
  return safe;
}

}  // namespace study
