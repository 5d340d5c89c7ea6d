#include "desktop/tile_view.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPainterPath>
#include <algorithm>
#include <utility>

#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr double Head_Share = 0.34;  // of the height
constexpr double Foot_Share = 0.22;
constexpr double Margin = 6.0;       // pixels
constexpr double Unit_Share = 0.45;  // size of the unit against the number

struct C_Look {
  const char* word;
  QColor back;
  QColor ink;
};

C_Look Look_Of(C_Station_Condition condition) {
  switch (condition) {
    case C_Station_Condition::Lifted:
      return {"已回位", QColor(0x3E, 0x55, 0x66), theme::Paper};
    case C_Station_Condition::Measuring:
      return {"测量中", QColor(0xFF, 0xB8, 0x2E), theme::Ink};
    case C_Station_Condition::Pressing:
      return {"压住", QColor(0x2B, 0x7B, 0xD6), theme::Paper};
    case C_Station_Condition::Result:
      return {"已测完", theme::Paper, theme::Ink};
    case C_Station_Condition::Fault:
      return {"故障", QColor(0xC6, 0x28, 0x28), theme::Paper};
    case C_Station_Condition::Not_Connected:
      break;
  }
  return {"未连接", theme::Display_Back, theme::Display_Caption};
}

// The shape that goes with the state, in a square of side 1.
QPainterPath Shape_Of(C_Station_Condition condition) {
  QPainterPath shape;
  switch (condition) {
    case C_Station_Condition::Lifted:  // an arrow up
      shape.addPolygon(
          QPolygonF({{0.5, 0.0}, {1.0, 0.55}, {0.68, 0.55}, {0.68, 1.0}, {0.32, 1.0}, {0.32, 0.55}, {0.0, 0.55}}));
      break;
    case C_Station_Condition::Measuring:  // an arrow down
      shape.addPolygon(
          QPolygonF({{0.5, 1.0}, {1.0, 0.45}, {0.68, 0.45}, {0.68, 0.0}, {0.32, 0.0}, {0.32, 0.45}, {0.0, 0.45}}));
      break;
    case C_Station_Condition::Pressing:  // a probe on its part
      shape.addRect(0.34, 0.0, 0.32, 0.7);
      shape.addRect(0.0, 0.78, 1.0, 0.22);
      break;
    case C_Station_Condition::Result:
      shape.addPolygon(QPolygonF({{0.5, 0.0}, {1.0, 0.5}, {0.5, 1.0}, {0.0, 0.5}}));
      break;
    case C_Station_Condition::Fault:  // a warning triangle
      shape.addPolygon(QPolygonF({{0.5, 0.0}, {1.0, 0.95}, {0.0, 0.95}}));
      shape.addRect(0.45, 0.34, 0.1, 0.32);
      shape.addRect(0.45, 0.73, 0.1, 0.1);
      break;
    case C_Station_Condition::Not_Connected:  // a crossed ring
      shape.addEllipse(0.0, 0.0, 1.0, 1.0);
      shape.addEllipse(0.14, 0.14, 0.72, 0.72);
      shape.addRect(0.14, 0.44, 0.72, 0.12);
      break;
  }
  shape.closeSubpath();
  return shape;
}

QFont Sized(const QWidget& widget, double pixels, bool bold) {
  QFont font = widget.font();
  font.setPixelSize(std::max(9, static_cast<int>(pixels)));
  font.setBold(bold);
  return font;
}

}  // namespace

C_Tile_View::C_Tile_View(std::function<void(const QString&)> say) : m_Say(std::move(say)) {
  setObjectName(QStringLiteral("tile"));
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void C_Tile_View::Show(const C_Station_Tile& tile) {
  if (tile == m_Tile) return;
  m_Tile = tile;
  setAccessibleName(To_Qt(Station_Name(tile.station)));
  setAccessibleDescription(
      QStringLiteral("%1 %2 %3")
          .arg(QString::fromUtf8(Look_Of(tile.condition).word), To_Qt(tile.thickness), To_Qt(tile.force)));
  update();
}

void C_Tile_View::Show_Message(const QString& text, bool waits) {
  m_Message = text;
  m_Waits = waits;
  setToolTip(text);
  update();
}

void C_Tile_View::mousePressEvent(QMouseEvent*) {
  if (!m_Message.isEmpty()) m_Say(To_Qt(Station_Name(m_Tile.station)) + QLatin1Char(' ') + m_Message);
}

void C_Tile_View::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.fillRect(rect(), theme::Display_Back);
  const QRectF all(rect());
  const double head = all.height() * Head_Share;
  const double foot = all.height() * Foot_Share;
  Draw_Head(painter, {0, 0, all.width(), head});
  Draw_Thickness(painter, {Margin, head, all.width() - 2 * Margin, all.height() - head - foot});
  Draw_Foot(painter, {0, all.height() - foot, all.width(), foot});
}

