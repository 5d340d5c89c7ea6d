// Processor time of fourteen stations in real time, idle and measuring. The simulator is part of the process: what it
// costs to simulate the fourteen drives is in the figures.
#include <sys/resource.h>

#include <cstdio>

#include "benchmarks/system.h"
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

// The share of one core that the process takes while the work runs.
template <class C_Work>
double Share_Of_A_Core(C_Work work) {
  const double start_ms = Now_Ms();
  const double start_processor = Processor_Ms();
  work();
  return (Processor_Ms() - start_processor) / (Now_Ms() - start_ms);
}

}  // namespace

int main() {
  constexpr int Span_Ms = 10000;
  C_Benchmark_System system(All_Stations);
  const double idle = Share_Of_A_Core([] { Sleep(Span_Ms); });
  int cycles[All_Stations] = {};
  const double measuring = Share_Of_A_Core([&] {
    std::vector<std::unique_ptr<C_Thread>> hosts;
    for (int n = 1; n <= All_Stations; ++n) {
      hosts.push_back(std::make_unique<C_Thread>());
      hosts.back()->Start("host", [&system, &count = cycles[n - 1], n, until = Now_Ms() + Span_Ms] {
        for (; Now_Ms() < until; ++count) {
          system.Measure(n);
          system.Lift(n);
        }
      });
    }
    for (auto& host : hosts) host->Join();
  });
  int total = 0;
  for (const int count : cycles) total += count;
  std::printf("%d stations: %.1f %% of one core idle, %.1f %% measuring (%d cycles in %d s)\n", All_Stations,
              100.0 * idle, 100.0 * measuring, total, Span_Ms / 1000);
}
