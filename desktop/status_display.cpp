#include "desktop/status_display.h"

#include <QFontMetrics>
#include <QPainter>

#include "desktop/theme.h"

namespace orsanta {

namespace {
constexpr int Margin = 10;
constexpr int Caption_Height = 24;
constexpr int Smallest_Text = 12;
constexpr double Line_Height = 1.15;  // of the text size
int Largest_Text(double scale) {
  return static_cast<int>(theme::Normal_Text * scale);
}
}  // namespace

int C_Status_Display::Height(int rows, double scale) {
  return Caption_Height + static_cast<int>(Line_Height * rows * Largest_Text(scale)) + Margin;
}

C_Status_Display::C_Status_Display(const QString& caption, int rows, double scale)
    : m_Caption(caption), m_Largest_Text(Largest_Text(scale)) {
  setMinimumHeight(Height(rows, scale));
  setAccessibleName(caption);
  setAttribute(Qt::WA_OpaquePaintEvent);
}

void C_Status_Display::Set_Text(const QString& text) {
  if (text == m_Text) return;
  m_Text = text;
  m_Lines.clear();
  for (const QString& line : text.split(QLatin1Char('\n'))) m_Lines.append(line.trimmed());
  while (!m_Lines.isEmpty() && m_Lines.back().isEmpty()) m_Lines.removeLast();
  setAccessibleDescription(text);
  Fit();
  update();
}

QRect C_Status_Display::Text_Area() const {
  return rect().adjusted(Margin, Caption_Height, -Margin, -Margin / 2);
}

// The largest size at which every line fits the width and all lines fit the height.
void C_Status_Display::Fit() {
  const QRect area = Text_Area();
  int size = m_Largest_Text;
  if (!m_Lines.isEmpty())
    size = std::min(size, static_cast<int>(area.height() / (Line_Height * static_cast<double>(m_Lines.size()))));
  QFont text_font = font();
  text_font.setPixelSize(std::max(size, Smallest_Text));
  const QFontMetrics metrics(text_font);
  int widest = 0;
  for (const QString& line : m_Lines) widest = std::max(widest, metrics.horizontalAdvance(line));
  if (widest > area.width()) size = size * area.width() / widest;
  m_Text_Size = std::max(size, Smallest_Text);
}

void C_Status_Display::resizeEvent(QResizeEvent*) {
  Fit();
}

void C_Status_Display::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), theme::Display_Back);

  QFont text_font = font();
  text_font.setPixelSize(14);
  painter.setFont(text_font);
  painter.setPen(theme::Display_Caption);
  painter.drawText(QRect(Margin, 2, width() - 2 * Margin, Caption_Height), Qt::AlignLeft | Qt::AlignVCenter, m_Caption);

  text_font.setPixelSize(m_Text_Size);
  painter.setFont(text_font);
  painter.setPen(theme::Display_Ink);
  const QRect area = Text_Area();
  const int line_height = static_cast<int>(Line_Height * m_Text_Size);
  int top = area.top() + std::max(0, (area.height() - line_height * static_cast<int>(m_Lines.size())) / 2);
  for (const QString& line : m_Lines) {
    painter.drawText(QRect(area.left(), top, area.width(), line_height), Qt::AlignLeft | Qt::AlignVCenter, line);
    top += line_height;
  }
}

}  // namespace orsanta
