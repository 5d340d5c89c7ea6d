#include "simulator/profile.h"

#include <algorithm>
#include <cmath>

namespace simulator {

void C_Profile::Set_Acceleration(double mm_per_s2) {
  m_Acceleration = std::min(mm_per_s2, Acceleration_Limit);
}

void C_Profile::Start(double from, double velocity, double target) {
  m_Setpoint = {from, velocity, 0.0};
  m_Target = target;
  m_Done = false;
}

// The speed follows the one from which the way left is just enough to brake, v = sqrt(2 a d), within the speed limit.
void C_Profile::Step() {
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
