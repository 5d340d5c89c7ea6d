// The mechanics of one probe: a moving mass with coil, spring, weight and friction between two end stops, and the
// surface that it touches.
//
// Positions in millimetres, downwards positive; forces in grams; currents in amperes. The caller holds the simulator's
// lock.
#pragma once

#include <algorithm>

#include "simulator/simulator.h"

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
  // The surface moves and the probe is within its reach.
  bool Is_Shaken() const;

  void Set_Stuck(bool stuck) { m_Stuck = stuck; }
  void Set_Weak_Lift(bool weak) { m_Weak_Lift = weak; }

 private:
  static constexpr double Least_Gain = 1.0;  // g/A, where the given truth would stall or reverse the coil

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

}  // namespace simulator
