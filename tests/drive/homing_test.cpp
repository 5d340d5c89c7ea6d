#include "drive/motor.h"
#include "drive/room.h"

namespace orsanta {
namespace {

// The check of a drive that homes by itself: over its whole stroke when it is sound, then with a failure at each step.
TEST_F(Room, The_Check_Of_A_Drive_Runs_Over_Its_Stroke_Or_Ends_With_The_Words_Of_The_First_Failure) {
  Reset({.counts_per_mm = 2000.0});
  C_Kestrune_Motor_test motor(3, 1, 1);
  motor.SetScale(2000.0);
  double max = 0.0, min = 0.0;
  const auto check = [&] { return motor.Home_And_Check(9, max, min); };
  const auto position_commands = [] { return Count("Out(1, 60, "); };
  simulator::Set_Absent(3, true);
  EXPECT_EQ(check(), 0);
  Texts expected = m_Front->Boxes();
  ASSERT_EQ(expected.size(), 1U);  // the report of the search alone
  simulator::Set_Absent(3, false);
  EXPECT_EQ(check(), 1);
  EXPECT_NEAR(min, -0.45, 0.01);
  EXPECT_NEAR(max, 8.95, 0.01);
  // Steps of a tenth of the stroke out and back, without the far ends; the shuttle; the way home. Hundredths of mm.
  std::string places;
  for (const simulator::Journal_Entry& call : simulator::Journal())
    if (call.function == "OUTPUT_DATA" && call.arguments.rfind("60, ", 0) == 0)
      places += std::to_string(std::lround(std::stod(call.arguments.substr(4)) / 1310720.0)) + ' ';
  const std::string turn = "895 425 -45 425 ";
  EXPECT_EQ(places, "-45 49 143 237 331 425 519 613 707 801 895 801 707 613 519 425 331 237 143 49 " + turn + turn +
                        turn + turn + turn + "-45 ");
  EXPECT_NEAR(simulator::True_Position(3), min, 0.1);

  simulator::Set_Slow_Homing(3, true);
  EXPECT_EQ(check(), 0);
  simulator::Set_Slow_Homing(3, false);
  Sleep(60000);
  expected.emplace_back(L"ID:9的驱动器无法测量行程");
  // The drive goes silent at a position command: on the way out, on the way back, and in the shuttle.
  const std::pair<int, const wchar_t*> cases[] = {
      {3, L"正向运动无法到位"}, {15, L"反向运动无法到位"}, {24, L"无法回中"}, {27, L"反向运动无法到位"}};
  for (const auto& [silent_at, words] : cases) {
    simulator::Journal_Clear();
    C_Thread silencer;
    silencer.Start("silencer", [&, at = silent_at] {
      while (position_commands() < at) Sleep(1);
      simulator::Set_Silent(3, true);
    });
    EXPECT_EQ(check(), 0);
    simulator::Set_Silent(3, false);
    Sleep(2000);
    expected.insert(expected.end(), {L"CANID:3  Get_InterRunFlag无法读取数据通道", L"TillStop无法获取数据",
                                     std::wstring(L"ID:9的驱动器") + words});
  }
  simulator::Set_Silent(3, true);
  EXPECT_EQ(check(), 0);
  expected.insert(expected.end(), {L"Check_Ready无法获取数据通道", L"ID:9的驱动器无法回零"});
  EXPECT_EQ(m_Front->Boxes(), expected);
}

}  // namespace
}  // namespace orsanta
