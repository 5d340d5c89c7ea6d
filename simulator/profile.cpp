#include "simulator/profile.h"

#include <algorithm>

namespace simulator {

void C_Profile::Set_Acceleration(double mm_per_s2) {
  m_Acceleration = std::min(mm_per_s2, Acceleration_Limit);
}

void C_Profile::Start(double from, double velocity, double target) {
  m_Setpoint = {from, velocity, 0.0};
  m_Target = target;
  m_Done = false;
}

}  // namespace simulator