void C_Tile_View::Draw_Head(QPainter& painter, const QRectF& area) const {
  const C_Look look = Look_Of(m_Tile.condition);
  painter.fillRect(area, look.back);
  painter.setPen(look.ink);
  painter.setFont(Sized(*this, area.height() * 0.85, true));
  const QString number = QString::number(m_Tile.station);
  painter.drawText(area.adjusted(Margin, 0, -Margin, 0), Qt::AlignLeft | Qt::AlignVCenter, number);
  const double side = area.height() * 0.64;
  painter.save();
  painter.translate(area.right() - side - Margin, area.center().y() - side / 2);
  painter.scale(side, side);
  painter.fillPath(Shape_Of(m_Tile.condition), look.ink);
  painter.restore();
  const double from = Margin + painter.fontMetrics().horizontalAdvance(number);
  const QRectF place(from, 0, area.right() - side - 2 * Margin - from, area.height());
  const QString word = QString::fromUtf8(look.word);
  painter.setFont(
      Sized(*this, std::min(area.height() * 0.62, place.width() / static_cast<double>(word.size() + 1)), true));
  painter.drawText(place, Qt::AlignCenter, word);
}

// As large as it fits. While the state says that it is an old one, it is dim.
void C_Tile_View::Draw_Thickness(QPainter& painter, const QRectF& area) const {
  const bool is_old =
      m_Tile.condition == C_Station_Condition::Measuring || m_Tile.condition == C_Station_Condition::Not_Connected;
  const bool has_value = !m_Tile.thickness.empty();
  const QString number = has_value ? To_Qt(m_Tile.thickness) : QStringLiteral("—");
  const QString unit = has_value ? QStringLiteral(" mm") : QString();
  const auto width_at = [&](double pixels) {
    return QFontMetrics(Sized(*this, pixels, true)).horizontalAdvance(number) +
           QFontMetrics(Sized(*this, pixels * Unit_Share, false)).horizontalAdvance(unit);
  };
  const double greatest = area.height() * 0.95;
  const double size = greatest * std::min(1.0, area.width() / (width_at(greatest) + Margin));
  painter.setPen(is_old ? theme::Quiet : theme::Paper);
  painter.setFont(Sized(*this, size, true));
  const double number_width = painter.fontMetrics().horizontalAdvance(number);
  const double left = area.left() + std::max(0.0, (area.width() - width_at(size)) / 2);
  const double base = area.center().y() + painter.fontMetrics().capHeight() / 2.0;
  painter.drawText(QPointF(left, base), number);
  painter.setFont(Sized(*this, size * Unit_Share, false));
  painter.drawText(QPointF(left + number_width, base), unit);
}

// The set force, and the last message, on amber while its box waits for an answer.
void C_Tile_View::Draw_Foot(QPainter& painter, const QRectF& area) const {
  if (m_Waits) painter.fillRect(area, QColor(0xFF, 0xD2, 0x7A));
  painter.setPen(m_Waits ? theme::Ink : theme::Display_Caption);
  painter.setFont(Sized(*this, area.height() * 0.72, false));
  const QRectF place = area.adjusted(Margin, 0, -Margin, 0);
  const QString force = To_Qt(m_Tile.force);
  painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter, force);
  const QFontMetrics metrics = painter.fontMetrics();
  const int rest = static_cast<int>(place.width()) - metrics.horizontalAdvance(force + QStringLiteral("  "));
  painter.drawText(place, Qt::AlignRight | Qt::AlignVCenter, metrics.elidedText(m_Message, Qt::ElideRight, rest));
}

}  // namespace orsanta
