#include "desktop/chart_view.h"

#include <QFontMetrics>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QWheelEvent>
#include <algorithm>
#include <cmath>
#include <limits>

#include "desktop/chart_line.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {
constexpr int Least_Left = 72;  // pixels around the plot
constexpr int Right = 20;
constexpr int Top = 34;
constexpr int Bottom = 32;
constexpr int Tick_Text = 13;
constexpr int Label_Gap = 8;
constexpr int X_Tick_Width = 60;  // pixels that one label takes
constexpr int Y_Tick_Height = 36;
constexpr double Wheel_Step = 0.8;     // of the span for one notch
constexpr int Key_Pan = 40;            // pixels
constexpr double Least_X_Span = 2.0;   // measurements: below that no number would be in view
constexpr double Point_Spacing = 6.0;  // points wider apart than this are marked

QFont Small_Font(const QWidget& widget) {
  QFont font = widget.font();
  font.setPixelSize(Tick_Text);
  return font;
}
}  // namespace

C_Chart_View::C_Chart_View() {
  setMouseTracking(true);
  setFocusPolicy(Qt::StrongFocus);
  setMinimumSize(240, 160);
  setObjectName(QStringLiteral("chart_view"));
}

// What is looked at stays through the drawings of one kind; another kind, with another title, is shown whole.
void C_Chart_View::Set_Model(const C_Chart_Model& model) {
  if (model.title != m_Model.title) m_Following = true;
  m_Model = model;
  const size_t count = std::min(m_Model.x.size(), m_Model.y.size());
  m_Model.x.resize(count);
  m_Model.y.resize(count);
  if (!m_Has_View || (m_Following && m_Model.axes_follow)) Fit_Axes();
  View_Changed();
}

void C_Chart_View::Follow() {
  m_Following = true;
  Fit_Axes();
  View_Changed();
}

void C_Chart_View::View_Changed() {
  Place_Axes();
  Find_Nearest();
  update();
}

void C_Chart_View::Fit_Axes() {
  double low[2] = {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::infinity()};
  double high[2] = {-low[0], -low[1]};
  for (size_t i = 0; i < m_Model.x.size(); ++i) {
    const double point[2] = {m_Model.x[i], m_Model.y[i]};
    if (!std::isfinite(point[0]) || !std::isfinite(point[1])) continue;
    for (int k = 0; k < 2; ++k) {
      low[k] = std::min(low[k], point[k]);
      high[k] = std::max(high[k], point[k]);
    }
  }
  if (low[0] > high[0]) return;
  if (low[0] == high[0]) {
    m_X.low = low[0] - 1.0;
    m_X.high = high[0] + 1.0;
  } else {
    m_X.Show(low[0], high[0], 0.02);
  }
  m_Y.Show(low[1], high[1], 0.08);
  m_Has_View = true;
}

// The longest label of the y axis sets where the plot begins.
void C_Chart_View::Place_Axes() {
  const int plot_height = height() - Top - Bottom;
  m_Y_Ticks = Make_Ticks(m_Y, std::max(2, plot_height / Y_Tick_Height), false);
  int left = Least_Left;
  const QFontMetrics metrics(Small_Font(*this));
  for (const C_Chart_Tick& tick : m_Y_Ticks)
    left = std::max(left, metrics.horizontalAdvance(tick.label) + 2 * Label_Gap);
  m_Plot = QRectF(left, Top, width() - left - Right, plot_height);
  m_X.first = m_Plot.left();
  m_X.last = m_Plot.right();
  m_Y.first = m_Plot.bottom();
  m_Y.last = m_Plot.top();
}

void C_Chart_View::resizeEvent(QResizeEvent*) {
  View_Changed();
}

void C_Chart_View::Zoom(const QPointF& place, double factor, bool along_x, bool along_y) {
  m_Following = false;
  if (along_x && (factor > 1.0 || (m_X.high - m_X.low) * factor >= Least_X_Span)) m_X.Zoom(place.x(), factor);
  if (along_y) m_Y.Zoom(place.y(), factor);
  View_Changed();
}

