// How near the true force on the part comes to the set force before a calibration, after one at a single height of the
// head and after one at five heights, on the default simulator under the simulated clock.
//
//   build/benchmarks/bin/benchmark_calibration_table
//
// Each cell: true force in grams, and its error. The allowed error is 1 % or 0.5 g, whichever is larger; a star marks
// more.
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "drive/motor.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "station/calibration_operator.h"
#include "station/voice_motor.h"

namespace {

using namespace orsanta;

constexpr int Id = 1;

// The force on the part at the second landing, which knows the part's height from the first.
double True_Force_At(C_VoiceMotor& station, double force, double part) {
  simulator::Place_Part(Id, part);
  double on_part = 0.0;
  for (int landing = 0; landing < 2; ++landing) {
    station.Detection_thickness(20.0F, static_cast<float>(station.Landing_Current(force)));
    on_part = simulator::True_Force(Id);
    station.Force_Back(20.0F);
  }
  simulator::Remove_Part(Id);
  return on_part;
}

void Print_Table(const char* title, C_VoiceMotor& station) {
  std::printf("\n%s\n  part       50 g               100 g               200 g               400 g\n", title);
  for (const double part : {1.0, 3.0, 6.0}) {
    std::printf("  %.0f mm", part);
    for (const double force : {50.0, 100.0, 200.0, 400.0}) {
      const double on_part = True_Force_At(station, force, part);
      const double error = on_part - force;
      std::printf("  %8.2f (%+8.2f%c)", on_part, error, std::fabs(error) > std::max(0.5, force * 0.01) ? '*' : ' ');
    }
    std::printf("\n");
  }
}

void Calibrate(C_VoiceMotor& station, C_Scripted_Front& front, const char* title, std::vector<double> heights) {
  // Currents that cover forces to some 450 g on parts to 7 mm.
  C_Calibration_Operator person{5.0, 0.5, 10, std::move(heights)};
  person.Prepare(front);
  station.Calibrate_Force();
  simulator::Set_Head_Height(Id, 0.0);
  std::printf("\n%s", To_Utf8(front.Boxes().back()).c_str());
  Print_Table(title, station);
}

}  // namespace

int main() {
  C_Simulated_Clock clock(1);
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  simulator::Reset();
  C_VoiceMotor station(Id, 0, 0, 0, 1, 1, -1, -1, -1);
  Print_Table("before calibration", station);
  Calibrate(station, *front, "after one height, 10 currents (2D)", {0.0});
  Calibrate(station, *front, "after five heights, 10 currents (3D)", {-8.0, -6.0, -4.0, -2.0, 0.0});
}
