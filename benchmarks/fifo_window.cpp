// The sliding window: what a sample costs when the window is full, and what a reader pays against a bare copy.
#include "drive/fifo_window.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <vector>

namespace {

using orsanta::C_FIFO2Window;

void Fill(C_FIFO2Window& window, int length) {
  window.Set_Window_Len(length);
  for (int i = 0; i < length; ++i) window.Push_Sample(i, static_cast<uint64_t>(i));
}

void Push_Sample(benchmark::State& state) {
  C_FIFO2Window window;
  Fill(window, static_cast<int>(state.range(0)));
  uint64_t index = 0;
  for (auto _ : state) {
    window.Push_Sample(1.0, index);
    ++index;
  }
}
BENCHMARK(Push_Sample)->ArgName("window")->Arg(64)->Arg(4096)->Arg(10240);

void Get_Window(benchmark::State& state) {
  C_FIFO2Window window;
  Fill(window, static_cast<int>(state.range(0)));
  orsanta::CMyArray<double> out;
  for (auto _ : state) {
    window.Get_Window(out);
    benchmark::DoNotOptimize(out.GetData());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Get_Window)->ArgName("window")->Arg(4096);

// The same bytes: values and indices.
void Bare_Memcpy(benchmark::State& state) {
  const auto count = static_cast<size_t>(state.range(0));
  const std::vector<double> data(count, 1.0);
  const std::vector<uint64_t> indices(count, 1);
  std::vector<double> out(count);
  std::vector<uint64_t> out_indices(count);
  for (auto _ : state) {
    std::memcpy(out.data(), data.data(), count * sizeof(double));
    std::memcpy(out_indices.data(), indices.data(), count * sizeof(uint64_t));
    benchmark::DoNotOptimize(out.data());
    benchmark::DoNotOptimize(out_indices.data());
    benchmark::ClobberMemory();
  }
}
BENCHMARK(Bare_Memcpy)->ArgName("window")->Arg(4096);

}  // namespace

BENCHMARK_MAIN();
