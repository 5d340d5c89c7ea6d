#include "simulator/interpolation_device.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

constexpr double Stop_Mm = 10.0;  // the probe's way ends at this distance from zero on both sides
constexpr double Sensor_Edge_Mm = 4.0;
constexpr double Catch_Up_Speed = 500.0;  // mm/s, after a jump of the commanded position

// A linear motor without spring and weight.
constexpr Force_Truth Linear_Motor{{0.0, 100.0, 0.0, 0.0, 0.0}};

// The thermistor on the low side of a divider, against a resistor of its own value at the reference temperature. Its
// resistance follows the Beta equation R = R0 exp(B (1/T - 1/T0)).
constexpr double Thermistor_Ohm = 10000.0;
constexpr double Thermistor_Beta = 3950.0;       // K
constexpr double Thermistor_Reference = 298.15;  // K
constexpr double Kelvin = 273.15;
constexpr double Adc_Full_Scale = 4095.0;

constexpr double Board_Warmer_By = 8.0;  // degrees Celsius: the board is warmed by its own parts

constexpr int Go_Zero_Instruction = 0x55;

}  // namespace

C_Interpolation_Device::C_Interpolation_Device(const Settings& settings, int can_id)
    : C_Motor_Device(settings, can_id, Linear_Motor, -Stop_Mm, Stop_Mm),
      m_Axis(m_Encoder.To_Raw(1.0)),
      m_Sensor{-Sensor_Edge_Mm, false},
      m_Second_Sensor{Sensor_Edge_Mm, true} {}

bool C_Interpolation_Device::Has_Input_Port(int port) const {
  return port == 1 || (port >= 15 && port <= 33) || (port >= 40 && port <= 44) || port == 50 ||
         (port >= 199 && port <= 203);
}

bool C_Interpolation_Device::Has_Output_Port(int port) const {
  return port == 4 || port == 8 || port == 12 || (port >= 15 && port <= 18);
}

bool C_Interpolation_Device::Write_Port(int port, double value) {
  if (port == 4 || port == 12) return Set_Clamp(port == 4, value);
  if (port == 17) {
    m_Enabled = value != 0.0;
    m_Servo.Set_Enabled(m_Enabled);
  }
  return true;
}

bool C_Interpolation_Device::Execute(int instruction) {
  if (instruction != Go_Zero_Instruction) return false;
  m_Axis.Go(0.0);
  return true;
}

bool C_Interpolation_Device::Has_Input(int kind, int bit) const {
  return kind == Kind_Own_Input && (bit == Sensor_Bit || bit == Second_Sensor_Bit);
}

bool C_Interpolation_Device::Get_Input(int, int bit) const {
  const C_Sensor& sensor = bit == Sensor_Bit ? m_Sensor : m_Second_Sensor;
  const double place = Plant().Position();
  return sensor.on_above ? place >= sensor.edge_mm : place <= sensor.edge_mm;
}

void C_Interpolation_Device::Set_Sensor(int bit, double edge_mm, bool on_above) {
  if (bit == Sensor_Bit) m_Sensor = {edge_mm, on_above};
  if (bit == Second_Sensor_Bit) m_Second_Sensor = {edge_mm, on_above};
}

Setpoint C_Interpolation_Device::Commanded() const {
  const double mm_per_unit = m_Encoder.To_Mm(m_Axis.Scale());
  const Motion_State& state = m_Axis.State();
  return {m_Encoder.To_Mm(m_Axis.Raw(state.position)), state.velocity * mm_per_unit, state.acceleration * mm_per_unit};
}

void C_Interpolation_Device::Step() {
  m_Axis.Step();
  const Setpoint commanded = Commanded();
  m_Followed = commanded.position;
  m_Servo.Step(commanded, std::max(Catch_Up_Speed, std::abs(commanded.velocity)));
  m_Largest_Error = std::max(m_Largest_Error, std::abs(m_Servo.Position_Error()));
}

bool C_Interpolation_Device::Is_At_Rest() const {
  return !m_Axis.Is_Moving() && m_Servo.Is_At_Rest();
}

int C_Interpolation_Device::Thermistor_Counts() const {
  const double ohm =
      Thermistor_Ohm * std::exp(Thermistor_Beta * (1.0 / (Kelvin + m_Celsius) - 1.0 / Thermistor_Reference));
  return static_cast<int>(Adc_Full_Scale * ohm / (Thermistor_Ohm + ohm));
}

double C_Interpolation_Device::Port_Value(int port) {
  switch (port) {
    case 1:
      return Position_Sample();
    case 15:
    case 42:
      return Load_Percent();
    case 16:
    case 32:
      return Current_Sample();
    case 17:
    case 31:
      return Plant().Velocity();
    case 18:
    case 33:
      return m_Servo.Position_Error();
    case 19:
      return Commanded().velocity;
    case 20:
    case 44:
      return Commanded().position;
    case 21:
      return Commanded().acceleration;
    case 22:
      return Plant().Gain();
    case 23:
      return Plant().Holding_Current();
    case 24:
      return Plant().Contact_Force();
    case 25:
    case 30:
      return m_Encoder.To_Mm(Position_Sample());
    case 26:
    case 43:
      return m_Enabled ? 1.0 : 0.0;
    case 27:
    case 40:
      return Thermistor_Counts();
    case 28:
    case 41:
      return std::round(m_Celsius + Board_Warmer_By);
    case 29:
      return static_cast<double>(Now()) * Tick_S / 3600.0;
    case 50:
      return m_Largest_Error;
    case 199:
    case 201:
      return static_cast<double>(Fault_Bits());
    case 200:
      return Version_Word();
    default:
      return 0.0;
  }
}

}  // namespace simulator
