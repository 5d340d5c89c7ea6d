// What waiting costs: a hand-over of the simulated clock, and the recursive lock.
#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

#include "support/threads/thread.h"
#include "support/time/clock.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

// Two threads wake in turn at every simulated millisecond, while `idle` others wait at a wait point. An iteration is
// one sleep of each: two hand-overs between threads.
void Hand_Over(benchmark::State& state) {
  const C_Simulated_Clock clock(1);
  bool be_end = false;
  C_Leaf_Lock lock;
  C_Wait_Point end("end");
  std::vector<std::unique_ptr<C_Thread>> idle;
  for (int64_t i = 0; i < state.range(0); ++i) {
    idle.push_back(std::make_unique<C_Thread>());
    idle.back()->Start("idle", [&] {
      const C_Lock_Guard hold(lock);
      while (!be_end) end.Wait(lock);
    });
  }
  C_Thread other;
  other.Start("other", [&be_end] {
    Sleep(1);
    while (!be_end) Sleep(2);
  });
  for (auto _ : state) Sleep(2);
  {
    const C_Lock_Guard hold(lock);
    be_end = true;
    end.Notify_All();
  }
  other.Join();
  for (const auto& thread : idle) thread->Join();
  state.SetItemsProcessed(2 * state.iterations());
}
BENCHMARK(Hand_Over)->Arg(0)->Arg(15)->Arg(60)->UseRealTime();

// A thread that sleeps alone moves time and hands nothing over.
void Sleep_Alone(benchmark::State& state) {
  const C_Simulated_Clock clock(1);
  for (auto _ : state) Sleep(1);
}
BENCHMARK(Sleep_Alone);

void Lock_Unlock(benchmark::State& state) {
  CMyCriticalSection section;
  for (auto _ : state) {
    section.Lock();
    section.Unlock();
  }
}
BENCHMARK(Lock_Unlock);

// From several threads at once, each holding it for a moment.
void Lock_Unlock_Contended(benchmark::State& state) {
  static CMyCriticalSection section;
  static int count = 0;
  for (auto _ : state) {
    section.Lock();
    benchmark::DoNotOptimize(++count);
    section.Unlock();
  }
}
BENCHMARK(Lock_Unlock_Contended)->Threads(2)->UseRealTime();

}  // namespace
}  // namespace orsanta

BENCHMARK_MAIN();
