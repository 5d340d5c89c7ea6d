// One step of the settling detector beside a literal pass over the whole ring, by window length. A window that is
// settled costs the mean on top of the range, so both are shown.
#include "numeric/settling_detector.h"

#include <benchmark/benchmark.h>

#include "tests/numeric/literal_detector.h"

namespace {

template <void Step(orsanta::DetectorState&)>
void Run(benchmark::State& run) {
  orsanta::DetectorState detector;
  orsanta::DetectorInit(detector);
  detector.WindowLen = static_cast<double>(run.range(0));
  detector.Threshold = run.range(1) != 0 ? 1.0 : 1e-9;
  double sample = 0.0;
  for (auto _ : run) {
    sample = sample < 0.001 ? sample + 1e-6 : 0.0;
    detector.Input = sample;
    Step(detector);
    benchmark::DoNotOptimize(detector);
  }
}

BENCHMARK(Run<orsanta::DetectorStep>)
    ->Name("DetectorStep")
    ->ArgNames({"window", "settled"})
    ->ArgsProduct({{50, 500}, {0, 1}});
BENCHMARK(Run<orsanta::Literal_Step>)
    ->Name("literal pass")
    ->ArgNames({"window", "settled"})
    ->ArgsProduct({{50, 500}, {0, 1}});

}  // namespace

BENCHMARK_MAIN();
