// What a station knows of itself besides the force surface: the fit of the force polynomial and the friction model.
#include "numeric/basis_fit.h"
#include "numeric/polyfit.h"
#include "station/voice_motor.h"

namespace orsanta {

int C_VoiceMotor::Fit_Force_Model(double* currents, double* forces, int n) {
  if (n < 3) return 0;
  CMyArray<double> x;
  CMyArray<double> z;
  for (int i = 0; i < n; ++i) {
    x.Add(currents[i]);
    z.Add(forces[i]);
  }
  CMyArray<double> res;  // highest power first
  CMyPolyfit().My_PolyFit(x, z, 2, res);
  Val_Force_KK = res[0];
  Val_Force_K = res[1];
  Val_Static_GForce = res[2];
  if (m_CalPos.GetSize() > 0) Val_mark_pos = m_CalPos[0];
  return 1;
}

CMyArray<double> C_VoiceMotor::Friction_Forces(CMyArray<double> positions, FitData fit) const {
  CMyArray<double> ForceData;
  mExpFit().Evaluate(fit, positions, ForceData);
  return ForceData;
}

}  // namespace orsanta
