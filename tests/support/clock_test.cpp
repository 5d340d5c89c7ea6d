#include "support/clock.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "support/critical_section.h"
#include "support/thread.h"

namespace orsanta {
namespace {

// Runs threads that sleep, share a lock and wait for each other, and writes down what happened when.
std::string Trace_Of(uint64_t seed) {
  const C_Simulated_Clock clock(seed);
  std::string trace;
  CMyCriticalSection section;
  std::mutex lock;
  C_Wait_Point changed("changed");
  int turns = 0;
  C_Thread threads[5];
  for (int id = 0; id < 5; ++id) {
    threads[id].Start("thread " + std::to_string(id), [&, id] {
      const auto note = [&](const char* what) { trace += std::to_string(id) + what + std::to_string(Now_Ms()) + "\n"; };
      for (int i = 0; i < 20; ++i) {
        section.Lock();
        note(" holds ");
        Sleep(i % 3);
        section.Unlock();
        std::unique_lock<std::mutex> holder(lock);
        ++turns;
        changed.Notify_All();
        const int seen = turns;
        const double until_ms = Now_Ms() + 1.5;
        while (turns == seen) {
          if (!changed.Wait_Until(holder, until_ms)) break;
        }
        note(turns == seen ? " gave up " : " was told ");
      }
    });
  }
  for (C_Thread& thread : threads) thread.Join();
  return trace;
}

TEST(SimulatedClock, ASeedReplaysARunExactly) {
  const std::string first = Trace_Of(7);
  EXPECT_THAT(first, testing::AllOf(testing::HasSubstr("gave up"), testing::HasSubstr("was told")));
  EXPECT_EQ(first, Trace_Of(7));
  EXPECT_NE(first, Trace_Of(8));
}

TEST(SimulatedClock, SleepsAndWaitsEndAtTheirTimes) {
  const C_Simulated_Clock clock(1);
  std::vector<std::pair<int, double>> ends;
  C_Thread threads[4];
  for (int id = 0; id < 4; ++id) {
    threads[id].Start("sleeper", [&, id] {
      Sleep(40 - 10 * id);
      ends.emplace_back(id, Now_Ms());
    });
  }
  EXPECT_EQ(Now_Ms(), 0.0);
  for (C_Thread& thread : threads) thread.Join();
  using testing::Pair;
  EXPECT_THAT(ends, testing::ElementsAre(Pair(3, 10.0), Pair(2, 20.0), Pair(1, 30.0), Pair(0, 40.0)));
  // A thread that only lets others run does not move time, and every ready thread gets its turn.
  bool ran = false;
  C_Thread other;
  other.Start("other", [&ran] { ran = true; });
  for (int i = 0; i < 1000 && !ran; ++i) Sleep(0);
  EXPECT_TRUE(ran);
  EXPECT_EQ(Now_Ms(), 40.0);

  std::mutex lock;
  std::unique_lock<std::mutex> holder(lock);
  C_Wait_Point point("point");
  EXPECT_FALSE(point.Wait_Until(holder, 47.25));
  EXPECT_FALSE(point.Wait_Until(holder, 1.0)) << "a time that is past";
  EXPECT_EQ(Now_Ms(), 47.25);
}

TEST(SimulatedClock, EightHoursPassInMoments) {
  const C_Simulated_Clock clock(2);
  constexpr int Hours_8_In_S = 8 * 3600;
  C_Thread thread;
  thread.Start("second sleeper", [] {
    for (int i = 0; i < Hours_8_In_S; ++i) Sleep(1000);
  });
  for (int i = 0; i < 8 * Hours_8_In_S; ++i) Sleep(125);
  thread.Join();
  EXPECT_EQ(Now_Ms(), Hours_8_In_S * 1000.0);
  EXPECT_EQ(Local_Time_Now().hour, 8);
}

void Wait_Without_End() {
  const C_Simulated_Clock clock(1);
  std::mutex lock;
  C_Wait_Point never("a place that nobody notifies");
  C_Thread thread;
  thread.Start("the waiter", [&] {
    std::unique_lock<std::mutex> holder(lock);
    never.Wait(holder);
  });
  thread.Join();
}

TEST(SimulatedClockDeathTest, TellsWhoWaitsWhereWhenNothingCanHappen) {
  EXPECT_DEATH(Wait_Without_End(),
               "installing thread waits in C_Thread::Join\n  the waiter waits in a place that nobody");
}

TEST(SystemClock, SleepsAtLeastAndIsNotifiedAtOnce) {
  const double start_ms = Now_Ms();
  Sleep(20);
  EXPECT_GE(Now_Ms() - start_ms, 20.0);
  std::mutex lock;
  C_Wait_Point point("point");
  bool told = false;
  C_Thread notifier;
  notifier.Start("notifier", [&] {
    const std::lock_guard<std::mutex> holder(lock);
    told = true;
    point.Notify_All();
  });
  std::unique_lock<std::mutex> holder(lock);
  const double until_ms = Now_Ms() + 60000.0;
  while (!told) ASSERT_TRUE(point.Wait_Until(holder, until_ms));
  holder.unlock();
  EXPECT_TRUE(notifier.Join(60000.0));
  holder.lock();
  const double late_ms = Now_Ms() + 5.0;
  while (point.Wait_Until(holder, late_ms)) {
  }
  EXPECT_GE(Now_Ms(), late_ms);
}

}  // namespace
}  // namespace orsanta
