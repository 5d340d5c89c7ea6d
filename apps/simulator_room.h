// The room in which a command runs its stations: the simulator set up anew, and the table of stations that stand in it.
#pragma once

#include <cstdint>
#include <vector>

#include "orsanta/orsanta.h"
#include "simulator_loaded.h"

namespace app {

// Stations 1, 2, ... on the CAN ids of the same numbers. seed: of everything random on the simulator.
inline void Set_Up_Room(int stations, uint64_t seed) {
  simulator::Settings settings;
  settings.seed = seed;
  simulator::Reset(settings);
  std::vector<VCM_Resource_struct> records;
  for (int n = 1; n <= stations; ++n) records.push_back({n, n, n, 2 * n, 2 * n + 1, 1});
  ORSA_resource_alloc(records.data(), stations);
}

}  // namespace app
