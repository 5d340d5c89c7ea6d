// The drive's own trapezoidal profile: from the present place and speed to a target, within a speed and an
// acceleration.
#pragma once

#include "simulator/servo.h"

namespace simulator {

class C_Profile {
 public:
  static constexpr double Acceleration_Limit = 1.0e6;  // mm/s^2

  // Both above 0.
  void Set_Speed(double mm_per_s) { m_Speed = mm_per_s; }
  void Set_Acceleration(double mm_per_s2);
  double Speed() const { return m_Speed; }

  void Start(double from, double velocity, double target);
  void Step();  // one tick
  bool Is_Done() const { return m_Done; }
  double Target() const { return m_Target; }
  const Setpoint& Now() const { return m_Setpoint; }

 private:
  Setpoint m_Setpoint;
  double m_Target = 0.0;
  double m_Speed = 20.0;
  double m_Acceleration = 5000.0;
  bool m_Done = true;
};

}  // namespace simulator
