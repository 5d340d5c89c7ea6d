#include "desktop/status_line.h"

#include <QStyle>

namespace orsanta {

namespace {
constexpr int Say_Ms = 6000;
constexpr int Second_Ms = 1000;
}  // namespace

C_Status_Line::C_Status_Line() {
  setObjectName(QStringLiteral("status_line"));
  setTextFormat(Qt::PlainText);
  setContentsMargins(16, 4, 16, 4);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  m_Said_Long_Enough.setSingleShot(true);
  QObject::connect(&m_Said_Long_Enough, &QTimer::timeout, this, [this] {
    m_Said.clear();
    Show_What_Counts();
  });
  QObject::connect(&m_Seconds, &QTimer::timeout, this, [this] { Show_What_Counts(); });
}

void C_Status_Line::Say(const QString& text) {
  m_Said = text;
  m_Said_Long_Enough.start(Say_Ms);
  Show_What_Counts();
}

void C_Status_Line::Show_Running(const QString& name) {
  if (name == m_Running) return;
  m_Running = name;
  m_Since.start();
  if (name.isEmpty()) {
    m_Seconds.stop();
  } else {
    m_Seconds.start(Second_Ms);
  }
  Show_What_Counts();
}

void C_Status_Line::Show_News(const QString& text) {
  m_News = text;
  Show_What_Counts();
}

void C_Status_Line::Show_What_Counts() {
  QString text = m_News;
  if (!m_Running.isEmpty()) {
    const qint64 seconds = m_Since.elapsed() / Second_Ms;
    text = QStringLiteral("正在执行：%1").arg(m_Running);
    if (seconds > 0) text += QStringLiteral("，%1 秒").arg(seconds);
  }
  if (!m_Said.isEmpty()) text = m_Said;
  setText(text);
  const QString kind = !m_Said.isEmpty()      ? QStringLiteral("said")
                       : !m_Running.isEmpty() ? QStringLiteral("running")
                                              : QString();
  if (property("kind").toString() == kind) return;
  setProperty("kind", kind);
  style()->unpolish(this);
  style()->polish(this);
}

}  // namespace orsanta
