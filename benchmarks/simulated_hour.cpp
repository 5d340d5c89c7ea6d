// Wall time of one simulated hour of back-to-back cycles of one station.
#include <chrono>
#include <cstdio>

#include "benchmarks/system.h"

int main() {
  using namespace orsanta;
  constexpr double Hour_Ms = 3600000.0;
  const auto start = std::chrono::steady_clock::now();
  int cycles = 0;
  {
    const C_Simulated_Clock clock(1);
    C_Benchmark_System system(1);
    while (Now_Ms() < Hour_Ms) {
      system.Measure(1);
      system.Lift(1);
      ++cycles;
    }
  }
  const double wall_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("one simulated hour, %d cycles: %.1f s of wall time\n", cycles, wall_s);
}
