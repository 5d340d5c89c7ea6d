// Homing of a drive that homes by itself, and its check over the stroke.
#include "drive/motor.h"
#include "drive/motor_channels.h"
#include "drive/stroke_check.h"
#include "support/time/clock.h"

namespace orsanta {

using namespace motor_channels;

int C_Kestrune_Motor_test::Wait_For_Ready_Flag(int wanted, int& flag, int& polls) {
  while (flag != wanted) {
    Sleep(1);
    flag = Check_Ready();
    ++polls;
    if (polls > Poll_Budget) return 0;
  }
  return 1;
}

int C_Kestrune_Motor_test::Measure_Stroke(double& max, double& min) {
  Output(Out_Home, "回零命令", 0.0);
  int flag = 1;
  int polls = 0;  // one budget for the start and the end of the drive's homing
  if (Wait_For_Ready_Flag(0, flag, polls) != 1) return 0;
  if (Wait_For_Ready_Flag(1, flag, polls) != 1) return 0;
  Sleep(1);
  if (Read_Once(In_Stroke_Lower, min) != 1) return 0;
  return Read_Once(In_Stroke_Upper, max);
}

int C_Kestrune_Motor_test::Home_And_Check(int can_id, double& max, double& min) {
  if (Map_Once() != 1) return 0;  // "无法映射ID:%d" would say no more than the report that the mapping has shown
  if (Check_Ready() != 1) return stroke_check::Report_Failure(can_id, stroke_check::Home_Failed);
  if (Measure_Stroke(max, min) != 1) return stroke_check::Report_Failure(can_id, stroke_check::Stroke_Failed);
  max /= m_Scale;
  min /= m_Scale;

  constexpr double Stroke_Parts = 10.0;
  const double step = (max - min) / Stroke_Parts;
  if (stroke_check::Run(*this, &C_Kestrune_Motor_test::Go_Pos, can_id, max, min, step) != 1) return 0;
  Go_Pos(min);
  return 1;
}

}  // namespace orsanta
