#include "simulator/motor_device.h"

#include <cmath>

namespace simulator {

namespace {

constexpr double Current_Limit = 100.0;  // A
constexpr double Current_Noise_A = 0.001;
constexpr double Full_Load_A = 40.0;

// 2 bytes of software version, then the date of the firmware, two decimal digits a byte.
constexpr int64_t Software_Version = 0x0203;
constexpr int64_t Firmware_Date = 0x20240518;

// The noise of a quantity is drawn under a port's number of its own.
constexpr int Position_Noise = 4;
constexpr int Current_Noise = 16;

}  // namespace

C_Motor_Device::C_Motor_Device(const Settings& settings, int can_id, const Force_Truth& force, double upper_stop_mm,
                               double lower_stop_mm)
    : C_Device(settings, can_id), m_Encoder(settings), m_Servo(force, upper_stop_mm, lower_stop_mm) {}

double C_Motor_Device::Position_Sample() {
  if (!m_Frozen) m_Last_Position = m_Encoder.Sample(m_Servo.Plant().Position(), Noise(Position_Noise));
  return m_Last_Position;
}

double C_Motor_Device::Current_Sample() const {
  return m_Servo.Current() + Current_Noise_A * Noise(Current_Noise);
}

double C_Motor_Device::Load_Percent() const {
  return std::abs(m_Servo.Current()) / Full_Load_A * 100.0;
}

double C_Motor_Device::Version_Word() {
  return static_cast<double>(Software_Version | Firmware_Date << 16);
}

bool C_Motor_Device::Set_Clamp(bool upper, double ampere) {
  if (std::abs(ampere) > Current_Limit) return false;
  upper ? m_Servo.Set_Upper_Clamp(ampere) : m_Servo.Set_Lower_Clamp(ampere);
  m_Servo.Disturb();
  return true;
}

void C_Motor_Device::Set_Stuck(bool stuck) {
  m_Servo.Plant().Set_Stuck(stuck);
  m_Servo.Disturb();
}

void C_Motor_Device::Set_Weak_Lift(bool weak) {
  m_Servo.Plant().Set_Weak_Lift(weak);
  m_Servo.Disturb();
}

}  // namespace simulator
