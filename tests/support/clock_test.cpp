#include "support/time/clock.h"

#include <gmock/gmock.h>
#include <sched.h>

#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "support/threads/thread.h"

namespace orsanta {
namespace {

TEST(Simulated_Clock, Gives_The_Processors_Back) {
  cpu_set_t sets[2];
  sched_getaffinity(0, sizeof sets[0], &sets[0]);
  C_Simulated_Clock(1);
  sched_getaffinity(0, sizeof sets[1], &sets[1]);
  EXPECT_TRUE(CPU_EQUAL(&sets[0], &sets[1]));
}

TEST(Simulated_Clock, Sleeps_And_Waits_End_At_Their_Times_And_Nobody_Is_Passed_Over) {
  const C_Simulated_Clock clock(1);
  C_Leaf_Lock lock;
  C_Wait_Point point("point"), other_point("other point");
  std::vector<std::string> ends;
  C_Thread threads[4];
  for (int id = 0; id < 4; ++id) {
    threads[id].Start("sleeper", [&, id] {
      Sleep(40 - 10 * id);
      const C_Lock_Guard hold(lock);
      point.Notify_All();
      const bool told = point.Wait_Until(lock, Now_Ms() + (id == 1 ? 5.0 : 12.25));
      ends.push_back(std::to_string(id) + (told ? " was told " : " gave up ") + std::to_string(Now_Ms()));
      other_point.Notify_All();
    });
  }
  EXPECT_EQ(Now_Ms(), 0.0);
  for (C_Thread& thread : threads) thread.Join();
  EXPECT_THAT(ends, testing::ElementsAre("3 was told 20.000000", "2 was told 30.000000", "1 gave up 35.000000",
                                         "0 gave up 52.250000"));
  // Threads that only let others run do not move time, and each ready one gets its share of the turns.
  int turns[3] = {};
  for (int id = 0; id < 3; ++id) {
    threads[id].Start("other", [&turns, id] {
      for (int i = 0; i < 300; ++i) {
        ++turns[id];
        Sleep(-1);
      }
    });
  }
  while (turns[0] + turns[1] + turns[2] < 300) Sleep(0);
  EXPECT_THAT(turns, testing::Each(testing::AllOf(testing::Gt(60), testing::Lt(140))));
  for (C_Thread& thread : threads) thread.Join();
  const C_Lock_Guard hold(lock);
  EXPECT_FALSE(point.Wait_Until(lock, 1.0)) << "a time that is past";
  EXPECT_EQ(Now_Ms(), 52.25);
}

void Wait_Without_End() {
  const C_Simulated_Clock clock(1);
  C_Leaf_Lock lock;
  C_Wait_Point never("a place that nobody notifies");
  C_Thread thread;
  thread.Start("the waiter", [&] {
    const C_Lock_Guard hold(lock);
    never.Wait(lock);
  });
  thread.Join();
}

TEST(Simulated_Clock_DeathTest, Tells_What_It_Cannot_Serve) {
  EXPECT_DEATH(Wait_Without_End(),
               "at 0.000 ms every thread waits and none has a wake-up time:\n"
               "  installing thread waits in C_Thread::Join\n  the waiter waits in a place that nobody");
  const auto leave_a_thread = [] {
    C_Thread thread;
    const C_Simulated_Clock clock(1);
    thread.Start("the sleeper", [] { Sleep(1); });
  };
  EXPECT_DEATH(leave_a_thread(), "still take part at its end:\n  installing thread\n  the sleeper");
  const C_Simulated_Clock clock(1);
  EXPECT_DEATH(C_Simulated_Clock(2), "one is installed already");
  EXPECT_DEATH(std::thread([] { Sleep(1); }).join(), "was not made through support/threads/thread");
}

TEST(System_Clock, Sleeps_At_Least_And_Is_Notified_At_Once) {
  const double start_ms = Now_Ms();
  Sleep(20);
  EXPECT_GE(Now_Ms() - start_ms, 20.0);
  const C_Local_Time now = Local_Time_Now();
  std::tm parts{now.second, now.minute, now.hour, now.day, now.month - 1, now.year - 1900, 0, 0, -1, 0, nullptr};
  EXPECT_NEAR(static_cast<double>(std::mktime(&parts)), static_cast<double>(std::time(nullptr)), 1.0);
  C_Leaf_Lock lock;
  C_Wait_Point point("point");
  const C_Lock_Guard hold(lock);
  bool told = false;
  C_Thread notifier;
  notifier.Start("notifier", [&] {
    const C_Lock_Guard other(lock);
    told = true;
    point.Notify_All();
  });
  while (!told) ASSERT_TRUE(point.Wait_Until(lock, start_ms + 60000.0));
  const double late_ms = Now_Ms() + 5.0;
  while (point.Wait_Until(lock, late_ms)) continue;
  EXPECT_GE(Now_Ms(), late_ms);
}

}  // namespace
}  // namespace orsanta
