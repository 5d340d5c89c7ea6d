#include "station_room.h"

namespace orsanta {
namespace {

using testing::ElementsAre;

class Thickness_Cycle : public C_Station_Test {
 protected:
  Thickness_Cycle() {
    Use_Linear_Model();
    station->Val_Block_Size = 2.0;
    bench::Place_Part(Id, 2.0);
    station->Correct_Base(20.0F, static_cast<float>(station->Force_To_Current(200.0)));
  }

  // Another thread gets the lock, or waits in vain.
  void Expect_Lock_Free() {
    C_Thread other;
    other.Start("other", [&] { const C_Section_Holder hold(station->m_TestLock); });
    EXPECT_TRUE(other.Join(1000.0));
  }
};

TEST_F(Thickness_Cycle, Measures_To_The_Micrometre_Against_The_Block) {
  EXPECT_NEAR(station->Cur_BaseDistance, bench::True_Contact_Position(Id), 0.001);
  for (const double part : {1.0, 6.0}) {
    bench::Place_Part(Id, part);
    EXPECT_NEAR(Measure(), part, 0.001);
    EXPECT_EQ(station->Ans_Valid, 1);
    station->Force_Back(20.0F);
  }
  EXPECT_THAT(front->Boxes(), testing::IsEmpty());
  EXPECT_EQ(station->ThicknessArray.GetSize(), 3);
  EXPECT_EQ(station->TestTimeArray.GetSize(), 3);
  EXPECT_GE(station->SlowTestData.GetSize(), 3 * 50);
  EXPECT_EQ(station->ThicknessArray.Copy()[2], station->Last_Land_Pos);
  EXPECT_NEAR(station->m_CurForce, 200.0, 2.0);

  // The next cycle first stops where this part was.
  bench::Journal_Clear();
  Measure();
  ASSERT_EQ(Written(0).size(), 2U);
  EXPECT_NEAR(Written(0)[0] / 65536000.0, 3.0, 0.001);
  EXPECT_NEAR(Written(0)[1] / 65536000.0, 10.0, 1e-6);

  EXPECT_EQ(station->TempArray.GetSize(), 0);  // no board
  station->Val_TempSensorCanID = Board + 0.7;
  bench::Set_Temperature(Board, 31.5);
  bench::Set_Silent(Board, true);
  Make_Station();
  Measure();
  bench::Set_Silent(Board, false);
  Measure();
  EXPECT_EQ(station->TempArray.Copy()[0], 0.0);  // a board that sends nothing
  EXPECT_NEAR(station->TempArray.Copy()[1], 31.5, 0.1);
  station.reset();
  C_VoiceMotor::Release_Temp_Sensors();
}

TEST_F(Thickness_Cycle, Failures_Show_In_Band_And_Leave_The_Lock_Free) {
  const double last = station->Last_Land_Pos;
  for (const double window : {0.0, -5.0}) {
    station->Val_ErrorWindowLen = window;
    EXPECT_EQ(Measure(), 0.0);
  }
  EXPECT_THAT(front->Boxes(), ElementsAre(L"位置数据空，检测位置失败", L"位置数据空，检测位置失败"));
  Expect_Lock_Free();
  Fall_Silent();
  EXPECT_EQ(Measure(), -99.0);
  Expect_Lock_Free();
  EXPECT_EQ(station->ThicknessArray.GetSize(), 1);
  EXPECT_EQ(station->Last_Land_Pos, last);
  EXPECT_EQ(station->Ans_Valid, 1);

  // A part that never settles: the limit goes by stroke and speed.
  bench::Set_Silent(Id, false);
  station->Force_Back(20.0F);
  front->Clear_Record();
  station->Val_ErrorWindowLen = 50.0;
  bench::Set_Restless(Id, 0.05);
  EXPECT_EQ(Measure(), station->Cur_BaseDistance + 2.0);
  EXPECT_THAT(front->Boxes(), ElementsAre(L"等待测量值稳定超时"));
  EXPECT_EQ(station->Ans_Valid, 0);
  EXPECT_EQ(station->Last_Land_Pos, 0.0);
  EXPECT_EQ(station->ThicknessArray.Copy()[1], 0.0);
  EXPECT_GT(station->m_TestTime, 2500.0);  // 10 mm at 20 mm/s, and 2 s
  EXPECT_LT(station->m_TestTime, 4000.0);

  // Without a last position the next cycle has one leg; a quiet part then measures well again.
  bench::Set_Restless(Id, 0.0);
  station->Force_Back(20.0F);
  bench::Journal_Clear();
  EXPECT_NEAR(Measure(), 2.0, 0.001);
  EXPECT_EQ(Written(0).size(), 1U);
}

}  // namespace
}  // namespace orsanta
