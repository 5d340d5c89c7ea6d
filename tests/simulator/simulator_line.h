// A connected simulator on the simulated clock, and the few things that every test does with it.
#pragma once

#include <gtest/gtest.h>

#include <vector>

#include "drive/tremalink.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "support/time/clock.h"

namespace simulator_test {

using orsanta::Now_Ms;
using orsanta::Sleep;

constexpr double Raw_Per_Mm = 65536000.0;

// The newest samples of a channel, oldest first.
inline std::vector<double> Take(int channel, int max_count = 4096) {
  std::vector<double> values(static_cast<size_t>(max_count));
  int count = 0;
  GetInputChannelData(channel, max_count, &count, values.data(), nullptr);
  values.resize(static_cast<size_t>(count));
  return values;
}

inline void Connect(const simulator::Settings& settings = {}) {
  simulator::Reset(settings);
  InitDevice_PC_Local_Controler(1, 0);
  ASSERT_NE(ConnectControlServer(L"", 0, nullptr), 0);
}

inline void Map_Input(int thread, int can_id, int port, int format, int channel, int depth) {
  SET_INPUT_DATA_MAP(thread, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(thread, channel, depth);
}

// The position of the drive that the channel is named for: of drive 1 on channel 1.
inline void Map_Position(int drive) {
  Map_Input(drive, drive, 4, 4, drive, 4096);
}

// A connected room with a temperature board at CAN id 20 besides what is always there.
class Room : public testing::Test {
 protected:
  Room() { Connect({.temperature_boards = {20}}); }
  orsanta::C_Simulated_Clock m_Clock{1};
};

}  // namespace simulator_test
