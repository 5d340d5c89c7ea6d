// The drive's own trapezoidal profile: from the present place and speed to a target, within a speed and an
// acceleration.
#pragma once

#include <algorithm>
#include <cmath>

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

// The speed follows the one from which the way left is just enough to brake, v = sqrt(2 a d), within the speed limit.
inline void C_Profile::Step() {
  if (m_Done) return;
  const double way = m_Target - m_Setpoint.position;
  const double speed_step = m_Acceleration * Tick_S;
  if (std::abs(way) <= speed_step * Tick_S && std::abs(m_Setpoint.velocity) <= 2.0 * speed_step) {
    m_Setpoint = {m_Target, 0.0, 0.0};
    m_Done = true;
    return;
  }
  const double wanted = std::copysign(std::min(m_Speed, std::sqrt(2.0 * m_Acceleration * std::abs(way))), way);
  const double change = std::clamp(wanted - m_Setpoint.velocity, -speed_step, speed_step);
  m_Setpoint.velocity += change;
  m_Setpoint.acceleration = change / Tick_S;
  m_Setpoint.position += m_Setpoint.velocity * Tick_S;
}

}  // namespace simulator
