// Jerk-limited motion of one axis: a list of stretches of constant jerk, made for a move from rest to rest or for a
// stop.
//
//   acceleration   __          A move has up to seven stretches: the acceleration is built up, held and removed, the
//                 /  \         speed is held, and the braking mirrors it. Where the way is too short for the full speed
//                 or
//              __/    \__      acceleration, the peaks are lower and the held stretches vanish.
//                        \__/
//
// Units are the caller's: any length, and seconds.
#pragma once

#include <vector>

namespace simulator {

struct Motion_State {
  double position = 0.0;
  double velocity = 0.0;
  double acceleration = 0.0;
};

struct Motion_Limits {
  double velocity = 100.0;
  double acceleration = 1000.0;
  double jerk = 100000.0;
};

class C_Trajectory {
 public:
  // At rest at the position.
  void Stand(double position);
  // From rest at `from` to rest at `to`.
  void Plan_Move(double from, double to, const Motion_Limits& limits);
  // From the state to rest as soon as the limits allow. The state keeps the limits itself.
  void Plan_Stop(const Motion_State& state, const Motion_Limits& limits);

  double Duration() const { return m_Duration; }  // seconds
  double End() const { return m_End; }
  // The state `t` seconds after the start; at rest at End() from Duration() on.
  Motion_State At(double t) const;
  // Renames all positions: adds the amount to each.
  void Shift(double amount);

 private:
  struct C_Stretch {
    double start;  // seconds
    double jerk;
    Motion_State state;  // at its start
  };

  void Begin(const Motion_State& state);
  void Add(double duration, double jerk);

  std::vector<C_Stretch> m_Stretches;
  Motion_State m_Last;  // after the last stretch
  double m_Duration = 0.0;
  double m_End = 0.0;
};

}  // namespace simulator
