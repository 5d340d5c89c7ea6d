#include "force_calibration.h"

#include <Eigen/Dense>
#include <cstdio>
#include <string>
#include <vector>

#include "orsanta/orsanta.h"
#include "simulator_loaded.h"
#include "station_work.h"

namespace app {
namespace {

// Heights of the parts under the probe, which span those that are measured, and currents, which span the forces.
constexpr double Heights_Mm[] = {6.0, 5.0, 1.0};
constexpr double Currents_A[] = {0.6, 2.0, 4.5};
constexpr size_t First_Height = 1;  // the reference block's, on which a station lands first

struct C_Reading {
  double current = 0.0;   // A
  double position = 0.0;  // mm
  double force = 0.0;     // g
};

void Write_Store(int station, const std::string& entries) {
  std::FILE* file = std::fopen(("音圈电机" + std::to_string(station) + "参数").c_str(), "w");
  if (file == nullptr) return;
  std::fprintf(file, "orsanta store 1\n%send\n", entries.c_str());
  std::fclose(file);
}

std::string Entry(const char* path, const char* key, int index, double value) {
  char line[120];
  std::snprintf(line, sizeof line, "%s %s %d = double %.17g\n", path, key, index, value);
  return line;
}

// The polynomial of the force: square, linear and constant term, the square one always 0 here.
std::string Polynomial(double linear, double constant) {
  return Entry("C_VoiceMotor", "Val_Force_KK", 0, 0.0) + Entry("C_VoiceMotor", "Val_Force_K", 0, linear) +
         Entry("C_VoiceMotor", "Val_Static_GForce", 0, constant);
}

// Presses with each current at each height. Empty when a landing gave no result.
std::vector<C_Reading> Take_Readings(int station, const std::function<bool()>& cancelled) {
  std::vector<C_Reading> readings;
  for (const double height : Heights_Mm) {
    simulator::Place_Part(station, height);
    for (const double current : Currents_A) {
      double thickness = 0.0;
      Set_Force(station, current);
      if (cancelled() || !Measure(station, thickness)) return {};
      // Without a reference block and with a reference at 0 a thickness is the position, its sign turned.
      readings.push_back({current, -thickness, simulator::Force_Gauge(station)});
    }
    if (!Lift(station)) return {};
  }
  return readings;
}

// Fits F = p0 + p1 I + p2 P + p3 I P + p4 I P^2 by least squares: I the current, P the position, F the force.
Eigen::VectorXd Fit_Surface(const std::vector<C_Reading>& readings) {
  const auto count = static_cast<Eigen::Index>(readings.size());
  Eigen::MatrixXd terms(count, 5);
  Eigen::VectorXd forces(count);
  for (Eigen::Index i = 0; i < count; ++i) {
    const C_Reading& r = readings[static_cast<size_t>(i)];
    terms.row(i) << 1.0, r.current, r.position, r.current * r.position, r.current * r.position * r.position;
    forces(i) = r.force;
  }
  return terms.colPivHouseholderQr().solve(forces);
}

// The surface serves every landing but the first one, which goes by the polynomial: the surface at the first height.
void Store_Model(int station, const std::vector<C_Reading>& readings) {
  const Eigen::VectorXd p = Fit_Surface(readings);
  const double first = readings[First_Height * std::size(Currents_A)].position;
  std::string entries = Polynomial(p[1] + p[3] * first + p[4] * first * first, p[0] + p[2] * first);
  entries += "C_VoiceMotor m_P 0 = array CMyArray<double> 6\n";
  for (int i = 0; i < 6; ++i) entries += Entry("C_VoiceMotor/CMyArray", "m_P", i, i < 5 ? p[i] : 0.0);
  Write_Store(station, entries);
}

}  // namespace

bool Calibrate_Forces(int stations, const std::function<void()>& prepare, const std::function<bool()>& cancelled) {
  // A force of 1 g for each ampere: so long as it holds, a set force is a current.
  for (int n = 1; n <= stations; ++n) Write_Store(n, Polynomial(1.0, 0.0));
  prepare();
  Orsanta_dll_init(0);
  std::vector<std::vector<C_Reading>> readings(static_cast<size_t>(stations));
  On_All_Stations(stations, [&](int n) { readings[static_cast<size_t>(n - 1)] = Take_Readings(n, cancelled); });
  Orsanta_dll_uninit();

  bool all = true;
  for (int n = 1; n <= stations; ++n) {
    const std::vector<C_Reading>& of_station = readings[static_cast<size_t>(n - 1)];
    if (!of_station.empty()) {
      Store_Model(n, of_station);
      continue;
    }
    all = false;
    if (!cancelled()) std::fprintf(stderr, "orsanta: station %d gave no force; the messages above say why\n", n);
  }
  return all;
}

}  // namespace app
