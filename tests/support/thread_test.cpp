// Threads with a loop, task lanes, the clocks, the locks, and smart pointers that threads share.
#include "support/threads/thread.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <future>

#include "common/failed_check.h"
#include "common/thread_levels.h"
#include "simulated_clock/simulated_clock.h"
#include "support/threads/task_lanes.h"
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

// Four threads take turns at the same time; each goes on until the last has made that many, so that they overlap.
void On_Four_Threads(int least_turns, const std::function<void()>& turn) {
  std::atomic<int> ready{0};
  C_Thread threads[4];
  for (C_Thread& thread : threads) {
    thread.Start("one of four", [&] {
      for (int i = 1; ready < 4; ++i) {
        turn();
        if (i == least_turns) ++ready;
      }
    });
  }
}

struct C_Loop : CBaseBindThread {
  explicit C_Loop(int its_pass_ms) : pass_ms(its_pass_ms) {}
  ~C_Loop() override { ReleaseSubClass_CBaseBindThread(); }
  void OnThreadBegin(void* param) override { trace += *static_cast<std::string*>(param); }
  void OnThreadLoop(void*) override {
    trace += "(";
    Sleep(pass_ms);
    trace += ")";
  }
  const int pass_ms;
  std::string trace;  // touched by the loop while it runs
};

TEST(Bind_Thread, Begins_Once_Passes_Again_And_Again_And_Ends_After_A_Whole_Pass) {
  const C_Simulated_Clock clock(1);
  std::string begin = "begin";
  C_Loop loop(10);
  for (const int taken : {1, 0}) EXPECT_EQ(loop.BeginThread(&begin, 15, 2, 300000, nullptr), taken);
  Sleep(25);
  EXPECT_EQ(loop.EndThread(1, 1), 1);
  EXPECT_EQ(Now_Ms(), 30.0);
  loop.BeginThread(&begin, 15, 2, 300000, nullptr);
  Sleep(1);
  loop.EndThread(1, 1);
  EXPECT_EQ(loop.trace, "begin()()()begin()");
}

// Whatever its starter had.
TEST(Thread_Levels, Are_Places_That_Nobody_Inherits) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may raise a priority everywhere";
  for (int init = 1; init <= 2; ++init) {
    SetPriorityClass(Process_Class_High);
    SetThreadPriority(Priority_Above_Normal);
    std::string levels = Thread_Level();
    const auto add = [&levels] { levels += ", " + Thread_Level(); };
    Become_Real_Time();
    for (const int level : {Priority_Normal, Priority_Time_Critical, Priority_Sample_Reader})
      C_Thread().Start("started", add, level);  // and wait for its end
    SetThreadPriority(Priority_Time_Critical);
    std::thread(add).join();  // as a library starts one
    SetThreadPriority(Priority_Normal);
    add();
    EXPECT_EQ(levels, "nice -15, nice -10, real-time 10, real-time 11, nice 0, nice -10");
  }
}

TEST(Critical_Section, Is_Taken_Again_By_Its_Holder_And_Given_Back_By_Nobody_Else) {
  CMyCriticalSection section;
  {
    const C_Simulated_Clock clock(1);
    EXPECT_EQ(section.Unlock(), 0);
    for (int i = 0; i < 2; ++i) section.Lock();
    C_Thread other;
    other.Start("other", [&] {
      EXPECT_EQ(section.Unlock(), 0);
      const C_Lock_Guard holder(section);
      EXPECT_EQ(Now_Ms(), 20.0);
    });
    for (int i = 0; i < 2; ++i) {
      Sleep(10);
      EXPECT_EQ(section.Unlock(), 1);
    }
  }
  // Under contention on the real clock.
  int count = 0;  // plain: only the section guards it
  std::atomic<int> turns{0};
  On_Four_Threads(2000, [&] {
    const C_Lock_Guard holder(section);
    const C_Lock_Guard again(section);
    const int before = count;
    Sleep(0);
    count = before + 1;
    ++turns;
  });
  EXPECT_EQ(count, turns);
}

TEST(Smart_Pointer, Threads_Copy_And_Release_The_Same_Object) {
  CSmartPointer<int> shared(1);
  On_Four_Threads(20000, [&shared] {
    const std::vector<CSmartPointer<int>> copies(30, shared);
    CSmartPointer<int> own(1);
    own = shared;
  });
  EXPECT_EQ(smart_pointer_table::Live_Records(), 1);
  shared.ReleaseCurSmartPointReference();
  EXPECT_EQ(smart_pointer_table::Live_Records(), 0);
}

