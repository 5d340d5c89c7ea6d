// A whole system on the simulator for the benchmarks of this folder.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "common/resources.h"
#include "common/temp_folder.h"
#include "host/motor_base.h"
#include "host/task_app.h"
#include "simulator/simulator.h"
#include "station/voice_motor.h"
#include "support/time/clock.h"

namespace orsanta {

constexpr int All_Stations = 14;

class C_Benchmark_System {
 public:
  // Starts the stations, and ends when their probes are up. seed: of everything random on the simulator.
  explicit C_Benchmark_System(int stations, uint64_t seed = 1) {
    simulator::Settings room;
    room.seed = seed;
    simulator::Reset(room);
    base = std::make_unique<C_VoiceMotorBase>(Numbered_Resources(stations), 0, 115200, 0, 0);
    for (int n = 1; n <= stations; ++n) {
      simulator::Place_Part(n, 5.0);
      base->StationList[n - 1]->Set_Cur_BaseDistance(9.0F);
    }
    Sleep(1000);
  }

  // One measurement as a host does it; milliseconds from do_test to the get_ans that has the result.
  double Measure(int station) {
    const double start = Now_Ms();
    base->do_test(station, Task_Measure);
    double thickness = 0.0, force = 0.0;
    while (base->get_ans(station, &thickness, &force) == 0) Sleep(1);
    return Now_Ms() - start;
  }
  void Lift(int station) {
    base->do_test(station, Task_Force_Back);
    while (base->GetDelayProcessFifoCount(station - 1) > 0) Sleep(1);
  }

  C_Temp_Folder folder;
  std::unique_ptr<C_VoiceMotorBase> base;
};

// The value below which the given share of them lies.
inline double Quantile(std::vector<double> values, double share) {
  const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
  std::nth_element(values.begin(), values.begin() + place, values.end());
  return values[static_cast<size_t>(place)];
}

}  // namespace orsanta
