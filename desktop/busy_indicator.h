// A thin bar in which a light runs while a command is at work. Qt thread only.
#pragma once

#include <QTimer>
#include <QWidget>

namespace orsanta {

class C_Busy_Indicator : public QWidget {
 public:
  C_Busy_Indicator();
  void Run(bool run);

 protected:
  void paintEvent(QPaintEvent* event) override;

 private:
  QTimer m_Timer;
  int m_Step = 0;
};

}  // namespace orsanta
