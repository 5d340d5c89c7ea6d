// Threads with a loop, the recursive lock, and task lanes.
#include "support/threads/thread.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <string>
#include <thread>

#include "common/failed_check.h"
#include "common/thread_levels.h"
#include "support/threads/task_lanes.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

struct C_Loop : CBaseBindThread {
  explicit C_Loop(int its_pass_ms) : pass_ms(its_pass_ms) {}
  ~C_Loop() override { ReleaseSubClass_CBaseBindThread(); }
  void OnThreadBegin(void* param) override {
    char name[16] = "";
    pthread_getname_np(pthread_self(), name, sizeof name);
    trace += *static_cast<std::string*>(param) + name;
  }
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
  std::string begin = "begin ";
  C_Loop loop(10);
  EXPECT_EQ(loop.BeginThread(&begin, 15, 2, 300000, nullptr), 1);
  EXPECT_EQ(loop.BeginThread(&begin, 15, 2, 300000, nullptr), 0);
  Sleep(25);
  EXPECT_EQ(loop.EndThread(1, 1), 1);
  EXPECT_EQ(Now_Ms(), 30.0);
  Sleep(100);
  EXPECT_EQ(loop.EndThread(1, 1), 1);
  loop.BeginThread(&begin, 15, 2, 300000, L"a name of its own");
  Sleep(1);
  EXPECT_EQ(loop.EndThread(1, 1), 1);
  EXPECT_EQ(loop.trace, "begin C_Loop()()()begin a name of its o()");
}

// Whatever its starter had.
TEST(Thread_Levels, Are_Places_That_Nobody_Inherits) {
  if (geteuid() != 0) GTEST_SKIP() << "only root may raise a priority everywhere";
  const auto level_of_started = [](int level) {
    std::string found;
    C_Thread thread;
    thread.Start(
        "started", [&found] { found = Thread_Level(); }, level);
    thread.Join();
    return found;
  };
  for (int init = 1; init <= 2; ++init) {
    SetPriorityClass(Process_Class_High);
    SetThreadPriority(Priority_Above_Normal);
    EXPECT_EQ(Thread_Level(), "nice -15");
    Become_Real_Time();
    EXPECT_EQ(level_of_started(Priority_Normal), "nice -10");
    EXPECT_EQ(level_of_started(Priority_Time_Critical), "real-time 10");
    EXPECT_EQ(level_of_started(Priority_Sample_Reader), "real-time 11");
    SetThreadPriority(Priority_Time_Critical);
    std::string of_another;
    std::thread([&of_another] { of_another = Thread_Level(); }).join();  // as a library starts one
    EXPECT_EQ(of_another, "nice 0");
    SetThreadPriority(Priority_Normal);
    EXPECT_EQ(Thread_Level(), "nice -10");
  }
}

TEST(Critical_Section, Is_Taken_Again_By_Its_Holder_And_Given_Back_By_Nobody_Else) {
  CMyCriticalSection section;
  {
    const C_Simulated_Clock clock(1);
    EXPECT_EQ(section.Unlock(), 0);
    double other_got_it_ms = 0.0;
    section.Lock();
    section.Lock();
    C_Thread other;
    other.Start("other", [&] {
      EXPECT_EQ(section.Unlock(), 0);
      const C_Lock_Guard holder(section);
      other_got_it_ms = Now_Ms();
    });
    for (int i = 0; i < 2; ++i) {
      Sleep(10);
      EXPECT_EQ(section.Unlock(), 1);
    }
    other.Join();
    EXPECT_EQ(other_got_it_ms, 20.0);
  }
  // Under contention on the real clock.
  int count = 0;  // plain: only the section guards it
  C_Thread threads[4];
  for (C_Thread& thread : threads) {
    thread.Start("contender", [&] {
      for (int i = 0; i < 20000; ++i) {
        const C_Lock_Guard holder(section);
        const C_Lock_Guard again(section);
        ++count;
        if (i % 1000 == 0) Sleep(0);
      }
    });
  }
  for (C_Thread& thread : threads) thread.Join();
  EXPECT_EQ(count, 80000);
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
  EXPECT_EQ(lanes.AddNewDelayProcess(0, 10, 0, nullptr), 1);
  EXPECT_EQ(lanes.AddNewDelayProcess(1, 20, 1, nullptr), 1);
  Sleep(30);
  EXPECT_EQ(lanes.GetDelayProcessFifoCount(0), 2);  // the running one included
  EXPECT_EQ(lanes.GetDelayProcessFifoCount(1), 0);
  EXPECT_EQ(lanes.BeAtLeaseOneDelayTaskInProcess(), 1);
  Sleep(35);
  EXPECT_EQ(lanes.BeAtLeaseOneDelayTaskInProcess(), 0);
  // A stop finishes what runs and drops what waits.
  for (int i = 0; i < 3; ++i) lanes.AddNewDelayProcess(1, 40, 0, nullptr);
  Sleep(10);
  lanes.ReleaseSubClass_CQueueTask_MutiTask_Thread();
  EXPECT_EQ(Now_Ms(), 105.0);
  EXPECT_EQ(lanes.trace, "1 did 20\n0 did 50!\n0 did 10\n0 ends\n1 did 40\n1 ends\n");
  EXPECT_EQ(lanes.AddNewDelayProcess(1, 40, 0, nullptr), 0);
  lanes.ReleaseSubClass_CQueueTask_MutiTask_Thread();
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
  constexpr int Threads = 4, Tasks = 5000;
  C_Lanes lanes(1);
  {
    C_Thread hosts[Threads];
    for (C_Thread& host : hosts) {
      host.Start("host", [&] {
        for (int taken = 0; taken < Tasks;) taken += lanes.AddNewDelayProcess(0, 0, 1, nullptr);
      });
    }
    for (C_Thread& host : hosts) host.Join();
  }
  for (int i = 0; i < 10000 && lanes.GetDelayProcessFifoCount(0) != 0; ++i) Sleep(1);
  lanes.ReleaseSubClass_CQueueTask_MutiTask_Thread();
  EXPECT_EQ(lanes.trace.size(), std::string("0 did 0\n").size() * Threads * Tasks + std::string("0 ends\n").size());
}

TEST(Stop_DeathTest, A_Thread_Or_Lane_That_Does_Not_End_Is_Reported_By_Its_Name) {
  const C_Temp_Folder folder;
  C_Lanes made_twice(1);
  EXPECT_NE(0, Failed_Check_Line([&] { made_twice.Init(1, 0, 300000); }));
  made_twice.ReleaseSubClass_CQueueTask_MutiTask_Thread();  // before the processes split
  const auto stop_a_hanging = [](bool lane) {
    const C_Simulated_Clock clock(1);
    std::string begin;
    C_Loop loop(1000000);
    C_Lanes lanes(2);
    if (lane) lanes.AddNewDelayProcess(1, 1000000, 0, nullptr);
    if (!lane) loop.BeginThread(&begin, 2, 2, 300000, nullptr);
    Sleep(1);
  };
  EXPECT_EXIT(stop_a_hanging(false), Ends_By_A_Failed_Check, "thread C_Loop did not end within 300000 ms");
  EXPECT_EXIT(stop_a_hanging(true), Ends_By_A_Failed_Check, "task lane 1 did not end within 300000 ms");
}

}  // namespace
}  // namespace orsanta
