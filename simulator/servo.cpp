#include "simulator/servo.h"

namespace simulator {

namespace {

constexpr double Power_Up_Clamp = 40.0;  // A
constexpr Ticks Take_Up_Ticks = 10 * Ticks_Per_Ms;

constexpr Ticks Slow_Ticks = 4 * Ticks_Per_Ms;
constexpr Ticks No_Progress_Ticks = 60 * Ticks_Per_Ms;
constexpr Ticks Rest_Ticks = 2 * Ticks_Per_Ms;

}  // namespace

void C_Servo::C_Clamp::Set(double ampere) {
  if (ampere == goal) return;
  goal = ampere;
  left = Take_Up_Ticks;
  step = (goal - value) / static_cast<double>(Take_Up_Ticks);
}

C_Servo::C_Servo(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm)
    : m_Plant(force, upper_stop_mm, lower_stop_mm), m_Upper(Power_Up_Clamp), m_Lower(-Power_Up_Clamp) {}

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
