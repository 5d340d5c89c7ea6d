// CKestrunePlot: a chart in a window of its own, drawn by the front. Any thread may plot; the window lives until the
// operator closes it or the object ends.
#pragma once

#include <string>

#include "support/base/array.h"
#include "support/time/shared.h"
#include "support/time/uncopied.h"

namespace orsanta {

struct CKestruneGraph {
  enum LineStyle { Line_None = 0, Line_Solid = 1 };
};

class CKestrunePlot : private C_Uncopied {
 public:
  CKestrunePlot();
  ~CKestrunePlot();

  // 1: the axes follow the data at each new plot. 0: they stay as the first plot set them.
  void SetDynamicAdjustRange(int follow) { m_Axes_Follow = follow; }
  // Non-zero while the chart's window is open.
  int BeImageWindowCreate();
  // Brings the window, where it is open, above the others.
  void Raise();
  // Opens the window if it is not open, and draws the line through the points x[i], y[i].
  // mode: 0. width, height: pixels of the window at opening. note: a text under the drawing, empty for none. opens:
  // false leaves a window closed that the operator has closed. The chart is about the station of the thread's present
  // subject. Returns 1, or 0 where no window is open.
  int Plot(const std::wstring& title, const CMyArray<double>& x, const CMyArray<double>& y, int mode, int width,
           int height, CKestruneGraph::LineStyle style, const std::wstring& note, bool opens = true);

 private:
  unsigned m_Number;
  Shared<int> m_Axes_Follow{1};
};

}  // namespace orsanta