// Lanes whose task `code` takes that many milliseconds. Those of one test never write at the same instant.
class C_Lanes : public CQueueTask_MutiTask_Thread {
 public:
  explicit C_Lanes(int lanes) { Init(lanes, 0, 300000); }
  ~C_Lanes() override { ReleaseSubClass_CQueueTask_MutiTask_Thread(); }
  void OnProcessTask(int lane, int code, void* data) override {
    if (code > 0) Sleep(code);
    trace += std::to_string(lane) + " did " + std::to_string(code) + (data ? static_cast<char*>(data) : "\n");
  }
  void PreEndDelayTask(int lane) override { trace += std::to_string(lane) + " ends\n"; }
  std::string trace;
};

TEST(Task_Lanes, Run_Side_By_Side_Each_In_Order_Until_They_Are_Stopped) {
  const C_Simulated_Clock clock(5);
  C_Lanes lanes(2);
  char data[] = "!\n";
  EXPECT_EQ(lanes.AddNewDelayProcess(0, 50, 0, data), 1);
  lanes.AddNewDelayProcess(0, 10, 0, nullptr);
  lanes.AddNewDelayProcess(1, 20, 1, nullptr);
  Sleep(30);
  EXPECT_EQ(lanes.GetDelayProcessFifoCount(0), 2);  // the running one included
  EXPECT_EQ(lanes.BeAtLeaseOneDelayTaskInProcess(), 1);
  Sleep(35);
  EXPECT_EQ(lanes.BeAtLeaseOneDelayTaskInProcess(), 0);
  // A stop finishes what runs and drops what waits.
  for (int i = 0; i < 3; ++i) lanes.AddNewDelayProcess(1, 40, 0, nullptr);
  Sleep(10);
  for (int i = 0; i < 2; ++i) lanes.ReleaseSubClass_CQueueTask_MutiTask_Thread();
  EXPECT_EQ(Now_Ms(), 105.0);
  EXPECT_EQ(lanes.trace, "1 did 20\n0 did 50!\n0 did 10\n0 ends\n1 did 40\n1 ends\n");
  EXPECT_EQ(lanes.AddNewDelayProcess(1, 40, 0, nullptr), 0);
  EXPECT_EQ(lanes.GetDelayProcessFifoCount(1), 0) << "dropped once";
}

TEST(Task_Lanes, A_Refusal_Leaves_The_Queue_Unchanged_And_Ends_By_Itself) {
  const C_Simulated_Clock clock(5);
  C_Lanes lanes(1);
  int taken = 0;
  while (lanes.AddNewDelayProcess(0, 10, 1, nullptr) != 0) ++taken;
  EXPECT_EQ(taken, 64);
  EXPECT_EQ(lanes.GetDelayProcessFifoCount(0), taken);
  EXPECT_EQ(lanes.AddNewDelayProcess(0, 10, 0, nullptr), 1);
  while (lanes.AddNewDelayProcess(0, 1, 1, nullptr) == 0) Sleep(1);
  EXPECT_EQ(Now_Ms(), 20.0);
  while (lanes.BeAtLeaseOneDelayTaskInProcess() != 0) Sleep(1);
  EXPECT_EQ(Now_Ms(), 651.0);
}

TEST(Task_Lanes, Take_Tasks_From_Many_Threads_At_Once) {
  C_Lanes lanes(1);
  std::atomic<size_t> taken{0};
  On_Four_Threads(5000, [&] {
    while (lanes.AddNewDelayProcess(0, 0, 1, nullptr) == 0) continue;
    ++taken;
  });
  for (int i = 0; i < 10000 && lanes.GetDelayProcessFifoCount(0) != 0; ++i) Sleep(1);
  lanes.ReleaseSubClass_CQueueTask_MutiTask_Thread();
  EXPECT_EQ(lanes.trace.size(), std::string("0 did 0\n").size() * taken + std::string("0 ends\n").size());
}

