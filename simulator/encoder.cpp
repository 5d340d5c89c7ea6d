#include "simulator/encoder.h"

#include <cmath>

namespace simulator {

C_Encoder::C_Encoder(const Settings& settings)
    : m_Raw_Per_Mm(settings.counts_per_mm * 65536.0),
      m_Step_Mm(settings.encoder_step_mm),
      m_Noise_Mm(settings.noise_mm) {}

double C_Encoder::Sample(double position_mm, double noise) const {
  double seen = position_mm + noise * m_Noise_Mm;
  if (m_Step_Mm > 0.0) seen = std::round(seen / m_Step_Mm) * m_Step_Mm;
  return std::round(seen * m_Raw_Per_Mm);
}

}  // namespace simulator
