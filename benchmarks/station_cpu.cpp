// Processor time of fourteen stations in real time, idle and measuring, and the shares of it that the simulator and the
// polling hosts take; and that of as many threads as the stations have which sleep as often and do nothing, the floor
// of what the simulator and the hosts leave.
//
// The simulator is part of the process, and each call moves its room on. The linker puts the functions below in the
// place of those that a measurement calls all the time (CMakeLists.txt); they take the time of a part of the calls, so
// that the clock itself costs little.
#include <sys/resource.h>

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <ctime>

#include "benchmarks/system.h"
#include "support/system/priority.h"
#include "support/threads/thread.h"

namespace {

using namespace orsanta;

double Processor_Ms() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto ms = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1000.0 + static_cast<double>(time.tv_usec) / 1000.0;
  };
  return ms(usage.ru_utime) + ms(usage.ru_stime);
}

constexpr uint64_t Calls_For_One_Timed = 17;  // no multiple of a number of channels or stations
std::atomic<uint64_t> the_calls{0};
std::atomic<int64_t> the_simulator_ns{0};  // of the timed calls
std::atomic<int64_t> the_hosts_ns{0};

int64_t Thread_Ns() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return time.tv_sec * 1000000000 + time.tv_nsec;
}

// What a call of the simulator returns, timed where its turn has come.
template <class C_Call>
int Timed(C_Call call) {
  if (the_calls.fetch_add(1, std::memory_order_relaxed) % Calls_For_One_Timed != 0) return call();
  const int64_t start_ns = Thread_Ns();
  const int result = call();
  the_simulator_ns += Thread_Ns() - start_ns;
  return result;
}

// The shares of one core that the process, and in it the simulator and the hosts, take while the work runs.
struct C_Share {
  double process, simulator, hosts;
};

template <class C_Work>
C_Share Share_Of_A_Core(C_Work work) {
  const double start_ms = Now_Ms();
  const double start_processor = Processor_Ms();
  const int64_t start_ns = the_simulator_ns;
  const int64_t hosts_start_ns = the_hosts_ns;
  work();
  const double span_ms = Now_Ms() - start_ms;
  const double simulator_ms = static_cast<double>(the_simulator_ns - start_ns) * 1e-6 * Calls_For_One_Timed;
  const double hosts_ms = static_cast<double>(the_hosts_ns - hosts_start_ns) * 1e-6;
  return {(Processor_Ms() - start_processor) / span_ms, simulator_ms / span_ms, hosts_ms / span_ms};
}

void Print(const char* state, const C_Share& share) {
  std::printf("%d stations %s: %.1f %% of one core, the simulator %.1f %%, the hosts %.1f %%, the rest %.1f %%\n",
              All_Stations, state, 100.0 * share.process, 100.0 * share.simulator, 100.0 * share.hosts,
              100.0 * (share.process - share.simulator - share.hosts));
}

}  // namespace

extern "C" {                                                         // the names are the linker's
int __real_GetInputChannelData(int, int, int*, double*, uint64_t*);  // NOLINT
int __real_GetCurIoInput(int, int*);                                 // NOLINT
int __real_OUTPUT_DATA(int, int, double);                            // NOLINT
int __real_WaitForAllInsFinish(int);                                 // NOLINT
int __wrap_GetInputChannelData(int channel, int max_count, int* count, double* values, uint64_t* indices) {  // NOLINT
  return Timed([=] { return __real_GetInputChannelData(channel, max_count, count, values, indices); });
}
int __wrap_GetCurIoInput(int io, int* value) {  // NOLINT
  return Timed([=] { return __real_GetCurIoInput(io, value); });
}
int __wrap_OUTPUT_DATA(int thread, int channel, double value) {  // NOLINT
  return Timed([=] { return __real_OUTPUT_DATA(thread, channel, value); });
}
int __wrap_WaitForAllInsFinish(int thread) {  // NOLINT
  return Timed([=] { return __real_WaitForAllInsFinish(thread); });
}
}

int main() {
  constexpr int Span_Ms = 10000;
  const C_Share sleeping = Share_Of_A_Core([] {
    std::vector<std::unique_ptr<C_Thread>> sleepers;
    const auto add = [&sleepers, until = Now_Ms() + Span_Ms](int period_ms, int level) {
      sleepers.push_back(std::make_unique<C_Thread>());
      sleepers.back()->Start(
          "sleeper",
          [=] {
            while (Now_Ms() < until) Sleep(period_ms);
          },
          level);
    };
    add(1, Priority_Time_Critical);  // the loop
    for (int n = 1; n <= All_Stations; ++n) {
      add(1, Priority_Normal);         // a station's task
      add(2, Priority_Sample_Reader);  // its window
    }
    for (auto& sleeper : sleepers) sleeper->Join();
  });
  C_Benchmark_System system(All_Stations);
  const C_Share idle = Share_Of_A_Core([] { Sleep(Span_Ms); });
  int cycles[All_Stations] = {};
  const C_Share measuring = Share_Of_A_Core([&] {
    std::vector<std::unique_ptr<C_Thread>> hosts;
    for (int n = 1; n <= All_Stations; ++n) {
      hosts.push_back(std::make_unique<C_Thread>());
      hosts.back()->Start("host", [&system, &count = cycles[n - 1], n, until = Now_Ms() + Span_Ms] {
        for (; Now_Ms() < until; ++count) {
          system.Measure(n);
          system.Lift(n);
        }
        the_hosts_ns += Thread_Ns();
      });
    }
    for (auto& host : hosts) host->Join();
  });
  int total = 0;
  for (const int count : cycles) total += count;
  Print("idle", idle);
  Print("measuring", measuring);
  std::printf("as many threads that only sleep: %.1f %% of one core\n", 100.0 * sleeping.process);
  std::printf("%d cycles in %d s\n", total, Span_Ms / 1000);
}