TEST(Stop_DeathTest, A_Thread_Or_Lane_That_Does_Not_End_Is_Reported_By_Its_Name) {
  const C_Temp_Folder folder;
  C_Lanes made_twice(1);
  EXPECT_NE(0, Failed_Check_Line([&] { made_twice.Init(1, 0, 300000); }));
  made_twice.ReleaseSubClass_CQueueTask_MutiTask_Thread();  // before the processes split
  const auto stop_within = [](int pass_ms, int task_ms, const wchar_t* name) {
    const C_Simulated_Clock clock(1);
    C_Loop loop(pass_ms);
    C_Lanes lanes(2);
    lanes.AddNewDelayProcess(1, task_ms, 0, nullptr);
    loop.BeginThread(&loop.trace, 2, 2, 300000, name);
    Sleep(1);
  };
  for (const auto& [name, told] : {std::pair(L"a name of its own", "a name of its own"), {nullptr, "C_Loop"}})
    EXPECT_EXIT(stop_within(300002, 1, name), Ends_By_A_Failed_Check,
                "thread " + std::string(told) + " did not end within 300000 ms");
  EXPECT_EXIT(stop_within(1, 300002, nullptr), Ends_By_A_Failed_Check, "task lane 1 did not end within 300000 ms");
}

// To the system the threads of the simulated clock are one thread, with one row of exceptions.
TEST(Simulated_Clock, Threads_Keep_Their_Exceptions_Apart) {
  const C_Simulated_Clock clock(1);
  const auto sleep_with_an_exception = [](int ms) {
    try {
      throw ms;
    } catch (int) {
      const std::exception_ptr own = std::current_exception();
      Sleep(ms);
      EXPECT_TRUE(std::current_exception() == own) << ms;
    }
  };
  C_Thread other;
  other.Start("other", [&] { sleep_with_an_exception(20); });
  sleep_with_an_exception(10);  // the first that catches lets go first
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
  const std::future<void> notifier = std::async(std::launch::async, [&] {
    const C_Lock_Guard other(lock);
    point.Notify_All();
  });
  EXPECT_TRUE(point.Wait_Until(lock, start_ms + 60000.0));
  const double late_ms = Now_Ms() + 5.0;
  while (point.Wait_Until(lock, late_ms)) continue;
  EXPECT_GE(Now_Ms(), late_ms);
}

bool Makes_Others_Wait(C_Leaf_Lock& lock) {
  std::future<void> other;
  const C_Lock_Guard hold(lock);
  other = std::async(std::launch::async, [&lock] { const C_Lock_Guard hold_too(lock); });
  return other.wait_for(std::chrono::milliseconds(20)) == std::future_status::timeout;
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
std::thread Start(int processor, int level, std::function<void()> body) {
  return std::thread([=] {
    cpu_set_t one;
    CPU_ZERO(&one);
    CPU_SET(static_cast<size_t>(processor), &one);
    sched_setaffinity(0, sizeof one, &one);
    const sched_param parameter{.sched_priority = level};
    pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameter);
    body();
  });
}

template <class Lock>
class Priority : public testing::Test {};
using Locks = testing::Types<C_Leaf_Lock, CMyCriticalSection>;
TYPED_TEST_SUITE(Priority, Locks);

// The low thread holds the lock while the middle one keeps the processor busy: without a loan it would release the lock
// only when the middle one has ended.
TYPED_TEST(Priority, Of_A_Waiter_Is_Lent_To_The_Holder) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may raise a priority everywhere";
  TypeParam lock;
  std::atomic<bool> held{false}, ready{false}, busy{false}, taken{false}, gave_up{false};
  const int processor = sched_getcpu();
  std::thread low = Start(processor, 1, [&] {
    const C_Lock_Guard hold(lock);
    held = true;
    while (!busy) usleep(100);
  });
  while (!held) usleep(100);
  std::thread high = Start(processor, 3, [&] {
    ready = true;
    while (!busy) usleep(100);
    const C_Lock_Guard hold(lock);
    taken = true;
  });
  while (!ready) usleep(100);
  std::thread middle = Start(processor, 2, [&] {
    busy = true;
    for (const double end_ms = Now_Ms() + 300.0; !taken && !gave_up;) gave_up = Now_Ms() > end_ms;
  });
  for (std::thread* thread : {&low, &high, &middle}) thread->join();
  EXPECT_FALSE(gave_up) << "the lock came late";
}

}  // namespace
}  // namespace orsanta
