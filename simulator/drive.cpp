#include "simulator/drive.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

constexpr double Upper_Stop_Mm = -0.5;
constexpr double Lower_Stop_Mm = 60.0;

constexpr double Arrival_Window_Mm = 0.05;
constexpr double Same_Place_Mm = 0.0005;

constexpr double Homing_Current_A = 1.0;
constexpr double Homing_Speed = 20.0;      // mm/s
constexpr double Slow_Homing_Speed = 1.0;  // mm/s: three ways of some 9 mm take far longer than 5 s
constexpr double Homing_Reach_Mm = 100.0;
constexpr Ticks Homing_Run_Up_Ticks = 20 * Ticks_Per_Ms;
constexpr double Stroke_Margin_Mm = 0.05;  // the usable stroke ends before the stops
constexpr double Least_Stroke_Mm = 0.5;
constexpr uint64_t Cannot_Home_Bit = 1u << 1;

constexpr double Speed_Limit = 1.0e5;  // mm/s

constexpr int Go_Zero_Instruction = 0x55;

}  // namespace

C_Drive::C_Drive(const Settings& settings, int can_id)
    : C_Motor_Device(settings, can_id, settings.force, Upper_Stop_Mm, Lower_Stop_Mm),
      m_Anvil_Mm(settings.anvil_mm),
      m_Cyclic_Stroke(settings.cyclic_stroke) {
  Place_Surface();
}

bool C_Drive::Has_Input_Port(int port) const {
  switch (port) {
    case 4:
    case 5:
    case 8:
    case 10:
    case 11:
    case 15:
    case 16:
    case 17:
    case 18:
    case 20:
    case 200:
    case 201:
      return true;
    default:
      return false;
  }
}

bool C_Drive::Has_Output_Port(int port) const {
  return (port >= 0 && port <= 1) || port == 4 || (port >= 6 && port <= 12);
}

bool C_Drive::Write_Port(int port, double value) {
  switch (port) {
    case 0:
      Command_Position(m_Encoder.To_Mm(value));
      break;
    case 1:
      Start_Homing();
      break;
    case 4:
    case 12:
      if (!Set_Clamp(port == 4, value)) return false;
      break;
    case 6:
      if (!(value > 0.0) || value > Speed_Limit) return false;
      m_Speed = value;
      if (m_Homing == Homing::None) m_Profile.Set_Speed(value);
      break;
    case 11:
      if (!(value > 0.0)) return false;
      m_Profile.Set_Acceleration(value);
      break;
    default:
      break;
  }
  Update_Run_Flag();
  return true;
}

bool C_Drive::Execute(int instruction) {
  if (instruction != Go_Zero_Instruction) return false;
  Start_Homing();
  Update_Run_Flag();
  return true;
}

// --- Motion ---

void C_Drive::Command_Position(double mm) {
  if (m_Homing != Homing::None) {
    m_After_Homing = mm;
    return;
  }
  const bool stands_there =
      !m_Executing && mm == m_Profile.Target() && std::abs(m_Servo.Position_Error()) < Same_Place_Mm;
  if (!stands_there) Start_Move(mm);
}

void C_Drive::Start_Move(double target_mm) {
  m_Profile.Start(m_Servo.Plant().Position(), m_Servo.Plant().Velocity(), target_mm);
  m_Servo.Begin_Command();
  m_Executing = true;
}

bool C_Drive::Has_Arrived() const {
  const bool there = std::abs(m_Servo.Position_Error()) < Arrival_Window_Mm || m_Servo.Is_Saturated();
  return m_Profile.Is_Done() && there && m_Servo.Is_Standing();
}

void C_Drive::Step() {
  m_Profile.Step();
  m_Servo.Step(m_Profile.Now(), std::max(m_Profile.Speed(), std::abs(m_Profile.Now().velocity)));
  if (m_Homing != Homing::None) {
    Step_Homing();
  } else if (m_Executing && Has_Arrived()) {
    m_Executing = false;
  }
  Update_Run_Flag();
}

bool C_Drive::Is_At_Rest() const {
  return !m_Run_Flag && m_Servo.Is_At_Rest();
}

