// A connected simulator with mapped drives, and the few things that every test does with them.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "drive/tremalink.h"
#include "simulator/simulator.h"
#include "support/time/clock.h"

namespace simulator_test {

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

// A room with a temperature board at CAN id 20 besides what is always there.
inline simulator::Settings With_Board() {
  simulator::Settings settings;
  settings.temperature_boards = {20};
  return settings;
}

// A connected room on the simulated clock.
class Room : public testing::Test {
 protected:
  explicit Room(const simulator::Settings& settings = {}) { Connect(settings); }
  orsanta::C_Simulated_Clock m_Clock{1};
};

inline void Map_Input(int thread, int can_id, int port, int format, int channel, int depth) {
  SET_INPUT_DATA_MAP(thread, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(thread, channel, depth);
}

// A drive on the channels and the instruction thread that its CAN id names.
class C_Test_Drive {
 public:
  explicit C_Test_Drive(int can_id) : m_Id(can_id) {
    const int inputs[][4] = {{8, 6, 0, 256}, {201, 6, 1, 256}, {11, 6, 2, 256}, {10, 6, 3, 256},
                             {5, 1, 6, 256}, {4, 4, 5, 4096},  {16, 8, 9, 4096}};
    for (const auto& [port, format, k, depth] : inputs) Map_Input(m_Id, m_Id, port, format, Channel(k), depth);
    const int outputs[][3] = {{0, 6, 0}, {1, 6, 1}, {4, 8, 2}, {6, 8, 3}, {11, 8, 8}, {12, 8, 9}};
    for (const auto& [port, format, k] : outputs) SET_OUTPUT_DATA_MAP(m_Id, m_Id, port, format, Channel(k));
    WaitForAllInsFinish(m_Id);
  }

  int Channel(int k) const { return m_Id * 20 + k; }
  int Ready() const { return Channel(0); }
  int Position() const { return Channel(5); }

  void Send(int k, double value) const {
    OUTPUT_DATA(m_Id, Channel(k), value);
    WaitForAllInsFinish(m_Id);
  }
  void Clamp(double ampere) const { Send(2, ampere); }
  void Speed(double mm_per_s) const { Send(3, mm_per_s); }
  void Go(double mm) const { Send(0, mm * Raw_Per_Mm); }

  // The newest run flag, read as a caller does who wants no old one; -1 if none comes.
  int Run_Flag() const { return Newest(Channel(6)); }
  int Newest(int channel) const {
    for (int tries = 0; tries < 40; ++tries) {
      const std::vector<double> flags = Take(channel, 256);
      if (!flags.empty() && flags.size() < 256) return static_cast<int>(flags.back());
      orsanta::Sleep(1);
    }
    return -1;
  }
  // Milliseconds until the run flag is 0.
  double Till_Idle() const {
    const double start = orsanta::Now_Ms();
    while (Run_Flag() != 0 && orsanta::Now_Ms() - start < 5000.0) orsanta::Sleep(1);
    EXPECT_LT(orsanta::Now_Ms() - start, 5000.0) << "the run flag of drive " << m_Id << " stays on";
    return orsanta::Now_Ms() - start;
  }
  void Go_And_Wait(double mm) const {
    Go(mm);
    Till_Idle();
  }
  // Presses on what lies there, with that current.
  void Land(double ampere) const {
    Clamp(ampere);
    Till_Idle();
    Go_And_Wait(20.0);
  }
  // The mean of `count` position samples from now on, mm.
  double Mean_Position(int count) const {
    Take(Position());
    double sum = 0.0;
    for (int i = 0; i < count; ++i) {
      orsanta::Sleep(2);
      sum += Take(Position()).back();
    }
    return sum / count / Raw_Per_Mm;
  }

 private:
  const int m_Id;
};

}  // namespace simulator_test
