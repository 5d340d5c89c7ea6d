// What of the keys and the pointer reaches the windows. Qt thread only.
//
// Nothing reaches a window that waits for another: a dialog with a confirmation, or a box, of the same thread. The
// displays in it go on. Qt's own modality would hold back boxes of other threads as well, and says nothing to who
// presses. A key that presses buttons counts once, however long it is held.
#pragma once

#include <QObject>
#include <functional>

class QWidget;

namespace orsanta {

class C_Input_Gate : public QObject {
 public:
  // blocker: the window that has to be answered before the given one; null where that may be used.
  // refused: somebody pressed in a window that is blocked.
  C_Input_Gate(std::function<QWidget*(const QWidget*)> blocker, std::function<void(const QWidget*)> refused);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  std::function<QWidget*(const QWidget*)> m_Blocker;
  std::function<void(const QWidget*)> m_Refused;
};

}  // namespace orsanta
