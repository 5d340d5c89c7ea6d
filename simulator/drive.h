// A voice-coil drive with its probe. It runs position commands, homes and measures its stroke by itself, and its run
// flag shows whether it still executes a command or changes its current.
//
// Ports written: 0 position command, raw; 1 starts homing and stroke measurement; 4 and 12 upper and lower current
// clamp, A; 6 speed, mm/s; 11 acceleration, mm/s^2; 7 to 10 stored and without effect. Ports sent: 4 position, raw; 5
// run flag; 8 ready flag; 10 and 11 greatest and least position of the stroke, raw, sent once when measured unless
// Settings::cyclic_stroke is set; 15 load, percent of 40 A; 16 coil current, A; 17 speed, mm/s; 18 position error, mm;
// 20 commanded position, mm; 200 version; 201 fault bits. The two flags also send a sample at once when they change.
// The caller holds the simulator's lock.
#pragma once

#include "simulator/motor_device.h"
#include "simulator/profile.h"

namespace simulator {

class C_Drive final : public C_Motor_Device {
 public:
  C_Drive(const Settings& settings, int can_id);

  bool Has_Input_Port(int port) const override;
  bool Has_Output_Port(int port) const override;
  bool Write_Port(int port, double value) override;
  bool Execute(int instruction) override;

  // The anvil and what lies on it.
  void Set_Part(double thickness_mm);
  void Set_Head_Height(double mm);

  void Set_Restless(double amplitude_mm);
  void Set_Slow_Homing(bool slow) { m_Slow_Homing = slow; }

 private:
  enum class Homing { None, Up, Down, Return };

  void Step() override;
  bool Is_At_Rest() const override;
  double Port_Value(int port) override;
  bool Is_Cyclic(int port) const override;

  void Command_Position(double mm);
  void Start_Move(double target_mm);
  void Start_Homing();
  void Next_Homing_Step(Homing next, double target_mm);
  void Step_Homing();
  void End_Homing();
  bool Has_Arrived() const;
  void Update_Run_Flag();
  void Set_Ready(bool ready);
  void Place_Surface();

  const double m_Anvil_Mm;
  const bool m_Cyclic_Stroke;
  C_Profile m_Profile;
  double m_Speed = 20.0;
  double m_Part_Mm = 0.0;
  double m_Head_Mm = 0.0;
  bool m_Executing = false;  // a position command
  bool m_Run_Flag = false;
  bool m_Ready = true;
  Homing m_Homing = Homing::None;
  Ticks m_Homing_Since = 0;
  double m_After_Homing = 0.0;  // mm, where to go then
  double m_Stroke_Min = 0.0;    // mm
  double m_Stroke_Max = 0.0;    // mm
  bool m_Slow_Homing = false;
  bool m_Cannot_Home = false;
};

}  // namespace simulator
