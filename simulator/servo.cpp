#include "simulator/servo.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

constexpr double Power_Up_Clamp = 40.0;  // A
constexpr Ticks Take_Up_Ticks = 10 * Ticks_Per_Ms;

constexpr double Position_Gain = 150.0;     // 1/s
constexpr double Speed_Gain = 1000.0;       // 1/s
constexpr double Speed_Integral_S = 0.002;  // integral time; with the gain a damping ratio of 0.7
constexpr double Deadband = 0.0005;         // mm, so that the loop comes to rest within the dry friction

constexpr double Noticeable_Speed = 0.5;  // mm/s
constexpr Ticks Slow_Ticks = 4 * Ticks_Per_Ms;
constexpr double Noticeable_Way = 0.25;  // mm
constexpr Ticks No_Progress_Ticks = 60 * Ticks_Per_Ms;
constexpr Ticks Rest_Ticks = 2 * Ticks_Per_Ms;

}  // namespace

void C_Servo::C_Clamp::Set(double ampere) {
  if (ampere == goal) return;
  goal = ampere;
  left = Take_Up_Ticks;
  step = (goal - value) / static_cast<double>(Take_Up_Ticks);
}

void C_Servo::C_Clamp::Step() {
  if (left == 0) return;
  --left;
  value = left == 0 ? goal : value + step;
}

C_Servo::C_Servo(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm)
    : m_Plant(force, upper_stop_mm, lower_stop_mm), m_Upper(Power_Up_Clamp), m_Lower(-Power_Up_Clamp) {}

void C_Servo::Step(const Setpoint& setpoint, double speed_limit) {
  const double old_current = m_Current;
  m_Upper.Step();
  m_Lower.Step();
  m_Error = setpoint.position - m_Plant.Position();
  if (m_Enabled) {
    const double error = std::abs(m_Error) < Deadband ? 0.0 : m_Error;
    const double speed = std::clamp(setpoint.velocity + Position_Gain * error, -speed_limit, speed_limit);
    const double speed_error = speed - m_Plant.Velocity();
    const double acceleration = setpoint.acceleration + Speed_Gain * speed_error + m_Integral;
    const double wanted =
        m_Plant.Holding_Current() + acceleration * C_Plant::Mass_G / (C_Plant::Gravity * m_Plant.Gain());
    // The upper clamp wins where the two are crossed.
    m_Current =
        std::min(std::max(wanted, std::max(m_Lower.value, -m_Search_Limit)), std::min(m_Upper.value, m_Search_Limit));
    m_Saturated = m_Current != wanted;
    const bool winds_up = (wanted > m_Current && speed_error > 0.0) || (wanted < m_Current && speed_error < 0.0);
    if (!winds_up) m_Integral += speed_error * (Speed_Gain / Speed_Integral_S * Tick_S);
  }
  m_Plant.Step(m_Current);
  Watch_Motion(old_current);
}

void C_Servo::Watch_Motion(double old_current) {
  const double velocity = m_Plant.Velocity();
  m_Slow_Ticks = std::abs(velocity) > Noticeable_Speed ? 0 : m_Slow_Ticks + 1;
  ++m_No_Progress_Ticks;
  if (std::abs(m_Plant.Position() - m_Progress_From) > Noticeable_Way) {
    m_Progress_From = m_Plant.Position();
    m_No_Progress_Ticks = 0;
  }
  const bool changed = velocity != 0.0 || m_Current != old_current || m_Plant.Is_Shaken();
  m_Steady_Ticks = changed ? 0 : m_Steady_Ticks + 1;
}

void C_Servo::Begin_Command() {
  m_Integral = 0.0;
  m_Saturated = false;
  Disturb();
}

void C_Servo::Disturb() {
  m_Slow_Ticks = 0;
  m_No_Progress_Ticks = 0;
  m_Progress_From = m_Plant.Position();
  m_Steady_Ticks = 0;
}

void C_Servo::Set_Enabled(bool enabled) {
  m_Enabled = enabled;
  m_Current = 0.0;
  Begin_Command();
}

bool C_Servo::Is_Standing() const {
  return m_Slow_Ticks >= Slow_Ticks || m_No_Progress_Ticks >= No_Progress_Ticks;
}

bool C_Servo::Is_At_Rest() const {
  return m_Steady_Ticks >= Rest_Ticks && !Takes_Up_Current();
}

}  // namespace simulator
