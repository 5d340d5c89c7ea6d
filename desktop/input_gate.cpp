#include "desktop/input_gate.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QWidget>
#include <utility>

namespace orsanta {

namespace {

bool Is_Press(QEvent::Type type) {
  return type == QEvent::MouseButtonPress || type == QEvent::KeyPress || type == QEvent::Shortcut ||
         type == QEvent::TouchBegin || type == QEvent::Close;
}

bool Is_Input(QEvent::Type type) {
  switch (type) {
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyRelease:
    case QEvent::Wheel:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::ContextMenu:
    case QEvent::InputMethod:
      return true;
    default:
      return Is_Press(type);
  }
}

bool Repeats_A_Press(const QObject* object, const QEvent* event) {
  if (event->type() != QEvent::KeyPress) return false;
  const auto* key = static_cast<const QKeyEvent*>(event);
  if (!key->isAutoRepeat()) return false;
  const bool presses = key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter || key->key() == Qt::Key_Escape;
  const bool types_blank = qobject_cast<const QLineEdit*>(object) != nullptr;
  return presses || (key->key() == Qt::Key_Space && !types_blank);
}

}  // namespace

C_Input_Gate::C_Input_Gate(std::function<QWidget*(const QWidget*)> blocker, std::function<void(const QWidget*)> refused)
    : m_Blocker(std::move(blocker)), m_Refused(std::move(refused)) {
  qApp->installEventFilter(this);
}

bool C_Input_Gate::eventFilter(QObject* object, QEvent* event) {
  if (!Is_Input(event->type()) || !object->isWidgetType()) return false;
  if (Repeats_A_Press(object, event)) return true;
  auto* widget = static_cast<QWidget*>(object);
  if (event->type() == QEvent::Close && !widget->isWindow()) return false;
  const QWidget* window = widget->window();
  if (m_Blocker(window) == nullptr) return false;
  if (Is_Press(event->type())) m_Refused(window);
  event->setAccepted(event->type() != QEvent::Close);  // an input that is not accepted comes again to the parent
  return true;
}

}  // namespace orsanta
