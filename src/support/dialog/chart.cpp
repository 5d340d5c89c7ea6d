#include "support/dialog/chart.h"

#include <algorithm>
#include <atomic>

#include "support/dialog/front.h"
#include "support/dialog/subject.h"

namespace orsanta {

namespace {

std::atomic<unsigned> the_last_number{0};

}  // namespace

CKestrunePlot::CKestrunePlot() : m_Number(++the_last_number) {}

CKestrunePlot::~CKestrunePlot() {
  Front().Close_Chart(m_Number);
}

int CKestrunePlot::BeImageWindowCreate() {
  return Front().Is_Chart_Open(m_Number) ? 1 : 0;
}

void CKestrunePlot::Raise() {
  Front().Raise_Chart(m_Number);
}

int CKestrunePlot::Plot(const std::wstring& title, const CMyArray<double>& x, const CMyArray<double>& y, int /*mode*/,
                        int width, int height, CKestruneGraph::LineStyle style, const std::wstring& note, bool opens) {
  C_Chart_Model model;
  model.title = title;
  model.note = note;
  model.station = Present_Subject().station;
  model.opens = opens;
  const int count = std::min(x.GetSize(), y.GetSize());
  model.x.assign(x.begin(), x.begin() + count);
  model.y.assign(y.begin(), y.begin() + count);
  model.width = width;
  model.height = height;
  model.axes_follow = m_Axes_Follow != 0;
  model.joined = style == CKestruneGraph::Line_Solid;
  Front().Draw_Chart(m_Number, model);
  return BeImageWindowCreate();
}

}  // namespace orsanta