void C_Drive::Update_Run_Flag() {
  const bool run = m_Executing || m_Homing != Homing::None || m_Servo.Takes_Up_Current();
  if (run == m_Run_Flag) return;
  m_Run_Flag = run;
  Send(5);
}

// --- Homing: up to the stop, down to the lower end, back to zero, all at a low current ---

void C_Drive::Start_Homing() {
  if (m_Homing != Homing::None) return;
  m_After_Homing = 0.0;
  m_Servo.Set_Search_Limit(Homing_Current_A);
  m_Profile.Set_Speed(m_Slow_Homing ? Slow_Homing_Speed : Homing_Speed);
  Set_Ready(false);
  Next_Homing_Step(Homing::Up, -Homing_Reach_Mm);
}

void C_Drive::Next_Homing_Step(Homing next, double target_mm) {
  m_Homing = next;
  m_Homing_Since = Now();
  Start_Move(target_mm);
}

void C_Drive::Step_Homing() {
  const bool blocked = m_Servo.Is_Saturated() && m_Servo.Is_Standing() && Now() - m_Homing_Since > Homing_Run_Up_Ticks;
  switch (m_Homing) {
    case Homing::Up:
      if (!blocked) return;
      m_Stroke_Min = m_Servo.Plant().Position() + Stroke_Margin_Mm;
      Next_Homing_Step(Homing::Down, Homing_Reach_Mm);
      break;
    case Homing::Down:
      if (!blocked) return;
      m_Stroke_Max = m_Servo.Plant().Position() - Stroke_Margin_Mm;
      Next_Homing_Step(Homing::Return, 0.0);
      break;
    default:
      if (Has_Arrived()) End_Homing();
      break;
  }
}

void C_Drive::End_Homing() {
  m_Homing = Homing::None;
  m_Executing = false;
  m_Servo.Set_Search_Limit(C_Servo::No_Limit);
  m_Profile.Set_Speed(m_Speed);
  m_Cannot_Home = m_Stroke_Max - m_Stroke_Min < Least_Stroke_Mm;
  if (m_Cannot_Home) {
    Send(201);
  } else {
    Send(10);
    Send(11);
    Set_Ready(true);
  }
  if (m_After_Homing != 0.0) Start_Move(m_After_Homing);
}

void C_Drive::Set_Ready(bool ready) {
  if (ready == m_Ready) return;
  m_Ready = ready;
  Send(8);
}

// --- Samples ---

// No client reads the ends of the stroke between measurements. Sent all the time they would fill their FIFO, which
// keeps old samples, and a client that reads it once after a measurement would get those of before.
bool C_Drive::Is_Cyclic(int port) const {
  return m_Cyclic_Stroke || (port != 10 && port != 11);
}

double C_Drive::Port_Value(int port) {
  switch (port) {
    case 4:
      return Position_Sample();
    case 5:
      return m_Run_Flag ? 1.0 : 0.0;
    case 8:
      return m_Ready ? 1.0 : 0.0;
    case 10:
      return std::round(m_Encoder.To_Raw(m_Stroke_Max));
    case 11:
      return std::round(m_Encoder.To_Raw(m_Stroke_Min));
    case 15:
      return Load_Percent();
    case 16:
      return Current_Sample();
    case 17:
      return m_Servo.Plant().Velocity();
    case 18:
      return m_Servo.Position_Error();
    case 20:
      return m_Profile.Now().position;
    case 200:
      return Version_Word();
    case 201:
      return static_cast<double>(Fault_Bits() | (m_Cannot_Home ? Cannot_Home_Bit : 0));
    default:
      return 0.0;
  }
}

// --- The room around the probe, and faults ---

void C_Drive::Place_Surface() {
  m_Servo.Plant().Set_Surface(m_Anvil_Mm + m_Head_Mm - m_Part_Mm);
  m_Servo.Disturb();
}

void C_Drive::Set_Part(double thickness_mm) {
  m_Part_Mm = thickness_mm;
  Place_Surface();
}

void C_Drive::Set_Head_Height(double mm) {
  m_Head_Mm = mm;
  Place_Surface();
}

void C_Drive::Set_Restless(double amplitude_mm) {
  m_Servo.Plant().Set_Vibration(amplitude_mm);
  m_Servo.Disturb();
}

}  // namespace simulator
