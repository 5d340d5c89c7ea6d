// What a study was asked for. The options of a study that measures are kept in its folder, so that it can be taken up
// again.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "study/text.h"

namespace app {

struct C_Study_Options {
  std::string study;  // type1, grr, linearity, uncertainty, force
  std::string data;   // file of values; empty: measure
  std::string grr;    // uncertainty: file of a crossed study's values
  double tolerance_um = 0.0;
  double resolution_um = 0.1;
  double confidence_percent = 95.0;
  double alpha = 0.25;
  double reference_uncertainty_um = 0.0;
  double temperature_range_k = 1.0;
  double expansion_ppm = 11.5;

  // What is measured, and how.
  int station = 1;
  double force_g = 100.0;
  double block_mm = 5.0;
  uint64_t seed = 1;
  bool on_simulator = true;
  int parts = 10, appraisers = 3, trials = 3;
  std::vector<double> references_mm;  // of type1 one
  int repeats = 0;
  std::vector<double> heights_mm, forces_g;
  double placement_um = 0.0;  // standard deviation of each placing, on the simulator
  double appraiser_um = 0.0;  // standard deviation between appraisers, on the simulator
  double speed_mm_s = 0.0;    // of the landing, as the station had it; 0 where it is not known
  std::string started;        // date and time

  double Tolerance_Mm() const { return tolerance_um / 1000.0; }
  double Resolution_Mm() const { return resolution_um / 1000.0; }
  double Confidence() const { return confidence_percent / 100.0; }
};

NLOHMANN_DEFINE_TYPE_NON_INTRUSIVE(C_Study_Options, study, data, grr, tolerance_um, resolution_um, confidence_percent,
                                   alpha, reference_uncertainty_um, temperature_range_k, expansion_ppm, station,
                                   force_g, block_mm, seed, on_simulator, parts, appraisers, trials, references_mm,
                                   repeats, heights_mm, forces_g, placement_um, appraiser_um, speed_mm_s, started)

}  // namespace app
