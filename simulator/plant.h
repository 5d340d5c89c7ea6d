// The mechanics of one probe: a moving mass with coil, spring, weight and friction between two end stops, and the
// surface that it touches.
//
// Positions in millimetres, downwards positive; forces in grams; currents in amperes. The caller holds the simulator's
// lock.
//
// What a tick of a drive does, of its plant, servo and profile, stands in their headers, so that it becomes one
// function: fifty ticks are a millisecond, and they are most of what a simulated hour costs.
#pragma once

#include <algorithm>
#include <cmath>
#include <numbers>

#include "simulator/simulator.h"
#include "simulator/ticks.h"

namespace simulator {

class C_Plant {
 public:
  static constexpr double Mass_G = 40.0;
  static constexpr double Gravity = 9806.65;  // mm/s^2: a mass of 1 g under a force of 1 g accelerates so fast

  C_Plant(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm);

  // One tick under the coil current.
  void Step(double current);

  double Position() const { return m_Position; }
  double Velocity() const { return m_Velocity; }
  double Contact_Force() const { return m_Contact_Force; }

  // Grams for each ampere at the present position, and the current at which coil, spring and weight balance there.
  double Gain() const {
    return std::max(m_Force.p[1] + m_Position * (m_Force.p[3] + m_Position * m_Force.p[4]), Least_Gain);
  }
  double Holding_Current() const { return -(m_Force.p[0] + m_Force.p[2] * m_Position) / Gain(); }

  // Where the probe first touches, and by how much that surface vibrates about it.
  void Set_Surface(double position_mm);
  double Surface() const { return m_Surface; }
  void Set_Vibration(double amplitude_mm) { m_Vibration = amplitude_mm; }
  bool Has_Vibration() const { return m_Vibration != 0.0; }
  // The surface moves and the probe is within its reach.
  bool Is_Shaken() const;

  void Set_Stuck(bool stuck) { m_Stuck = stuck; }
  void Set_Weak_Lift(bool weak) { m_Weak_Lift = weak; }

 private:
  static constexpr double Least_Gain = 1.0;  // g/A, where the given truth would stall or reverse the coil
  // 100 g press the surface in by 0.05 um. With the mass this is an oscillator of 3.5 kHz, 14 ticks a period.
  static constexpr double Stiffness = 2.0e6;  // g/mm
  // A share of the critical damping. At 0.03 the probe leaves an impact with 0.9 of its speed and bounces and rings for
  // 15 to 40 ms under a force of 100 to 40 g.
  static constexpr double Contact_Damping_Ratio = 0.03;
  static constexpr double Stop_Damping_Ratio = 0.3;
  static inline const double Critical_Damping = 2.0 * std::sqrt(Stiffness * Mass_G / Gravity);  // g for each mm/s
  static constexpr double Dry_Friction = 0.1;                                                   // g
  static constexpr double Viscous_Friction = 0.01;                                              // g for each mm/s
  static constexpr double Vibration_Hz = 37.0;

  double m_Position = 0.0;
  double m_Velocity = 0.0;
  double m_Contact_Force = 0.0;
  double m_Time_S = 0.0;  // of the vibration
  double m_Surface;
  double m_Vibration = 0.0;
  bool m_Stuck = false;
  bool m_Weak_Lift = false;
  const Force_Truth m_Force;
  const double m_Upper_Stop;
  const double m_Lower_Stop;
};

// Semi-implicit Euler: the new speed from the forces at the old place, the new place from the new speed. It keeps the
// energy of the stiff contact, so that only the modelled damping takes it away.
inline void C_Plant::Step(double current) {
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
    const double damping = Contact_Damping_Ratio * Critical_Damping * (m_Velocity - surface_velocity);
    m_Contact_Force = std::max(Stiffness * (m_Position - surface) + damping, 0.0);
    force -= m_Contact_Force;
  }
  const double stop_damping = Stop_Damping_Ratio * Critical_Damping * m_Velocity;
  if (m_Position < m_Upper_Stop) force += std::max(Stiffness * (m_Upper_Stop - m_Position) - stop_damping, 0.0);
  if (m_Position > m_Lower_Stop) force -= std::max(Stiffness * (m_Position - m_Lower_Stop) + stop_damping, 0.0);

  // Dry friction reduces the speed to 0: a speed below its effect in one step becomes 0.
  constexpr double Acceleration_Per_Gram = Gravity / Mass_G;
  constexpr double Friction_Step = Dry_Friction * Acceleration_Per_Gram * Tick_S;
  const double velocity = m_Velocity + force * Acceleration_Per_Gram * Tick_S;
  if (m_Stuck || std::abs(velocity) <= Friction_Step)
    m_Velocity = 0.0;
  else
    m_Velocity = velocity > 0.0 ? velocity - Friction_Step : velocity + Friction_Step;
  m_Position += m_Velocity * Tick_S;
}

}  // namespace simulator
