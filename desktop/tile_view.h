// The tile of one station. Qt thread only.
#pragma once

#include <QWidget>
#include <functional>

#include "support/dialog/front.h"

namespace orsanta {

class C_Tile_View : public QWidget {
 public:
  // say: the tile was pressed, and this is the last message of its station.
  explicit C_Tile_View(std::function<void(const QString&)> say);

  int Station() const { return m_Tile.station; }
  void Show(const C_Station_Tile& tile);
  void Show_Message(const QString& text, bool waits);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;

 private:
  void Draw_Head(QPainter& painter, const QRectF& area) const;
  void Draw_Thickness(QPainter& painter, const QRectF& area) const;
  void Draw_Foot(QPainter& painter, const QRectF& area) const;

  std::function<void(const QString&)> m_Say;
  C_Station_Tile m_Tile;
  QString m_Message;
  bool m_Waits = false;
};

}  // namespace orsanta
