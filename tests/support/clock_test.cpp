#include "support/time/clock.h"

#include <gmock/gmock.h>

#include <ctime>
#include <set>
#include <thread>

#include "simulated_clock/simulated_clock.h"
#include "support/system/wide_string.h"
#include "support/threads/thread.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

TEST(Simulated_Clock, Sleeps_And_Waits_End_At_Their_Times) {
  const C_Simulated_Clock clock(1);
  C_Leaf_Lock lock;
  C_Wait_Point point("point"), other_point("other point");
  std::string ends;
  C_Thread threads[4];
  for (int id = 0; id < 4; ++id) {
    threads[id].Start("sleeper", [&, id] {
      Sleep(40 - 10 * id);
      const C_Lock_Guard hold(lock);
      point.Notify_All();
      const bool told = point.Wait_Until(lock, Now_Ms() + (id == 1 ? 5.0 : 12.25));
      ends += Format_Utf8("%d %s at %.2f\n", id, told ? "was told" : "gave up", Now_Ms());
      other_point.Notify_All();
    });
  }
  for (C_Thread& thread : threads) thread.Join();
  EXPECT_EQ(ends, "3 was told at 20.00\n2 was told at 30.00\n1 gave up at 35.00\n0 gave up at 52.25\n");
  const C_Lock_Guard hold(lock);
  EXPECT_FALSE(point.Wait_Until(lock, 1.0)) << "a time that is past";
  EXPECT_EQ(Now_Ms(), 52.25);
}

// To the system the threads of the simulated clock are one thread, with one row of exceptions.
TEST(Simulated_Clock, Threads_Keep_Their_Exceptions_And_Numbers_Apart) {
  const C_Simulated_Clock clock(1);
  int told[3] = {-1, -1, -1};
  std::set<uint64_t> numbers = {This_Thread_Number()};
  C_Thread threads[3];
  for (int id = 0; id < 3; ++id) {
    threads[id].Start("thrower", [&, id] {
      numbers.insert(This_Thread_Number());
      Sleep(id);
      try {
        try {
          throw id;
        } catch (int) {
          Sleep(5 - 2 * id);  // the first that catches lets go last
          throw;
        }
      } catch (int caught) {
        told[id] = caught;
      }
    });
  }
  std::thread([&numbers] { numbers.insert(This_Thread_Number()); }).join();
  for (C_Thread& thread : threads) thread.Join();
  EXPECT_THAT(told, testing::ElementsAre(0, 1, 2));
  EXPECT_EQ(numbers.size(), 5U);
  EXPECT_EQ(numbers.count(0), 0U);
}

TEST(Simulated_Clock_DeathTest, Tells_What_It_Cannot_Serve) {
  const auto wait_without_end = [] {
    const C_Simulated_Clock clock(1);
    CMyCriticalSection section;
    const C_Lock_Guard hold(section);
    C_Thread thread;
    thread.Start("the waiter", [&section] { const C_Lock_Guard never(section); });
  };
  EXPECT_DEATH(wait_without_end(),
               "at 0.000 ms every thread waits and none has a wake-up time:\n"
               "  installing thread waits in C_Thread::Join\n  the waiter waits in CMyCriticalSection::Lock\n");
  const C_Simulated_Clock clock(1);
  EXPECT_DEATH(std::thread([] { Sleep(1); }).join(), "was not made through support/threads/thread");
}

TEST(System_Clock, Sleeps_To_The_Nearest_Tick_And_Is_Notified_At_Once) {
  const double start_ms = Now_Ms();
  Sleep(20);
  EXPECT_GE(Now_Ms() - start_ms, 19.5);
  const C_Local_Time now = Local_Time_Now();
  std::tm parts{now.second, now.minute, now.hour, now.day, now.month - 1, now.year - 1900, 0, 0, -1, 0, nullptr};
  EXPECT_NEAR(static_cast<double>(std::mktime(&parts)), static_cast<double>(std::time(nullptr)), 1.0);
  C_Leaf_Lock lock;
  C_Wait_Point point("point");
  const C_Lock_Guard hold(lock);
  C_Thread notifier;
  notifier.Start("notifier", [&] {
    const C_Lock_Guard other(lock);
    point.Notify_All();
  });
  EXPECT_TRUE(point.Wait_Until(lock, start_ms + 60000.0));
  const double late_ms = Now_Ms() + 5.0;
  while (point.Wait_Until(lock, late_ms)) continue;
  EXPECT_GE(Now_Ms(), late_ms);
}

}  // namespace
}  // namespace orsanta
