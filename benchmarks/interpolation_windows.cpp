// What an interpolation device costs while it only runs: its sixteen windows, and one temperature read of a cycle.
//
// The simulated room does its physics inside the calls of the window threads. Windows_Running therefore stands beside
// Room_Running, where the same streams flow and one thread looks as often as a window does: the difference is the
// windows.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include "drive/interpolation_motor.h"
#include "drive/tremalink.h"
#include "simulator/simulator.h"
#include "support/time/clock.h"

namespace {

using orsanta::C_Interpolation_Voice_Motor;

constexpr int Id = 20;
constexpr int Measured_Ms = 4000;

void Set_Up_Room() {
  simulator::Settings settings;
  settings.drives = 0;
  settings.temperature_boards = {Id};
  simulator::Reset(settings);
}

double Processor_Ms() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto to_ms = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_usec) / 1e3;
  };
  return to_ms(usage.ru_utime) + to_ms(usage.ru_stime);
}

// Runs `body` for the measured time and counts the processor time of the whole process against one core.
template <class C_Body>
void Measure_Core(benchmark::State& state, C_Body body) {
  double percent = 0.0;
  for (auto _ : state) {
    const double begin = orsanta::Now_Ms();
    const double processor_begin = Processor_Ms();
    while (orsanta::Now_Ms() - begin < Measured_Ms) body();
    percent += (Processor_Ms() - processor_begin) / (orsanta::Now_Ms() - begin) * 100.0;
  }
  state.counters["percent_of_a_core"] = benchmark::Counter(percent, benchmark::Counter::kAvgIterations);
}

void Room_Running(benchmark::State& state) {
  Set_Up_Room();
  InitDevice_PC_Local_Controler(1, 0);
  ConnectControlServer(L"", 0, nullptr);
  constexpr int Ports[] = {1, 16, 17, 19, 20, 25, 26, 30, 31, 32, 33, 40, 41, 42, 43, 44};
  for (const int port : Ports) {
    SET_INPUT_DATA_MAP(1, Id, port, 8, port);
    RESET_INPUT_DATA_FIFO(1, port, 4096);
  }
  double samples[4096];
  uint64_t indices[4096];
  int count = 0;
  Measure_Core(state, [&] {
    for (const int port : Ports) GetInputChannelData(port, 4096, &count, samples, indices);
    orsanta::Sleep(2);
  });
}
BENCHMARK(Room_Running)->Iterations(1)->Unit(benchmark::kMillisecond);

void Windows_Running(benchmark::State& state) {
  Set_Up_Room();
  C_Interpolation_Voice_Motor motor(Id, 1, 30, 1, 1, -1, -1, -1);
  if (motor.Be_Mapped() != 1) state.SkipWithError("the device is not mapped");
  Measure_Core(state, [] { orsanta::Sleep(50); });
}
BENCHMARK(Windows_Running)->Iterations(1)->Unit(benchmark::kMillisecond);

// One read, as a cycle makes it: after some hundred milliseconds, when the FIFO has filled.
void Get_Temperature(benchmark::State& state) {
  Set_Up_Room();
  C_Interpolation_Voice_Motor motor(Id, 1, 30, 1, 1, -1, -1, -1);
  for (auto _ : state) {
    orsanta::Sleep(200);
    double t = 0.0;
    const double begin = orsanta::Now_Ms();
    if (motor.Get_Temperature(t, 0) != 1) state.SkipWithError("no temperature came");
    state.SetIterationTime((orsanta::Now_Ms() - begin) / 1e3);
    benchmark::DoNotOptimize(t);
  }
}
BENCHMARK(Get_Temperature)->Iterations(20)->UseManualTime()->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
