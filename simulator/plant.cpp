#include "simulator/plant.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "simulator/ticks.h"

namespace simulator {

namespace {

// 100 g press the surface in by 0.05 um. With the mass this is an oscillator of 3.5 kHz, 14 ticks a period.
constexpr double Stiffness = 2.0e6;  // g/mm
// A share of the critical damping. At 0.03 the probe leaves an impact with 0.9 of its speed and bounces and rings for
// 15 to 40 ms under a force of 100 to 40 g.
constexpr double Contact_Damping_Ratio = 0.03;
constexpr double Stop_Damping_Ratio = 0.3;
constexpr double Dry_Friction = 0.1;       // g
constexpr double Viscous_Friction = 0.01;  // g for each mm/s
constexpr double Vibration_Hz = 37.0;

double Critical_Damping() {  // g for each mm/s
  static const double value = 2.0 * std::sqrt(Stiffness * C_Plant::Mass_G / C_Plant::Gravity);
  return value;
}

}  // namespace

C_Plant::C_Plant(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm)
    : m_Surface(lower_stop_mm), m_Force(force), m_Upper_Stop(upper_stop_mm), m_Lower_Stop(lower_stop_mm) {}

// Semi-implicit Euler: the new speed from the forces at the old place, the new place from the new speed. It keeps the
// energy of the stiff contact, so that only the modelled damping takes it away.
void C_Plant::Step(double current) {
  if (m_Weak_Lift) current = std::max(current, Holding_Current());
  double surface = m_Surface;
  double surface_velocity = 0.0;
  if (m_Vibration != 0.0) {
    constexpr double Omega = 2.0 * std::numbers::pi * Vibration_Hz;
    surface += m_Vibration * std::sin(Omega * m_Time_S);
    surface_velocity = m_Vibration * Omega * std::cos(Omega * m_Time_S);
    m_Time_S += Tick_S;
  }

  double force = m_Force.p[0] + m_Force.p[2] * m_Position + current * Gain() - Viscous_Friction * m_Velocity;
  m_Contact_Force = 0.0;
  if (m_Position > surface) {
    const double damping = Contact_Damping_Ratio * Critical_Damping() * (m_Velocity - surface_velocity);
    m_Contact_Force = std::max(Stiffness * (m_Position - surface) + damping, 0.0);
    force -= m_Contact_Force;
  }
  const double stop_damping = Stop_Damping_Ratio * Critical_Damping() * m_Velocity;
  if (m_Position < m_Upper_Stop) force += std::max(Stiffness * (m_Upper_Stop - m_Position) - stop_damping, 0.0);
  if (m_Position > m_Lower_Stop) force -= std::max(Stiffness * (m_Position - m_Lower_Stop) + stop_damping, 0.0);

  // Dry friction reduces the speed to 0: a speed below its effect in one step becomes 0.
  constexpr double Acceleration_Per_Gram = Gravity / Mass_G;
  const double velocity = m_Velocity + force * Acceleration_Per_Gram * Tick_S;
  constexpr double Friction_Step = Dry_Friction * Acceleration_Per_Gram * Tick_S;
  m_Velocity = std::copysign(std::max(std::abs(velocity) - Friction_Step, 0.0), velocity);
  if (m_Stuck || m_Velocity == 0.0) m_Velocity = 0.0;
  m_Position += m_Velocity * Tick_S;
}

void C_Plant::Set_Surface(double position_mm) {
  m_Surface = std::clamp(position_mm, m_Upper_Stop, m_Lower_Stop);
  if (m_Position > m_Surface) {  // a part that is pushed under a lowered probe lifts it
    m_Position = m_Surface;
    m_Velocity = 0.0;
  }
}

bool C_Plant::Is_Shaken() const {
  return m_Vibration != 0.0 && m_Position > m_Surface - 2.0 * m_Vibration;
}

}  // namespace simulator
