#include "drive/motor.h"
#include "drive/room.h"

namespace orsanta {
namespace {

// The check of a drive that homes by itself: over its whole stroke when it is sound, then with a failure at each step.
TEST_F(Room, The_Check_Of_A_Drive_Runs_Over_Its_Stroke_Or_Ends_With_The_Words_Of_The_First_Failure) {
  Reset();
  C_Kestrune_Motor_test motor(3, 1, 1);
  double max = 0.0;
  double min = 0.0;
  const auto check = [&] { return motor.Home_And_Check(9, max, min); };
  const auto position_commands = [] { return Count("OUTPUT_DATA(1, 60, "); };
  bench::Set_Absent(3, true);
  EXPECT_EQ(check(), 0);
  EXPECT_EQ(m_Front->Boxes().size(), 1U);  // the report of the search alone
  m_Front->Clear_Record();
  bench::Set_Absent(3, false);
  EXPECT_EQ(check(), 1);
  EXPECT_LT(min, 0.5);
  EXPECT_NEAR(max, 9.0, 1.0);
  // Steps of a tenth of the stroke out and back, without the far ends but for a rounded sum; the shuttle; the way home.
  std::ostringstream expected_places;
  const auto go = [&](double mm) { expected_places << std::lround(mm * 65536000.0) << ' '; };
  for (double x = min; x < max; x += (max - min) / 10.0) go(x);
  for (double x = max; x > min; x -= (max - min) / 10.0) go(x);
  for (int pass = 0; pass < 5; ++pass)
    for (const double x : {max, (max + min) / 2.0, min, (max + min) / 2.0}) go(x);
  go(min);
  std::ostringstream places;
  for (const bench::Journal_Entry& call : bench::Journal())
    if (call.function == "OUTPUT_DATA" && call.arguments.rfind("60, ", 0) == 0)
      places << std::lround(std::stod(call.arguments.substr(4))) << ' ';
  EXPECT_EQ(places.str(), expected_places.str());
  EXPECT_NEAR(bench::True_Position(3), min, 0.1);
  EXPECT_TRUE(m_Front->Boxes().empty());

  bench::Set_Slow_Homing(3, true);
  EXPECT_EQ(check(), 0);
  bench::Set_Slow_Homing(3, false);
  Sleep(60000);
  Texts expected{L"ID:9的驱动器无法测量行程"};
  // The drive goes silent at a position command: on the way out, on the way back, and in the shuttle.
  const std::pair<int, const wchar_t*> cases[] = {
      {3, L"正向运动无法到位"}, {15, L"反向运动无法到位"}, {24, L"无法回中"}, {27, L"反向运动无法到位"}};
  for (const auto& [silent_at, words] : cases) {
    bench::Journal_Clear();
    C_Thread silencer;
    silencer.Start("silencer", [&, at = silent_at] {
      while (position_commands() < at) Sleep(1);
      bench::Set_Silent(3, true);
    });
    EXPECT_EQ(check(), 0);
    bench::Set_Silent(3, false);
    Sleep(2000);
    expected.insert(expected.end(), {L"CANID:3  Get_InterRunFlag无法读取数据通道", L"TillStop无法获取数据",
                                     std::wstring(L"ID:9的驱动器") + words});
  }
  bench::Set_Silent(3, true);
  EXPECT_EQ(check(), 0);
  expected.insert(expected.end(), {L"Check_Ready无法获取数据通道", L"ID:9的驱动器无法回零"});
  EXPECT_EQ(m_Front->Boxes(), expected);
}

// A drive that sends the ends of its stroke all the time: the check reads what was there before the measurement, passes
// without a step over the stroke the first time, and runs over the stroke of the measurement before ever after.
TEST_F(Room, The_Check_Reads_Old_Ends_Where_A_Drive_Sends_Them_All_The_Time) {
  bench::Settings settings;
  settings.cyclic_stroke = true;
  settings.counts_per_mm = 2000.0;
  Reset(settings);
  C_Kestrune_Motor_test motor(3, 1, 1);
  motor.SetScale(2000.0);
  motor.Map_Once();
  Sleep(1000);
  double max = 77.0;
  double min = 77.0;
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 1);
  EXPECT_EQ(max, 0.0);
  EXPECT_EQ(min, 0.0);
  bench::Place_Part(3, 4.0);
  Sleep(1000);
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 1);
  EXPECT_NEAR(max, 8.95, 0.01);
  EXPECT_TRUE(m_Front->Boxes().empty());
}

}  // namespace
}  // namespace orsanta
