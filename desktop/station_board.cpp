#include "desktop/station_board.h"

#include <QGridLayout>
#include <algorithm>

#include "desktop/desk_space.h"
#include "desktop/tile_view.h"

namespace orsanta {

namespace {
constexpr int Most_In_A_Row = 7;
constexpr double Height_Of_One_Row = 0.16;  // of the screen
constexpr double Height_Of_Two_Rows = 0.24;
constexpr int Gap = 4;         // pixels
constexpr int Least_Row = 64;  // pixels
}  // namespace

C_Station_Board::C_Station_Board(int count, const std::function<void(const QString&)>& say) {
  setObjectName(QStringLiteral("board"));
  const int rows = count > Most_In_A_Row ? 2 : 1;
  const int columns = (count + rows - 1) / rows;
  auto* grid = new QGridLayout(this);
  grid->setContentsMargins(Gap, Gap, Gap, 0);
  grid->setSpacing(Gap);
  for (int i = 0; i < count; ++i) {
    m_Tiles.push_back(new C_Tile_View(say));
    grid->addWidget(m_Tiles.back(), i / columns, i % columns);
  }
  const double share = rows == 2 ? Height_Of_Two_Rows : Height_Of_One_Row;
  const int wanted = static_cast<int>(Desk_Space(*this).height() * share);
  setFixedHeight(std::max(Least_Row * rows, wanted));
}

void C_Station_Board::Show(const std::vector<C_Station_Tile>& tiles) {
  for (size_t i = 0; i < std::min(tiles.size(), m_Tiles.size()); ++i) m_Tiles[i]->Show(tiles[i]);
}

void C_Station_Board::Show_Message(int station, const QString& text, bool waits) {
  for (C_Tile_View* tile : m_Tiles)
    if (tile->Station() == station) tile->Show_Message(text, waits);
}

}  // namespace orsanta
