// The band at the top of a window with its title and a way to close it, for a desktop that draws no frame: a bare
// display, or a kiosk. Where there is a frame, the band is away, so that no title stands twice.
//
// It also brings the window with its frame onto the screen, once the frame is known. Qt thread only.
#pragma once

#include <QWidget>

class QLabel;

namespace orsanta {

class C_Window_Head : public QWidget {
 public:
  // window: the one it stands in; its title is taken over, and its changes.
  explicit C_Window_Head(QWidget* window);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;

 private:
  void Look_For_Frame();

  QWidget* m_Window;
  QLabel* m_Title;
  bool m_Is_Known = false;  // whether there is a frame
  bool m_Has_Frame = false;
  QPoint m_Grip;  // of a drag, from the window's corner
};

}  // namespace orsanta
