// The control loop of a drive around its probe: position loop, speed loop, current under two clamps.
//
//   place   --(+)--> position gain --> speed, no more than the limit --(+)--> PI --> current --> clamps --> probe
//            (-)  place of the probe                             (-)  speed of the probe
//
// A probe that meets an obstacle before its target thus ends pressing with the clamp current. The caller holds the
// simulator's lock.
#pragma once

#include "simulator/plant.h"
#include "simulator/ticks.h"

namespace simulator {

struct Setpoint {
  double position = 0.0;      // mm
  double velocity = 0.0;      // mm/s
  double acceleration = 0.0;  // mm/s^2
};

class C_Servo {
 public:
  C_Servo(const Force_Truth& force, double upper_stop_mm, double lower_stop_mm);

  // One tick. speed_limit: the most that the position loop may demand, mm/s.
  void Step(const Setpoint& setpoint, double speed_limit);
  // A new command: resets the integrator, which still has what the old one needed.
  void Begin_Command();

  void Set_Upper_Clamp(double ampere) { m_Upper.Set(ampere); }
  void Set_Lower_Clamp(double ampere) { m_Lower.Set(ampere); }
  bool Takes_Up_Current() const { return m_Upper.left > 0 || m_Lower.left > 0; }
  void Set_Enabled(bool enabled);
  // A limit for both directions on top of the clamps, for a drive's own searches; No_Limit for none.
  void Set_Search_Limit(double ampere) { m_Search_Limit = ampere; }
  static constexpr double No_Limit = 1.0e9;

  double Current() const { return m_Current; }
  double Position_Error() const { return m_Error; }
  bool Is_Saturated() const { return m_Saturated; }
  // The probe has been at rest for some milliseconds, or makes no progress although it vibrates.
  bool Is_Standing() const;
  // Nothing changes until the next command.
  bool Is_At_Rest() const;
  // Something outside changed: the servo is no longer steady.
  void Disturb();

  C_Plant& Plant() { return m_Plant; }
  const C_Plant& Plant() const { return m_Plant; }

 private:
  // A clamp that reaches a new setting by a ramp.
  struct C_Clamp {
    double value;
    double step = 0.0;
    double goal;
    Ticks left = 0;
    explicit C_Clamp(double start) : value(start), goal(start) {}
    void Set(double ampere);
    void Step();
  };

  void Watch_Motion(double old_current);

  C_Plant m_Plant;
  C_Clamp m_Upper;
  C_Clamp m_Lower;
  double m_Search_Limit = No_Limit;
  bool m_Enabled = true;
  bool m_Saturated = false;
  double m_Current = 0.0;
  double m_Error = 0.0;
  double m_Integral = 0.0;        // mm/s^2
  Ticks m_Slow_Ticks = 0;         // since the probe last moved noticeably
  Ticks m_No_Progress_Ticks = 0;  // since it last made noticeable progress
  double m_Progress_From = 0.0;
  Ticks m_Steady_Ticks = 0;  // since anything changed
};

}  // namespace simulator
