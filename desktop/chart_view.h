// The drawing of a chart: axes, grid, line, newest value, crosshair. Qt thread only.
//
// Wheel: zoom at the pointer, with Ctrl along x only, with Shift along y only. Drag: pan. Double click or Home: follow
// the data again. Keys: + and - zoom, arrows pan.
#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "desktop/chart_axis.h"
#include "support/dialog/front.h"

namespace orsanta {

class C_Chart_View : public QWidget {
 public:
  C_Chart_View();

  void Set_Model(const C_Chart_Model& model);
  // Shows all points, and goes on to do so at each new drawing if the model's axes follow.
  void Follow();
  bool Is_Following() const { return m_Following; }
  const C_Chart_Axis& X_Axis() const { return m_X; }
  const C_Chart_Axis& Y_Axis() const { return m_Y; }
  // Number and value of the point nearest to the pointer, empty while the pointer is elsewhere.
  QString Crosshair_Text() const;

 protected:
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void View_Changed();
  void Fit_Axes();
  void Place_Axes();
  void Zoom(const QPointF& place, double factor, bool along_x, bool along_y);
  void Shift(const QPointF& pixels);
  void Find_Nearest();
  void Draw_Grid(QPainter& painter) const;
  void Draw_Line(QPainter& painter) const;
  void Draw_Newest(QPainter& painter) const;
  void Draw_Crosshair(QPainter& painter) const;

  C_Chart_Model m_Model;
  bool m_Has_View = false;  // the axes were set once
  bool m_Following = true;  // until the operator zooms or pans
  C_Chart_Axis m_X;
  C_Chart_Axis m_Y;
  std::vector<C_Chart_Tick> m_Y_Ticks;
  QRectF m_Plot;  // within the axes
  std::optional<QPointF> m_Pointer;
  std::optional<QPointF> m_Drag_From;
  std::optional<size_t> m_Nearest;
};

}  // namespace orsanta
