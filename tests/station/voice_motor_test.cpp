#include <sched.h>

#include <thread>

#include "common/thread_levels.h"
#include "station_room.h"

namespace orsanta {
namespace {

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
  EXPECT_NE(station.Debug_Com(), nullptr);
  EXPECT_GE(station.TestTimeArray.GetSize(), 1);  // a busy machine may keep samples back
}

}  // namespace
}  // namespace orsanta
