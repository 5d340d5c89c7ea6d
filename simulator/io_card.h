// The IO card: eight inputs (kind 4) and eight outputs (kind 3). The caller holds the simulator's lock.
#pragma once

#include "simulator/device.h"

namespace simulator {

class C_Simulated_Io_Card final : public C_Device {
 public:
  static constexpr int Can_Id_Of_Card = 15;
  static constexpr int Bit_Count = 8;
  enum : int { Kind_Output = 3, Kind_Input = 4 };

  explicit C_Simulated_Io_Card(const Settings& settings) : C_Device(settings, Can_Id_Of_Card) {}

  bool Has_Input_Port(int) const override { return false; }
  bool Has_Output_Port(int) const override { return false; }
  bool Write_Port(int, double) override { return false; }
  bool Has_Input(int kind, int bit) const override { return kind == Kind_Input && Is_Bit(bit); }
  bool Has_Output(int kind, int bit) const override { return kind == Kind_Output && Is_Bit(bit); }
  bool Get_Input(int, int bit) const override { return m_Inputs[static_cast<size_t>(bit)]; }
  void Set_Output(int, int bit, bool on) override { m_Outputs[static_cast<size_t>(bit)] = on; }

  static bool Is_Bit(int bit) { return bit >= 0 && bit < Bit_Count; }
  void Set_Input(int bit, bool on) { m_Inputs[static_cast<size_t>(bit)] = on; }
  bool Get_Output(int bit) const { return m_Outputs[static_cast<size_t>(bit)]; }

 private:
  void Step() override {}
  bool Is_At_Rest() const override { return true; }
  double Port_Value(int) override { return 0.0; }

  std::array<bool, Bit_Count> m_Inputs{};
  std::array<bool, Bit_Count> m_Outputs{};
};

}  // namespace simulator
