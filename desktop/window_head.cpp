#include "desktop/window_head.h"

#include <QApplication>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QWindow>
#include <algorithm>

#include "desktop/desk_space.h"

namespace orsanta {

namespace {

constexpr int Button_Size = 34;  // pixels

// As the last window found it: the next one opens right and need not change.
bool the_Desktop_Draws_Frames = true;

void Bring_Onto_Screen(QWidget& window) {
  if (window.isMaximized() || window.isFullScreen()) return;
  const QRect space = Desk_Space(window);
  const QSize frame = window.frameGeometry().size() - window.size();
  window.resize(window.size().boundedTo(space.size() - frame));
  const QSize whole = window.size() + frame;
  const QPoint place = window.pos();
  const QPoint wanted(std::clamp(place.x(), space.left(), space.right() + 1 - whole.width()),
                      std::clamp(place.y(), space.top(), space.bottom() + 1 - whole.height()));
  if (wanted != place) window.move(wanted);
}

}  // namespace

C_Window_Head::C_Window_Head(QWidget* window) : m_Window(window), m_Title(new QLabel(window->windowTitle())) {
  setObjectName(QStringLiteral("header"));
  setAttribute(Qt::WA_StyledBackground);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(16, 4, 6, 4);
  m_Title->setTextFormat(Qt::PlainText);
  m_Title->setObjectName(QStringLiteral("title"));
  row->addWidget(m_Title, 1);
  auto* close = new QPushButton(QStringLiteral("✕"));
  close->setObjectName(QStringLiteral("close"));
  close->setAccessibleName(QStringLiteral("关闭"));
  close->setFixedSize(Button_Size, Button_Size);
  close->setFocusPolicy(Qt::NoFocus);
  close->setAutoDefault(false);
  QObject::connect(close, &QPushButton::clicked, window, &QWidget::close);
  row->addWidget(close);
  setVisible(!the_Desktop_Draws_Frames);
  window->installEventFilter(this);
}

bool C_Window_Head::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::WindowTitleChange:
      m_Title->setText(m_Window->windowTitle());
      break;
    case QEvent::Show:
      if (object == m_Window && m_Window->windowHandle() != nullptr) m_Window->windowHandle()->installEventFilter(this);
      break;
    case QEvent::Expose:
    case QEvent::Move:
    case QEvent::Resize:
      if (object == m_Window->windowHandle() && m_Window->windowHandle()->isExposed()) Look_For_Frame();
      break;
    default:
      break;
  }
  return false;
}

void C_Window_Head::Look_For_Frame() {
  const bool has_frame = !m_Window->windowHandle()->frameMargins().isNull();
  if (m_Is_Known && has_frame == m_Has_Frame) return;
  m_Is_Known = true;
  m_Has_Frame = the_Desktop_Draws_Frames = has_frame;
  if (isHidden() != has_frame) {
    setVisible(!has_frame);
    if (!m_Window->isMaximized()) {
      const int change = has_frame ? -height() : sizeHint().height();
      m_Window->resize(m_Window->width(), m_Window->height() + change);
    }
  }
  Bring_Onto_Screen(*m_Window);
}

void C_Window_Head::mousePressEvent(QMouseEvent* event) {
  m_Grip = event->globalPosition().toPoint() - m_Window->pos();
}

void C_Window_Head::mouseMoveEvent(QMouseEvent* event) {
  if ((event->buttons() & Qt::LeftButton) != 0) m_Window->move(event->globalPosition().toPoint() - m_Grip);
}

}  // namespace orsanta
