// Finds and drives the real windows of the desktop front from the test's thread.
#pragma once

#include <QApplication>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <QWidget>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "support/dialog/front.h"

namespace orsanta {

// Runs the work on the Qt thread and waits for it.
inline void On_Qt(const std::function<void()>& work) {
  QMetaObject::invokeMethod(qApp, work, Qt::BlockingQueuedConnection);
}

// Asks until the answer is yes; false after the time.
inline bool Eventually(const std::function<bool()>& question, int longest_ms = 5000) {
  for (int waited_ms = 0; !question(); waited_ms += 5) {
    if (waited_ms > longest_ms) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

// The same, asking on the Qt thread.
inline bool Wait_On_Qt(const std::function<bool()>& question, int longest_ms = 5000) {
  const auto ask = [&] {
    bool answer = false;
    if (QCoreApplication::instance() != nullptr) On_Qt([&] { answer = question(); });
    return answer;
  };
  return Eventually(ask, longest_ms);
}

// --- Qt thread only ---

// The visible window whose title contains the text, the newest first; null when there is none.
inline QWidget* Find_Window(const QString& title) {
  QWidget* found = nullptr;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible() && window->windowTitle().contains(title)) found = window;
  return found;
}

template <class T>
T* Find_By_Text(QWidget* window, const QString& text) {
  for (T* widget : window == nullptr ? QList<T*>() : window->findChildren<T*>())
    if (widget->isVisible() && widget->text() == text) return widget;
  return nullptr;
}

// Of those with the text, the one that comes at that place.
inline QPushButton* Find_Button(const QString& window, const QString& text, int place = 0) {
  for (QPushButton* button : Find_Window(window)->findChildren<QPushButton*>())
    if (button->text() == text && place-- == 0) return button;
  return nullptr;
}

// All open message boxes with that text.
inline QList<QWidget*> Find_Boxes(const QString& text) {
  QList<QWidget*> boxes;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    const bool is_box = window->isVisible() && window->objectName() == QLatin1String("message_box");
    if (is_box && Find_By_Text<QLabel>(window, text) != nullptr) boxes.append(window);
  }
  return boxes;
}

inline void Click(QWidget* widget) {
  QTest::mouseClick(widget, Qt::LeftButton);
}

// --- Any thread but Qt's ---

// Moves the pointer of the display onto the widget and clicks: unlike Click it does nothing to a window that is blocked
// or covered. at: the place on the widget, its middle when none is given.
inline void Click_With_Pointer(const std::function<QWidget*()>& find, std::optional<QPoint> at = {}) {
  QPoint place;
  On_Qt([&] {
    QWidget* widget = find();
    place = widget->mapToGlobal(at.value_or(widget->rect().center()));
  });
  const QString command = QStringLiteral("xdotool mousemove %1 %2 click 1").arg(place.x()).arg(place.y());
  if (std::system(qPrintable(command)) != 0) fputs("xdotool failed; is it installed?\n", stderr);
}

// --- Sinks that keep what comes ---

class C_Kept_Events : public C_Dialog_Listener {
 public:
  void On_Dialog_Event(const C_Dialog_Event& event) override {
    const std::lock_guard guard(m_Lock);
    m_Events.push_back(event);
  }
  std::optional<C_Dialog_Event> Take(int timeout_ms = 3000) {
    std::optional<C_Dialog_Event> event;
    const auto take = [&] {
      const std::lock_guard guard(m_Lock);
      if (m_Taken < m_Events.size()) event = m_Events[m_Taken++];
      return event.has_value();
    };
    Eventually(take, timeout_ms);
    return event;
  }

 private:
  std::mutex m_Lock;
  std::vector<C_Dialog_Event> m_Events;
  size_t m_Taken = 0;
};

}  // namespace orsanta
