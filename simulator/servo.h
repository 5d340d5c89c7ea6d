// The control loop of a drive around its probe: position loop, speed loop, current under two clamps.
//
//   place   --(+)--> position gain --> speed, no more than the limit --(+)--> PI --> current --> clamps --> probe
//            (-)  place of the probe                             (-)  speed of the probe
//
// A probe that meets an obstacle before its target thus ends pressing with the clamp current. The caller holds the
// simulator's lock.
#pragma once

#include <algorithm>
#include <cmath>

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
  static constexpr double Position_Gain = 150.0;     // 1/s
  static constexpr double Speed_Gain = 1000.0;       // 1/s
  static constexpr double Speed_Integral_S = 0.002;  // integral time; with the gain a damping ratio of 0.7
  static constexpr double Deadband = 0.0005;         // mm, so that the loop comes to rest within the dry friction

  static constexpr double Noticeable_Speed = 0.5;  // mm/s
  static constexpr double Noticeable_Way = 0.25;   // mm

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

inline void C_Servo::C_Clamp::Step() {
  if (left == 0) return;
  --left;
  value = left == 0 ? goal : value + step;
}

inline void C_Servo::Step(const Setpoint& setpoint, double speed_limit) {
  const double old_current = m_Current;
  m_Upper.Step();
  m_Lower.Step();
  m_Error = setpoint.position - m_Plant.Position();
  if (m_Enabled) {
    const double error = std::abs(m_Error) < Deadband ? 0.0 : m_Error;
    const double speed = std::clamp(setpoint.velocity + Position_Gain * error, -speed_limit, speed_limit);
    const double speed_error = speed - m_Plant.Velocity();
    const double acceleration = setpoint.acceleration + Speed_Gain * speed_error + m_Integral;
    const double wanted =
        m_Plant.Holding_Current() + acceleration * C_Plant::Mass_G / (C_Plant::Gravity * m_Plant.Gain());
    // The upper clamp wins where the two are crossed.
    m_Current =
        std::min(std::max(wanted, std::max(m_Lower.value, -m_Search_Limit)), std::min(m_Upper.value, m_Search_Limit));
    m_Saturated = m_Current != wanted;
    const bool winds_up = (wanted > m_Current && speed_error > 0.0) || (wanted < m_Current && speed_error < 0.0);
    if (!winds_up) m_Integral += speed_error * (Speed_Gain / Speed_Integral_S * Tick_S);
  }
  // Under the same current a probe that stood still over a whole tick stays where it is.
  const bool stays = m_Steady_Ticks >= 2 && m_Current == old_current && !m_Plant.Has_Vibration();
  if (!stays) m_Plant.Step(m_Current);
  Watch_Motion(old_current);
}

inline void C_Servo::Watch_Motion(double old_current) {
  const double velocity = m_Plant.Velocity();
  m_Slow_Ticks = std::abs(velocity) > Noticeable_Speed ? 0 : m_Slow_Ticks + 1;
  ++m_No_Progress_Ticks;
  if (std::abs(m_Plant.Position() - m_Progress_From) > Noticeable_Way) {
    m_Progress_From = m_Plant.Position();
    m_No_Progress_Ticks = 0;
  }
  const bool changed = velocity != 0.0 || m_Current != old_current || m_Plant.Is_Shaken();
  m_Steady_Ticks = changed ? 0 : m_Steady_Ticks + 1;
}

}  // namespace simulator
