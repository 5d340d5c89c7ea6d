// How much time computing costs a cycle: the median length of a measurement in real time against that of the same
// measurements under the simulated clock, in which computing costs nothing.
#include <cstdio>
#include <random>

#include "benchmarks/system.h"
#include "simulated_clock/simulated_clock.h"

namespace {

using namespace orsanta;

constexpr int Cycles = 60;

double Median_Cycle_Ms() {
  C_Benchmark_System system(1);
  std::mt19937_64 random(1);
  std::uniform_real_distribution<double> thickness(1.0, 6.0);
  std::vector<double> times;
  for (int i = 0; i < Cycles; ++i) {
    simulator::Place_Part(1, thickness(random));
    times.push_back(system.Measure(1));
    system.Lift(1);
  }
  return Quantile(times, 0.5);
}

double Median_Simulated_Cycle_Ms() {
  const C_Simulated_Clock clock(1);
  return Median_Cycle_Ms();
}

}  // namespace

int main() {
  const double simulated = Median_Simulated_Cycle_Ms();
  const double real = Median_Cycle_Ms();
  std::printf("median of %d cycles: %.1f ms in real time, %.1f ms under the simulated clock, ratio %.3f\n", Cycles,
              real, simulated, real / simulated);
}
