#include "ui/station_board.h"

#include "host/motor_base.h"
#include "station/voice_motor.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int Pass_Ms = 100;
constexpr int Stop_Timeout_Ms = 300000;

}  // namespace

C_Station_Board::C_Station_Board(C_VoiceMotorBase& base)
    : m_Base(base), m_Watched(static_cast<size_t>(base.StationCount)) {
  for (int i = 0; i < base.StationCount; ++i)
    m_Watched[static_cast<size_t>(i)].last_time_ms = base.StationList[i]->m_TestTime;
  BeginThread(nullptr, 2, 2, Stop_Timeout_Ms, L"station board");
}

C_Station_Board::~C_Station_Board() {
  ReleaseSubClass_CBaseBindThread();
}

void C_Station_Board::OnThreadLoop(void*) {
  std::vector<C_Station_Tile> tiles(m_Watched.size());
  for (size_t i = 0; i < tiles.size(); ++i) tiles[i] = Look_At(static_cast<int>(i), m_Watched[i]);
  Front().Show_Stations(tiles);
  Sleep(Pass_Ms);
}

C_Station_Tile C_Station_Board::Look_At(int index, C_Watched& watched) const {
  using enum C_Station_Condition;
  const C_VoiceMotor& station = *m_Base.StationList[index];
  const bool works = m_Base.GetDelayProcessFifoCount(index) > 0;
  const bool is_up = station.Get_Force_Back_Finish() != 0;
  if (station.m_TestTime != watched.last_time_ms) watched.has_measured = watched.is_measured = true;
  watched.last_time_ms = station.m_TestTime;
  if (is_up && !works) watched.is_measured = false;

  C_Station_Tile tile;
  tile.station = m_Base.ResourceList[index].CanID;
  tile.force = Format_Text("%.4g g", station.Val_Force_Set[0].Get()).Text();
  const bool failed = watched.has_measured && station.Ans_Valid == 0;
  if (watched.has_measured && !failed) tile.thickness = Format_Text("%3.4f", station.Test_Ans.Get()).Text();
  if (station.Get_Motor_Ready() == 0) {
    tile.condition = Not_Connected;
  } else if (works) {
    tile.condition = watched.is_measured ? Pressing : Measuring;
  } else if (failed) {
    tile.condition = Fault;
  } else if (is_up) {
    tile.condition = Lifted;
  } else {
    tile.condition = watched.is_measured ? Result : Pressing;
  }
  return tile;
}

}  // namespace orsanta
