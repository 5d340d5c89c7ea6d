#include <sched.h>

#include <thread>

#include "common/thread_levels.h"
#include "station_room.h"

namespace orsanta {
namespace {

using testing::ElementsAre;

class Landing : public C_Station_Test {
 protected:
  void Land_On_Part() {
    bench::Place_Part(Id, 3.0);
    EXPECT_EQ(station->Land_To(20.0F, 1.5F, 10.0F), 1);
  }
};

TEST_F(Landing, Presses_With_The_Current_Whichever_Way_The_Limit_Is_Set) {
  for (const int flag : {1, 0}) {
    EXPECT_EQ(station->Set_RunNegative(flag), 1);
    bench::Journal_Clear();
    Land_On_Part();
    Sleep(300);
    EXPECT_NEAR(bench::True_Position(Id), 6.0, 0.001);
    EXPECT_NEAR(bench::True_Force(Id), -4.0 + 150.0 - 9.0 + 10.8 - 13.5, 1.0);  // the truth at 1.5 A and 6 mm
    const int count = C_VoiceMotor::Force_Back_Count();
    EXPECT_EQ(station->Force_Back(20.0F), 1);
    EXPECT_EQ(C_VoiceMotor::Force_Back_Count(), count + 1);
    EXPECT_NEAR(bench::True_Position(Id), 0.0, 0.1);  // it waited for the end of the move
    EXPECT_THAT(Written(3), ElementsAre(20.0, 20.0));
    EXPECT_THAT(Written(2), ElementsAre(1.5, 40.0));
    EXPECT_THAT(Written(9), ElementsAre(-40.0));
  }
  EXPECT_THAT(front->Boxes(), testing::IsEmpty());
}

// A thread ahead of the reader of positions takes the one processor for longer than a start lasts.
TEST(Start, Has_Positions_For_The_First_Move_On_A_Busy_Machine) {
  const C_Temp_Folder folder;
  const C_Scripted_Front_Holder front;
  bench::Reset();
  const C_VoiceMotor connected(1, 0, 0, 0, 1, 1, -1, -1, -1);
  std::thread([] {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(sched_getcpu()), &one);
    sched_setaffinity(0, sizeof(one), &one);
    if (!Become_Real_Time(30)) return;
    std::thread busy([] {
      Become_Real_Time(20);
      for (const double until_ms = Now_Ms() + 150.0; Now_Ms() < until_ms;) continue;
    });
    const C_VoiceMotor started(2, 0, 0, 2, 3, 1, -1, -1, -1);
    double position = 77.0;
    EXPECT_EQ(started.m_pMotor->Get_Cur_Pos(position), 1);
    EXPECT_NEAR(position, bench::True_Position(2), 0.01);
    busy.join();
  }).join();
}

TEST_F(Landing, Stuck_Probe_Is_Tried_Three_Times_And_Reported) {
  Land_On_Part();
  bench::Set_Stuck(Id, true);
  bench::Journal_Clear();
  const double begin = Now_Ms();
  station->Val_BeginePoint_offset = 0.5;
  station->Force_Back(20.0F);
  EXPECT_THAT(front->Boxes(), ElementsAre(L"canid:1 force_back_timeout 最小电流过小 "));
  EXPECT_NEAR(Now_Ms() - begin, 2 * 5000.0, 1000.0);
  // Three tries with the retract target, then held where it is, and last sent to 0.
  constexpr double Unit = 65536000.0;
  EXPECT_THAT(Written(0),
              ElementsAre(0.5 * Unit, 0.5 * Unit, 0.5 * Unit, testing::DoubleNear(6.0 * Unit, 0.002 * Unit), 0.0));
}

TEST_F(Landing, Silent_Drive_Is_Reported_And_The_Wait_Goes_On_Until_It_Speaks) {
  Land_On_Part();
  station->Val_BeginePoint_offset = 5.0;  // not where a position that cannot be read seems to be
  Fall_Silent();
  station->Land_To(20.0F, 1.5F, 10.0F);
  EXPECT_EQ(front->Count_Boxes(L"等待电流设定超时"), 1);
  C_Thread helper;
  helper.Start("helper", [&] {
    EXPECT_TRUE(front->Wait_For_Box(L"最小电流过小", 120000.0));
    Sleep(2000);
    bench::Set_Silent(Id, false);
  });
  station->Force_Back(20.0F);
  helper.Join();
  EXPECT_EQ(front->Count_Boxes(L"canid:1 force_back_timeout Get_InterRunFlag"), 3);
  EXPECT_GT(front->Count_Boxes(L"CANID:1读取位置超时,请检查驱动器电源"), 100);
  EXPECT_GT(front->Count_Boxes(L"CANID:1  Get_InterRunFlag无法读取数据通道"), 10);
}

TEST_F(Landing, Reference_Is_The_Observed_Position_Whatever_It_Was) {
  Use_Linear_Model();
  bench::Place_Part(Id, 5.0);
  station->Val_Block_Size = 5.0;
  station->Set_Cur_BaseDistance(-123.4F);
  EXPECT_NEAR(station->Correct_Base(20.0F, 2.0F), 4.0, 0.001);
  EXPECT_NEAR(station->Cur_BaseDistance, station->m_Observed, 1e-12);
  EXPECT_LT(bench::True_Position(Id), 1.0);
  EXPECT_NEAR(station->Store_Position(), 0.0, 0.001);  // against the corrected reference
  EXPECT_EQ(station->Val_Pos_Set[0], station->Val_Pos_Set[2]);
}

// On the real clock, where threads do run at once: what the panel, the host and the loop do beside a running cycle.
TEST(Station, Works_While_Others_Read_Clear_And_Save) {
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  bench::Reset();
  C_VoiceMotor station(Id, 0, 0, 0, 1, 1, -1, -1, -1);
  bench::Place_Part(Id, 8.0);
  C_Thread lane;
  lane.Start("lane", [&] {
    for (int i = 0; i < 3; ++i) {
      station.Detection_thickness(100.0F, static_cast<float>(station.Landing_Current(50.0)));
      station.Force_Back(100.0F);
    }
    station.Set_Test_Finish();
  });
  while (station.Take_Test_Finish() == 0) {
    if (station.SlowTestData.Copy().GetSize() > 100) station.ThicknessArray.Clear();
    station.Surface_Fit(Array({1, 2, 3, 1, 2, 3}), Array({1, 1, 1, 2, 2, 2}), Array({95, 195, 295, 93, 193, 293}));
    station.Val_Force_Set[0] = station.m_CurForce;
    station.Save();
    station.Renew_Debug_Com();
    Sleep(1);
  }
  EXPECT_EQ(station.Get_Test_Finish(), 0);
  EXPECT_GE(station.TestTimeArray.GetSize(), 1);  // a busy machine may keep samples back
}

}  // namespace
}  // namespace orsanta
