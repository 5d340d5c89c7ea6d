#include "support/time/lock.h"

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "support/time/critical_section.h"

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
