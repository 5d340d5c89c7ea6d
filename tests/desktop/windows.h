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
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>

#include "support/dialog/front.h"

namespace orsanta {

// Runs the work on the Qt thread and waits for it. The lock tells the thread sanitizer of the hand-over, which it does
// not see inside Qt.
inline void On_Qt(const std::function<void()>& work) {
  static std::mutex handed_over;
  handed_over.lock();
  handed_over.unlock();
  const auto run = [&work] {
    const std::lock_guard guard(handed_over);
    work();
  };
  QMetaObject::invokeMethod(qApp, run, Qt::BlockingQueuedConnection);
  handed_over.lock();
  handed_over.unlock();
}

// Asks on the Qt thread until the answer is yes; false after the time.
inline bool Wait_On_Qt(const std::function<bool()>& question, int timeout_ms = 5000) {
  for (int waited = 0; waited <= timeout_ms; waited += 5) {
    bool answer = false;
    if (QCoreApplication::instance() != nullptr) On_Qt([&] { answer = question(); });
    if (answer) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return false;
}

// --- Qt thread only ---

// The visible window whose title contains the text, the newest first; null when there is none.
inline QWidget* Find_Window(const QString& title) {
  QWidget* found = nullptr;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->windowTitle().contains(title)) found = window;
  }
  return found;
}

template <class T>
T* Find_By_Text(QWidget* window, const QString& text) {
  if (window == nullptr) return nullptr;
  for (T* widget : window->findChildren<T*>()) {
    if (widget->isVisible() && widget->text() == text) return widget;
  }
  return nullptr;
}

// All open message boxes with that text.
inline QList<QWidget*> Find_Boxes(const QString& text) {
  QList<QWidget*> boxes;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible() && window->objectName() == QLatin1String("message_box") &&
        Find_By_Text<QLabel>(window, text) != nullptr) {
      boxes.append(window);
    }
  }
  return boxes;
}

inline void Click(QWidget* widget) {
  QTest::mouseClick(widget, Qt::LeftButton);
}

// --- Any thread but Qt's ---

// Moves the pointer of the display onto the widget and clicks: unlike Click it does nothing to a window that is blocked
// or covered.
inline void Click_With_Pointer(const std::function<QWidget*()>& find) {
  QPoint place;
  On_Qt([&] {
    QWidget* widget = find();
    place = widget->mapToGlobal(widget->rect().center());
  });
  const std::string command =
      "xdotool mousemove " + std::to_string(place.x()) + " " + std::to_string(place.y()) + " click 1";
  if (std::system(command.c_str()) != 0) fputs("xdotool failed; is it installed?\n", stderr);
}

// --- Sinks that keep what comes ---

class C_Kept_Events : public C_Dialog_Listener {
 public:
  void On_Dialog_Event(const C_Dialog_Event& event) override {
    const std::lock_guard guard(m_Lock);
    m_Events.push_back(event);
  }
  std::optional<C_Dialog_Event> Take(int timeout_ms = 3000) {
    for (int waited = 0; waited <= timeout_ms; waited += 2) {
      {
        const std::lock_guard guard(m_Lock);
        if (!m_Events.empty()) {
          C_Dialog_Event event = m_Events.front();
          m_Events.pop_front();
          return event;
        }
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return std::nullopt;
  }

 private:
  std::mutex m_Lock;
  std::deque<C_Dialog_Event> m_Events;
};

}  // namespace orsanta
