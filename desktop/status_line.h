// The line at the bottom of a window of buttons: which command runs and for how long, why a press did nothing, and,
// while there is nothing of that, the newest message. Qt thread only.
#pragma once

#include <QElapsedTimer>
#include <QLabel>
#include <QTimer>

namespace orsanta {

class C_Status_Line : public QLabel {
 public:
  C_Status_Line();

  // Stands for some seconds above all else.
  void Say(const QString& text);
  // Counts the seconds of the command with that name; an empty name ends it.
  void Show_Running(const QString& name);
  void Show_News(const QString& text);

 private:
  void Show_What_Counts();

  QString m_Said;
  QString m_Running;
  QString m_News;
  QElapsedTimer m_Since;  // of the command that runs
  QTimer m_Said_Long_Enough;
  QTimer m_Seconds;
};

}  // namespace orsanta
