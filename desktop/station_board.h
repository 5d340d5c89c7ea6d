// The stations at a glance: for each a tile with number, state, last thickness and set force, large enough to be read
// across the machine, above whatever scrolls. The state is told by shape, word and colour; colours judge no part. Qt
// thread only.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "support/dialog/front.h"

namespace orsanta {

class C_Tile_View;

class C_Station_Board : public QWidget {
 public:
  // count: of the stations. say: a tile was pressed, and this is the last message of its station.
  C_Station_Board(int count, const std::function<void(const QString&)>& say);

  void Show(const std::vector<C_Station_Tile>& tiles);
  // The last message of a station, with its time. waits: its box is still open.
  void Show_Message(int station, const QString& text, bool waits);

 private:
  std::vector<C_Tile_View*> m_Tiles;
};

}  // namespace orsanta
