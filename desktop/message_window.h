// One message box: an icon, the text, and OK or yes and no. Several may stand open at once. Qt thread only.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <functional>

#include "support/dialog/front.h"

namespace orsanta {

class C_Message_Window : public QDialog {
 public:
  using C_Answered = std::function<void(const C_Message_Window*, int)>;

  // answered: called once, with this window and an Answer_ value. place: how many boxes stand open, which sets this one
  // off from them. under: the window on which it stands, null for none.
  C_Message_Window(const C_Message_Model& model, int place, C_Answered answered, QWidget* under);

  void Answer(int answer);
  void reject() override;

 protected:
  void keyPressEvent(QKeyEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  bool m_Yes_No;
  C_Answered m_Answered;
  QElapsedTimer m_Shown;
};

}  // namespace orsanta
