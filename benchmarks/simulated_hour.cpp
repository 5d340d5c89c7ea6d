// Wall time of simulated minutes of back-to-back cycles, all stations at once.
// Usage: benchmark_simulated_hour [stations] [minutes] [seed]; 1 station, 60 minutes and seed 1 without arguments.
// The checksum is that of the journal of all calls, reads included: equal runs have equal ones.
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/system.h"
#include "simulated_clock/simulated_clock.h"
#include "support/threads/thread.h"

namespace {

using namespace orsanta;

int Measure_Until(C_Benchmark_System& system, int station, double end_ms) {
  int cycles = 0;
  for (; Now_Ms() < end_ms; ++cycles) {
    system.Measure(station);
    system.Lift(station);
  }
  return cycles;
}

}  // namespace

int main(int count, char** arguments) {
  const auto argument = [&](int place, int otherwise) {
    return count > place ? std::atoi(arguments[place]) : otherwise;
  };
  const int stations = argument(1, 1), minutes = argument(2, 60), seed = argument(3, 1);
  const auto start = std::chrono::steady_clock::now();
  int cycles = 0;
  uint64_t checksum = 0;
  {
    const C_Simulated_Clock clock(static_cast<uint64_t>(seed));
    C_Benchmark_System system(stations, static_cast<uint64_t>(seed));
    std::vector<std::unique_ptr<C_Thread>> hosts;
    for (int n = 1; n <= stations; ++n) {
      hosts.push_back(std::make_unique<C_Thread>());
      hosts.back()->Start("host", [&, n] { cycles += Measure_Until(system, n, minutes * 60000.0); });
    }
    for (auto& host : hosts) host->Join();
    system.base.reset();
    checksum = simulator::Journal_Checksum();
  }
  const double wall_s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  std::printf("%d stations, %d simulated minutes, seed %d, %d cycles: %.1f s of wall time; journal %016" PRIx64 "\n",
              stations, minutes, seed, cycles, wall_s, checksum);
}
