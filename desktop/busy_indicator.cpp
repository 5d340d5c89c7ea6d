#include "desktop/busy_indicator.h"

#include <QPainter>

#include "desktop/theme.h"

namespace orsanta {

namespace {
constexpr int Height = 4;      // pixels
constexpr int Period_Ms = 80;  // between two steps
constexpr int Steps = 24;      // from one end to the other
}  // namespace

C_Busy_Indicator::C_Busy_Indicator() {
  setFixedHeight(Height);
  QObject::connect(&m_Timer, &QTimer::timeout, this, [this] {
    m_Step = (m_Step + 1) % Steps;
    update();
  });
}

void C_Busy_Indicator::Run(bool run) {
  if (run == m_Timer.isActive()) return;
  if (run) {
    m_Timer.start(Period_Ms);
  } else {
    m_Timer.stop();
  }
  update();
}

void C_Busy_Indicator::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), theme::Ink);
  if (!m_Timer.isActive()) return;
  const int light = width() / 5;
  painter.fillRect(QRect((width() + light) * m_Step / Steps - light, 0, light, Height), QColor(0xFF, 0xB8, 0x2E));
}

}  // namespace orsanta
