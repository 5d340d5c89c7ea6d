// The position scale of a device: an encoder step, noise on every sample, and the raw fixed-point position on the bus.
#pragma once

#include "simulator/simulator.h"

namespace simulator {

class C_Encoder {
 public:
  explicit C_Encoder(const Settings& settings);
  // Raw position, a whole number with 16 fraction bits of an encoder count. noise: normal, standard deviation 1.
  double Sample(double position_mm, double noise) const;
  double To_Raw(double mm) const { return mm * m_Raw_Per_Mm; }
  double To_Mm(double raw) const { return raw / m_Raw_Per_Mm; }

 private:
  const double m_Raw_Per_Mm;
  const double m_Step_Mm;
  const double m_Noise_Mm;
};

}  // namespace simulator
