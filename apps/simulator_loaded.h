// The simulator's control functions as this program calls them: weak, so that it starts with every client library.
// Where the one that was loaded is a machine's they are null, and a command that needs the simulator says so before it
// calls one.
#pragma once

#include "simulator/simulator.h"

namespace simulator {

[[gnu::weak]] void Reset(const Settings& settings);
[[gnu::weak]] void Place_Part(int can_id, double thickness_mm);
[[gnu::weak]] void Remove_Part(int can_id);
[[gnu::weak]] double True_Position(int can_id);
[[gnu::weak]] double True_Force(int can_id);
[[gnu::weak]] double Force_Gauge(int can_id);
[[gnu::weak]] void Set_Input(int bit, int value);
[[gnu::weak]] int Get_Output(int bit);

}  // namespace simulator

namespace app {

bool On_Simulator();

// False, after one line that says what the command needs, where the client library is not the simulator.
bool Need_Simulator(const char* command);

}  // namespace app
