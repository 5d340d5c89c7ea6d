// The ground of a test under the simulated clock: a machine room, a folder of its own and a scripted operator.
#pragma once

#include <gtest/gtest.h>

#include "common/scripted_front.h"
#include "common/server_pace.h"
#include "common/temp_folder.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"

namespace orsanta {

class C_Simulated_Test : public testing::Test {
 protected:
  // seed: of the clock's choices and of everything random on the simulator.
  explicit C_Simulated_Test(simulator::Settings room = {}, uint64_t seed = 1) : clock(seed) {
    room.seed = seed;
    room.instruction_ms = Server_Pace_Ms();
    simulator::Reset(room);
  }

  C_Simulated_Clock clock;
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
};

}  // namespace orsanta
