// The force calibration of a command's stations. An operator calibrates from the panel, with a force gauge under the
// probe; this does the same over the public functions, with the force gauge of the simulator: it presses with known
// currents at several heights, fits the force model to what the gauge reads, and writes it to the stores of the
// stations.
#pragma once

#include <functional>

namespace app {

// Calibrates the stations 1, 2, ... whose stores are to stand in the working directory. The system must stand still;
// prepare sets up the simulator and the table of stations before it is started here. cancelled: asked before each
// landing. False when a station gave no readings, which is told, or when it was cancelled.
bool Calibrate_Forces(int stations, const std::function<void()>& prepare, const std::function<bool()>& cancelled);

}  // namespace app
