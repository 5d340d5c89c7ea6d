// The work of a host on its stations: tasks that are waited for, and all stations side by side.
#pragma once

#include <functional>

namespace app {

// Waits until the condition holds; false after the longest wait for a task, one minute.
bool Poll(const std::function<bool()>& condition);
// Measures, and leaves the probe on the part. False when no result came.
bool Measure(int station, double& thickness_mm);
// Lifts the probe off the part that was measured. False when it did not come up.
bool Lift(int station);
// Runs the work of each of the stations 1, 2, ... on a thread of its own. Returns when all have ended; meanwhile calls
// watch on this thread every tenth of a second, if there is one.
void On_All_Stations(int stations, const std::function<void(int station)>& work,
                     const std::function<void()>& watch = nullptr);

}  // namespace app
