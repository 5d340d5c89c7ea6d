// What the simulator costs: processor time of one simulated hour, idle and moving, and of reading samples.
//
// "Hour" benchmarks run once on the simulated clock and report their processor time in seconds for each simulated hour.
#include <benchmark/benchmark.h>

#include <vector>

#include "drive/tremalink.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "support/time/clock.h"

namespace {

constexpr int Hour_Ms = 3600 * 1000;
constexpr double Raw_Per_Mm = 65536000.0;

void Map_Drive(int id) {
  const int inputs[][3] = {{8, 6, 0}, {201, 6, 1}, {11, 6, 2}, {10, 6, 3}, {200, 6, 4}, {5, 1, 6},
                           {4, 4, 5}, {16, 8, 9},  {17, 8, 7}, {18, 8, 8}, {20, 8, 10}, {15, 8, 11}};
  for (const auto& [port, format, k] : inputs) {
    SET_INPUT_DATA_MAP(id, id, port, format, id * 20 + k);
    RESET_INPUT_DATA_FIFO(id, id * 20 + k, k == 5 ? 4096 : 256);
  }
  const int outputs[][3] = {{0, 6, 0}, {4, 8, 2}, {6, 8, 3}};
  for (const auto& [port, format, k] : outputs) SET_OUTPUT_DATA_MAP(id, id, port, format, id * 20 + k);
}

void Start(int drives) {
  simulator::Reset();
  InitDevice_PC_Local_Controler(1, 0);
  ConnectControlServer(L"", 0, nullptr);
  for (int id = 1; id <= drives; ++id) Map_Drive(id);
}

size_t Read(int channel, std::vector<double>& room) {
  int count = 0;
  GetInputChannelData(channel, static_cast<int>(room.size()), &count, room.data(), nullptr);
  return static_cast<size_t>(count);
}

// All drives stand; each one's position is read every 2 ms.
void Idle_Hour(benchmark::State& state) {
  const int drives = static_cast<int>(state.range(0));
  std::vector<double> room(4096);
  for (auto _ : state) {
    orsanta::C_Simulated_Clock clock(1);
    Start(drives);
    for (int ms = 0; ms < Hour_Ms; ms += 2) {
      orsanta::Sleep(2);
      for (int id = 1; id <= drives; ++id) benchmark::DoNotOptimize(Read(id * 20 + 5, room));
    }
  }
}
BENCHMARK(Idle_Hour)->Arg(1)->Arg(14)->Iterations(1)->Unit(benchmark::kSecond);

// Each drive lands on a part, presses and lifts off, 1800 times in the hour; positions are read every 2 ms.
void Measuring_Hour(benchmark::State& state) {
  const int drives = static_cast<int>(state.range(0));
  std::vector<double> room(4096);
  for (auto _ : state) {
    orsanta::C_Simulated_Clock clock(1);
    Start(drives);
    for (int id = 1; id <= drives; ++id) simulator::Place_Part(id, 3.0);
    for (int ms = 0; ms < Hour_Ms; ms += 2) {
      for (int id = 1; id <= drives; ++id) {
        if (ms % 2000 == 0) {
          OUTPUT_DATA(id, id * 20 + 2, 1.0);
          OUTPUT_DATA(id, id * 20, 10.0 * Raw_Per_Mm);
        } else if (ms % 2000 == 1000) {
          OUTPUT_DATA(id, id * 20, 0.0);
        }
        benchmark::DoNotOptimize(Read(id * 20 + 5, room));
      }
      orsanta::Sleep(2);
    }
  }
}
BENCHMARK(Measuring_Hour)->Arg(1)->Arg(14)->Iterations(1)->Unit(benchmark::kSecond);

// On the system clock: one call, with whatever samples have come since the last.
void Sample_Read(benchmark::State& state) {
  Start(14);
  std::vector<double> room(4096);
  for (auto _ : state) benchmark::DoNotOptimize(Read(25, room));
}
BENCHMARK(Sample_Read);

// A command on an idle instruction thread, noted in the journal.
void Command(benchmark::State& state) {
  Start(14);
  for (auto _ : state) OUTPUT_DATA(1, 23, 20.0);
}
BENCHMARK(Command);

}  // namespace

BENCHMARK_MAIN();
