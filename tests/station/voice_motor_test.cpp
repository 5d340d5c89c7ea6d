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

}  // namespace
}  // namespace orsanta