void C_Chart_View::Shift(const QPointF& pixels) {
  m_Following = false;
  m_X.Shift(pixels.x());
  m_Y.Shift(pixels.y());
  View_Changed();
}

void C_Chart_View::wheelEvent(QWheelEvent* event) {
  const double turn = event->angleDelta().y() != 0 ? event->angleDelta().y() : event->angleDelta().x();
  const bool only_x = (event->modifiers() & Qt::ControlModifier) != 0;
  const bool only_y = (event->modifiers() & Qt::ShiftModifier) != 0;
  Zoom(event->position(), std::pow(Wheel_Step, turn / 120.0), !only_y || only_x, !only_x || only_y);
  event->accept();
}

void C_Chart_View::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) m_Drag_From = event->position();
}

void C_Chart_View::mouseMoveEvent(QMouseEvent* event) {
  m_Pointer = event->position();
  if (m_Drag_From.has_value()) {
    const QPointF way = *m_Drag_From - event->position();
    m_Drag_From = event->position();
    if (!way.isNull()) Shift(way);
  }
  Find_Nearest();
  update();
}

void C_Chart_View::mouseReleaseEvent(QMouseEvent*) {
  m_Drag_From.reset();
}

void C_Chart_View::mouseDoubleClickEvent(QMouseEvent*) {
  Follow();
}

void C_Chart_View::leaveEvent(QEvent*) {
  m_Pointer.reset();
  Find_Nearest();
  update();
}

void C_Chart_View::keyPressEvent(QKeyEvent* event) {
  const QPointF middle = m_Plot.center();
  switch (event->key()) {
    case Qt::Key_Plus:
    case Qt::Key_Equal:
      return Zoom(middle, Wheel_Step, true, true);
    case Qt::Key_Minus:
      return Zoom(middle, 1.0 / Wheel_Step, true, true);
    case Qt::Key_Left:
      return Shift({-Key_Pan, 0.0});
    case Qt::Key_Right:
      return Shift({Key_Pan, 0.0});
    case Qt::Key_Up:
      return Shift({0.0, -Key_Pan});
    case Qt::Key_Down:
      return Shift({0.0, Key_Pan});
    case Qt::Key_Home:
      return Follow();
    default:
      return QWidget::keyPressEvent(event);
  }
}

// The point whose x is nearest to the pointer.
void C_Chart_View::Find_Nearest() {
  m_Nearest.reset();
  if (!m_Pointer.has_value() || !m_Plot.contains(*m_Pointer)) return;
  const double wanted = m_X.To_Value(m_Pointer->x());
  double best = std::numeric_limits<double>::infinity();
  for (size_t i = 0; i < m_Model.x.size(); ++i) {
    const double distance = std::abs(m_Model.x[i] - wanted);
    if (distance < best && std::isfinite(m_Model.y[i])) {
      best = distance;
      m_Nearest = i;
    }
  }
}

QString C_Chart_View::Crosshair_Text() const {
  if (!m_Nearest.has_value()) return QString();
  return QStringLiteral("%1 : %2").arg(QString::number(m_Model.x[*m_Nearest], 'g', 10),
                                       Value_Text(m_Model.y[*m_Nearest], m_Y.high - m_Y.low));
}

void C_Chart_View::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), theme::Paper);
  Draw_Grid(painter);
  Draw_Line(painter);
  Draw_Newest(painter);
  Draw_Crosshair(painter);
}

