// How long a crossed study takes to work out, both methods: 10 parts x 3 appraisers x 3 trials, and 1000 x 10 x 10.
#include <benchmark/benchmark.h>

#include <random>

#include "study/anova.h"
#include "study/average_range.h"

namespace study {
namespace {

void Crossed(benchmark::State& state) {
  C_Crossed data;
  data.parts.resize(static_cast<size_t>(state.range(0)));
  data.appraisers.resize(static_cast<size_t>(state.range(1)));
  data.trials = static_cast<int>(state.range(2));
  std::mt19937_64 random(1);
  std::normal_distribution<double> thickness(3.0, 0.001);
  data.values_mm.resize(data.parts.size() * data.appraisers.size() * static_cast<size_t>(data.trials));
  for (double& value : data.values_mm) value = thickness(random);
  for (auto _ : state) {
    benchmark::DoNotOptimize(Work_Out_Anova(data));
    benchmark::DoNotOptimize(Work_Out_Average_Range(data));
  }
}
BENCHMARK(Crossed)->Args({10, 3, 3})->Args({1000, 10, 10})->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace study

BENCHMARK_MAIN();
