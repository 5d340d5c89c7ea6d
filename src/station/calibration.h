// C_Calibration: one force calibration of a station, from its first dialog to the parameters.
//
// The station presses with a row of known currents at one or more heights of the head, the operator types the force
// that a gauge under the probe reads, and the force polynomial and, from three heights on, the force surface are fitted
// to the samples. Or the operator enters a linear model by hand. Dialogs show newtons; parameters are grams, with 100 g
// to 1 N.
//
// Dialogs and motion go on the calling thread, which is the panel's. Each motion takes the station's m_TestLock for
// itself: a task that is queued meanwhile runs between two landings.
#pragma once

#include "support/base/array.h"

namespace orsanta {

class C_VoiceMotor;

class C_Calibration {
 public:
  explicit C_Calibration(C_VoiceMotor& station) : m_Station(station) {}

  // Returns 1 when it ended with parameters set, 0 when the operator cancelled or the probe did not land.
  int Run();

 private:
  bool Ask_Settings(int& be_SetBaseParameter);
  int Enter_Base_Parameters();
  int Measure_Force_Model();
  bool Take_Samples();
  bool Take_Sample(double current);
  double Cal_Land(double current);
  void Cal_Back();
  double Fit_Samples(bool be_surface);

  C_VoiceMotor& m_Station;
  // The samples, one of each for a landing.
  CMyArray<double> m_CalCurrent;
  CMyArray<double> m_CalPos;
  CMyArray<double> m_CalForce;  // taken to the height of the first landing
  double m_CalMarkPos = 0.0;    // position read at the last landing
};

}  // namespace orsanta
