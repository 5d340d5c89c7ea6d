#include "simulator/plant.h"

#include <algorithm>

namespace simulator {

C_Plant::C_Plant(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm)
    : m_Surface(lower_stop_mm), m_Force(force), m_Upper_Stop(upper_stop_mm), m_Lower_Stop(lower_stop_mm) {}

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