void C_Chart_View::Draw_Grid(QPainter& painter) const {
  painter.setFont(Small_Font(*this));
  const int x_most = std::max(2, static_cast<int>(m_Plot.width()) / X_Tick_Width);
  for (const C_Chart_Tick& tick : Make_Ticks(m_X, x_most, true)) {
    const double pixel = std::round(m_X.To_Pixel(tick.value));
    painter.setPen(theme::Rule);
    painter.drawLine(QPointF(pixel, m_Plot.top()), QPointF(pixel, m_Plot.bottom()));
    painter.setPen(theme::Quiet);
    painter.drawText(QRectF(pixel - X_Tick_Width / 2.0, m_Plot.bottom() + 4, X_Tick_Width, Bottom - 4),
                     Qt::AlignHCenter | Qt::AlignTop, tick.label);
  }
  for (const C_Chart_Tick& tick : m_Y_Ticks) {
    const double pixel = std::round(m_Y.To_Pixel(tick.value));
    painter.setPen(theme::Rule);
    painter.drawLine(QPointF(m_Plot.left(), pixel), QPointF(m_Plot.right(), pixel));
    painter.setPen(theme::Quiet);
    painter.drawText(QRectF(0, pixel - 12, m_Plot.left() - Label_Gap, 24), Qt::AlignRight | Qt::AlignVCenter,
                     tick.label);
  }
  painter.setPen(theme::Quiet);
  painter.drawRect(m_Plot);
}

void C_Chart_View::Draw_Line(QPainter& painter) const {
  const QPolygonF line = Make_Line(m_Model.x, m_Model.y, m_X, m_Y);
  if (line.isEmpty()) return;
  painter.save();
  painter.setClipRect(m_Plot.adjusted(1, 1, 0, 0));
  const bool few = static_cast<double>(line.size()) * Point_Spacing < m_Plot.width();
  painter.setRenderHint(QPainter::Antialiasing, few || line.size() < 2000);
  painter.setPen(QPen(theme::Accent, few ? 1.8 : 1.0));
  painter.drawPolyline(line);
  if (few) {
    painter.setBrush(theme::Accent);
    for (const QPointF& point : line) painter.drawEllipse(point, 2.6, 2.6);
  }
  painter.restore();
}

void C_Chart_View::Draw_Newest(QPainter& painter) const {
  if (m_Model.y.empty()) return;
  const double value = m_Model.y.back();
  QFont font = painter.font();
  font.setPixelSize(20);
  font.setBold(true);
  painter.setFont(font);
  painter.setPen(theme::Ink);
  painter.drawText(QRectF(m_Plot.left(), 2, m_Plot.width(), Top - 4), Qt::AlignRight | Qt::AlignVCenter,
                   Value_Text(value, m_Y.high - m_Y.low));
  const QPointF place(m_X.To_Pixel(m_Model.x.back()), m_Y.To_Pixel(value));
  if (!std::isfinite(value) || !m_Plot.contains(place)) return;
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(QPen(theme::Paper, 1.5));
  painter.setBrush(theme::Alarm);
  painter.drawEllipse(place, 5.0, 5.0);
  painter.restore();
}

void C_Chart_View::Draw_Crosshair(QPainter& painter) const {
  if (!m_Nearest.has_value()) return;
  const QPointF place(m_X.To_Pixel(m_Model.x[*m_Nearest]), m_Y.To_Pixel(m_Model.y[*m_Nearest]));
  painter.save();
  painter.setClipRect(m_Plot);
  painter.setPen(QPen(theme::Ink, 1.0, Qt::DashLine));
  painter.drawLine(QPointF(place.x(), m_Plot.top()), QPointF(place.x(), m_Plot.bottom()));
  painter.drawLine(QPointF(m_Plot.left(), place.y()), QPointF(m_Plot.right(), place.y()));
  painter.restore();

  painter.setFont(Small_Font(*this));
  const QString text = Crosshair_Text();
  QRectF label(0, 0, painter.fontMetrics().horizontalAdvance(text) + 16, 24);
  label.moveBottomLeft(place + QPointF(10, -8));
  if (label.right() > m_Plot.right()) label.moveRight(place.x() - 10);
  if (label.top() < m_Plot.top()) label.moveTop(m_Plot.top() + 4);
  if (label.bottom() > m_Plot.bottom()) label.moveBottom(m_Plot.bottom() - 4);
  painter.setPen(Qt::NoPen);
  painter.setBrush(theme::Ink);
  painter.drawRoundedRect(label, 3, 3);
  painter.setPen(theme::Paper);
  painter.drawText(label, Qt::AlignCenter, text);
}

}  // namespace orsanta
