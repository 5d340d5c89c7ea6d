#include "host/motor_self_test.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "bench/bench.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "support/clock.h"

namespace orsanta {
namespace {

TEST(Thread_Numbers, HandsOutTheLowestFreeNumber) {
  CMyArray<int> pool;
  for (int n = 1; n <= Thread_Number_Max; ++n) EXPECT_EQ(Take_Thread_Number(pool), n);
  EXPECT_EQ(Take_Thread_Number(pool), 0);
  for (const int n : {17, 3}) EXPECT_EQ(Give_Back_Thread_Number(pool, n), 1);
  EXPECT_EQ(Give_Back_Thread_Number(pool, 17), 0);
  for (const int n : {3, 17, 0}) EXPECT_EQ(Take_Thread_Number(pool), n);
}

// Runs the test and gives how many workers passed; each of the ten must tell its outcome once.
int Run_Self_Test() {
  const C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  {
    C_MyMutiMotorTest test;
    while (test.BeAtLeaseOneDelayTaskInProcess() != 0) Sleep(10);
  }
  int passed = 0;
  for (int id = 1; id <= C_MyMutiMotorTest::Worker_Count; ++id) {
    const int good = front->Count_Boxes(Format_Text(L"ID:%d的驱动器测试成功", id).Text());
    EXPECT_EQ(good + front->Count_Boxes(Format_Text(L"ID:%d的驱动器测试失败", id).Text()), 1) << id;
    passed += good;
  }
  return passed;
}

// The ten share one drive: while the first lets it home, the others find it not ready.
TEST(Self_Test, OneWorkerGetsThroughOnAGoodDriveAndNoneWithoutADrive) {
  const C_Simulated_Clock clock(1);
  bench::Reset();
  EXPECT_EQ(Run_Self_Test(), 1);
  const std::vector<bench::Journal_Entry> journal = bench::Journal();
  const auto calls = [&](const std::string& function) {
    return std::count_if(journal.begin(), journal.end(), [&](const auto& call) { return call.function == function; });
  };
  EXPECT_EQ(calls("ConnectControlServer"), 2);  // one opening: before and after the rebuild
  EXPECT_EQ(calls("ReleaseDevice"), 1);
  EXPECT_EQ(journal.back().function, "ReleaseDevice");  // with the last worker

  bench::Set_Absent(1, true);
  EXPECT_EQ(Run_Self_Test(), 0);
}

}  // namespace
}  // namespace orsanta
