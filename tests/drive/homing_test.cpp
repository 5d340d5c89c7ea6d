#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "drive/motor.h"
#include "drive/room.h"

namespace orsanta {
namespace {

using Texts = std::vector<std::wstring>;

class C_Homing_Test : public C_Room {
 protected:
  static constexpr int Id = 3;

  static int Position_Commands() {
    int count = 0;
    for (const bench::Journal_Entry& call : bench::Journal()) {
      if (call.function == "OUTPUT_DATA" && call.arguments.rfind("60, ", 0) == 0) ++count;
    }
    return count;
  }
};

TEST_F(C_Homing_Test, A_Sound_Drive_Runs_Over_Its_Stroke) {
  bench::Reset();
  C_Kestrune_Motor_test motor(Id, 1, 1);
  double max = 0.0;
  double min = 0.0;
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 1);
  EXPECT_LT(min, 0.5);
  EXPECT_GT(max, 5.0);
  EXPECT_LT(max, 20.0);
  // Ten steps out and ten back, give or take a rounded sum; twenty of the shuttle; the last one home.
  EXPECT_GE(Position_Commands(), 41);
  EXPECT_LE(Position_Commands(), 43);
  EXPECT_NEAR(bench::True_Position(Id), min, 0.1);
  EXPECT_TRUE(m_Front->Boxes().empty());
}

TEST_F(C_Homing_Test, The_First_Failure_Ends_It_With_Its_Words) {
  const std::wstring no_flag = L"CANID:3  Get_InterRunFlag无法读取数据通道";
  const std::wstring no_data = L"TillStop无法获取数据";
  const std::wstring drive = L"ID:9的驱动器";
  struct C_Case {
    int silent_at;  // the drive goes silent at this position command
    const wchar_t* words;
  };
  for (const C_Case& c : {C_Case{3, L"正向运动无法到位"}, C_Case{15, L"反向运动无法到位"}, C_Case{24, L"无法回中"}}) {
    bench::Reset();
    m_Front->Clear_Record();
    C_Kestrune_Motor_test motor(Id, 1, 1);
    const C_When silence([&c] { return Position_Commands() >= c.silent_at; }, [] { bench::Set_Silent(Id, true); });
    double max = 0.0;
    double min = 0.0;
    EXPECT_EQ(motor.Home_And_Check(9, max, min), 0);
    EXPECT_EQ(m_Front->Boxes(), (Texts{no_flag, no_data, drive + c.words})) << c.silent_at;
  }
}

TEST_F(C_Homing_Test, A_Drive_That_Cannot_Start_Says_Why) {
  bench::Reset();
  bench::Set_Absent(Id, true);
  C_Kestrune_Motor_test motor(Id, 1, 1);
  double max = 0.0;
  double min = 0.0;
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 0);
  EXPECT_EQ(m_Front->Boxes().size(), 1U);  // the report of the search alone
  EXPECT_EQ(m_Front->Count_Boxes(L"请检查CAN线路"), 1);

  bench::Set_Absent(Id, false);
  ASSERT_EQ(motor.Map_Once(), 1);
  bench::Set_Silent(Id, true);
  Sleep(10);
  m_Front->Clear_Record();
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 0);
  EXPECT_EQ(m_Front->Boxes(), (Texts{L"Check_Ready无法获取数据通道", L"ID:9的驱动器无法回零"}));

  bench::Set_Silent(Id, false);
  bench::Set_Slow_Homing(Id, true);
  Sleep(10);
  m_Front->Clear_Record();
  const double before = Now_Ms();
  EXPECT_EQ(motor.Home_And_Check(9, max, min), 0);
  EXPECT_EQ(m_Front->Boxes(), Texts{L"ID:9的驱动器无法测量行程"});
  EXPECT_GE(Now_Ms() - before, 5000.0);
}

}  // namespace
}  // namespace orsanta
