// The clocks, real and simulated, and the locks.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <set>
#include <thread>

#include "simulated_clock/simulated_clock.h"
#include "support/system/wide_string.h"
#include "support/threads/thread.h"
#include "support/time/clock.h"
#include "support/time/critical_section.h"
#include "support/time/lock.h"

namespace {
std::atomic<bool> the_Kernel_Lends{true};
}

// In the place of the system's, which it calls: a kernel without priority inheritance refuses the mutex here.
extern "C" int pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) noexcept {
  static const auto system_call = reinterpret_cast<decltype(&pthread_mutex_init)>(dlsym(RTLD_NEXT, __func__));
  int protocol = PTHREAD_PRIO_NONE;
  if (attributes != nullptr) pthread_mutexattr_getprotocol(attributes, &protocol);
  return protocol == PTHREAD_PRIO_INHERIT && !the_Kernel_Lends ? ENOTSUP : system_call(mutex, attributes);
}

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

bool Makes_Others_Wait(C_Leaf_Lock& lock) {
  std::atomic<bool> others_got_in{false};
  bool waited = false;
  std::thread other;
  {
    const C_Lock_Guard hold(lock);
    other = std::thread([&] {
      const C_Lock_Guard hold_too(lock);
      others_got_in = true;
    });
    usleep(20000);
    waited = !others_got_in;
  }
  other.join();
  return waited;
}

TEST(Leaf_Lock, Is_A_Plain_Lock_Where_The_Kernel_Lends_No_Priority) {
  alignas(C_Leaf_Lock) unsigned char bytes[sizeof(C_Leaf_Lock)];
  std::memset(bytes, 0xFF, sizeof bytes);  // what was never made a mutex lets everybody in
  the_Kernel_Lends = false;
  auto* lock = new (bytes) C_Leaf_Lock;
  the_Kernel_Lends = true;
  EXPECT_TRUE(Makes_Others_Wait(*lock));
}

TEST(Leaf_Lock_DeathTest, A_Static_One_Still_Locks_While_The_Process_Ends) {
  const auto end_with_a_static_lock = [] {
    static C_Leaf_Lock* used = nullptr;
    std::atexit([] { _exit(Makes_Others_Wait(*used) ? 0 : 1); });  // after the destructors of later static objects
    static C_Leaf_Lock lock;
    used = &lock;
    std::exit(2);
  };
  EXPECT_EXIT(end_with_a_static_lock(), testing::ExitedWithCode(0), "");
}

// Runs a function on a thread of the processor at that real-time level.
template <class Body>
std::thread Start(int processor, int level, Body body) {
  return std::thread([=] {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(processor), &one);
    sched_setaffinity(0, sizeof one, &one);
    const sched_param parameter{.sched_priority = level};
    body(pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameter) == 0);
  });
}

template <class Lock>
class Priority : public testing::Test {};
using Locks = testing::Types<C_Leaf_Lock, CMyCriticalSection>;
TYPED_TEST_SUITE(Priority, Locks);

// The low thread holds the lock while the middle one keeps the processor busy: without a loan it would release the lock
// only when the middle one has ended.
TYPED_TEST(Priority, Of_A_Waiter_Is_Lent_To_The_Holder) {
  TypeParam lock;
  std::atomic<bool> is_real_time{true}, held{false}, ready{false}, busy{false}, taken{false}, gave_up{false},
      came_late{false};
  const int processor = sched_getcpu();
  std::thread low = Start(processor, 1, [&](bool granted) {
    is_real_time = granted;
    const C_Lock_Guard hold(lock);
    held = true;
    while (granted && !busy) usleep(100);
  });
  while (!held) usleep(100);
  if (!is_real_time) {
    low.join();
    GTEST_SKIP() << "the system grants this user no real-time priority";
  }
  std::thread high = Start(processor, 3, [&](bool) {
    ready = true;
    while (!busy) usleep(100);
    const C_Lock_Guard hold(lock);
    came_late = gave_up.load();
    taken = true;
  });
  while (!ready) usleep(100);
  std::thread middle = Start(processor, 2, [&](bool) {
    busy = true;
    for (const double end_ms = Now_Ms() + 300.0; !taken && !gave_up;) gave_up = Now_Ms() > end_ms;
  });
  for (std::thread* thread : {&low, &high, &middle}) thread->join();
  EXPECT_FALSE(came_late);
}

}  // namespace
}  // namespace orsanta
