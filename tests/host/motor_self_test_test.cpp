#include "apps/selftest/motor_self_test.h"

#include <atomic>
#include <thread>

#include "common/simulated_test.h"

namespace orsanta {

// In real time: what two threads hold at once differs, and in the end all is there again. The lowest goes first.
TEST(Thread_Numbers, Many_Threads_Share_One_Pool) {
  constexpr int Rounds = 100000;
  constexpr int Taken = 20;  // for good, so that the search for a free one is long
  CMyArray<int> pool;
  for (int n = 1; n <= Taken; ++n) EXPECT_EQ(Take_Thread_Number(pool), n);
  std::atomic<int> holders[Thread_Number_Max + 1] = {};
  std::atomic<int> shared{0};
  const auto take_and_give_back = [&] {
    for (int round = 0; round < Rounds; ++round) {
      const int number = Take_Thread_Number(pool);
      shared += holders[number]++;
      --holders[number];
      if (Give_Back_Thread_Number(pool, number) != 1) ++shared;
    }
  };
  std::thread threads[4];
  for (std::thread& thread : threads) thread = std::thread(take_and_give_back);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(shared, 0);
  for (const int n : {17, 3}) EXPECT_EQ(Give_Back_Thread_Number(pool, n), 1);
  EXPECT_EQ(Give_Back_Thread_Number(pool, 17), 0);
  for (const int n : {3, 17, 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31, 0}) EXPECT_EQ(Take_Thread_Number(pool), n);
}

using Self_Test = C_Simulated_Test;

// The ten share one drive: while the first lets it home, the others find it not ready.
TEST_F(Self_Test, One_Worker_Gets_Through_On_A_Good_Drive_And_None_Without_A_Drive) {
  // Runs the test and gives how many workers passed; each of the ten must tell its outcome once.
  const auto run = [this] {
    front->Clear_Record();
    {
      C_MyMutiMotorTest test;
      while (test.BeAtLeaseOneDelayTaskInProcess() != 0) Sleep(10);
    }
    int passed = 0;
    for (int id = 1; id <= C_MyMutiMotorTest::Worker_Count; ++id) {
      const int good = front->Count_Boxes(Format_Text("ID:%d的驱动器测试成功", id).Text());
      EXPECT_EQ(good + front->Count_Boxes(Format_Text("ID:%d的驱动器测试失败", id).Text()), 1) << id;
      passed += good;
    }
    for (const C_Shown& shown : front->Shown())
      EXPECT_EQ(shown.flags, shown.text.ends_with(L"测试失败") ? Box_Stop_Icon : Box_Plain) << To_Utf8(shown.text);
    return passed;
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(simulator::Journal().back().function, "ReleaseDevice");  // with the last worker
  simulator::Set_Absent(1, true);
  EXPECT_EQ(run(), 0);
}

}  // namespace orsanta
