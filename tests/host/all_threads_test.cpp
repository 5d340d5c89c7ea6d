// All threads of a system at once, on the system clock: what the simulated clock runs one after the other truly
// overlaps here, for the thread sanitizer to see.
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <list>

#include "common/arrays.h"
#include "common/pty.h"
#include "common/resources.h"
#include "common/temp_folder.h"
#include "common/thread_levels.h"
#include "host/motor_base.h"
#include "host/task_app.h"
#include "simulator/simulator.h"
#include "station/link_settings.h"
#include "station/voice_motor.h"
#include "support/threads/thread.h"
#include "support/time/clock.h"

namespace orsanta {

TEST(All_Threads, Work_On_The_Same_Stations) {
  constexpr int Stations = 3;
  const C_Temp_Folder folder;
  C_Pty host(1);
  C_Pty link(2);
  Store_Link(1, 2);
  simulator::Reset();
  for (int n = 1; n <= Stations; ++n) simulator::Place_Part(n, 5.0);
  C_VoiceMotorBase base(Resource_Table({1, 2, 3}), 1, 115200, 0, 1);

  const double until = Now_Ms() + 2500.0;
  std::atomic<int> results{0};
  std::list<C_Thread> threads;
  const auto repeat = [&](int pause_ms, std::function<void(int)> work) {
    threads.emplace_back().Start("worker", [until, pause_ms, work = std::move(work)] {
      for (int i = 0; Now_Ms() < until; ++i) {
        work(i);
        Sleep(pause_ms);
      }
    });
  };
  for (int caller = 0; caller < 2; ++caller)
    repeat(1, [&](int i) {
      double thickness = 0.0, force = 0.0;
      results += base.get_ans(1 + i % Stations, &thickness, &force);
    });
  repeat(200, [&](int i) { base.do_test(1 + i % Stations, i % 2 == 0 ? Task_Force_Difference : Task_Force_Back); });
  repeat(3, [&](int i) { simulator::Set_Input(1 + i % Stations, i / 200 % 2); });
  repeat(5, [&](int i) {
    C_VoiceMotor& station = *base.StationList[i % Stations];
    station.Val_Force_Set[0] = station.Test_Force[0] = 150.0 + i % 50;
    station.Val_Block_Size = 5.0;
    if (i % 50 == 0) station.Save();
    station.Surface_Fit(Array({1, 2, 3, 1, 2, 3}), Array({1, 1, 1, 2, 2, 2}), Array({95, 195, 295, 93, 193, 293}));
    if (station.SlowTestData.Copy().GetSize() > 100) station.ThicknessArray.Clear();
  });
  repeat(20, [&](int i) {
    host.Send("C");
    link.Send(i % 10 == 0 ? "T" : "x");
    host.Take();
    link.Take();
  });
  repeat(70, [&](int) {  // as the panel does; each link finds the port free
    base.StationList[0]->Renew_Debug_Com();
    EXPECT_EQ(base.StationList[0]->Debug_Com()->Is_Open(), 1);
  });
  repeat(50, [&](int i) { base.LoopPaused = i % 4 == 0 ? 1 : 0; });
  for (C_Thread& thread : threads) thread.Join();
  base.LoopPaused = 0;
  EXPECT_GT(results, 0);

  if (geteuid() != 0) GTEST_SKIP() << "only root may raise a priority everywhere";
  auto levels = Thread_Levels();
  EXPECT_EQ(Thread_Level(), "nice -15");  // the caller of the start
  EXPECT_EQ(levels["lane 0"], std::set<std::string>{"nice -10"});
  EXPECT_EQ(levels["C_VoiceMotorBas"], std::set<std::string>{"real-time 10"});  // the loop
  EXPECT_EQ(levels["C_FIFO2Window"], std::set<std::string>{"real-time 11"});
}

}  // namespace orsanta
