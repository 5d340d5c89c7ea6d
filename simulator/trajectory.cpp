#include "simulator/trajectory.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

Motion_State After(const Motion_State& state, double jerk, double t) {
  return {state.position + t * (state.velocity + t * (state.acceleration / 2.0 + t * jerk / 6.0)),
          state.velocity + t * (state.acceleration + t * jerk / 2.0), state.acceleration + t * jerk};
}

}  // namespace

void C_Trajectory::Begin(const Motion_State& state) {
  m_Stretches.clear();
  m_Last = state;
  m_Duration = 0.0;
}

void C_Trajectory::Add(double duration, double jerk) {
  if (!(duration > 0.0)) return;
  m_Stretches.push_back({m_Duration, jerk, m_Last});
  m_Last = After(m_Last, jerk, duration);
  m_Duration += duration;
}

void C_Trajectory::Stand(double position) {
  Begin({position, 0.0, 0.0});
  m_End = position;
}

void C_Trajectory::Plan_Move(double from, double to, const Motion_Limits& limits) {
  Stand(from);
  const double way = std::abs(to - from);
  if (way == 0.0) return;
  const double acc = limits.acceleration;
  const double jerk = limits.jerk;
  // Speed up to v: the acceleration is built up and removed in `ramp` each, and held for `hold` between. The way of
  // speeding up and braking together is v (2 ramp + hold).
  double v = limits.velocity;
  double ramp = std::min(acc / jerk, std::sqrt(v / jerk));
  double hold = std::max(v / acc - acc / jerk, 0.0);
  if (v * (2.0 * ramp + hold) > way) {
    // The full speed is out of reach. With the acceleration at its limit, v^2 / acc + v acc / jerk is the whole way.
    const double half = acc * acc / jerk / 2.0;
    v = std::sqrt(half * half + acc * way) - half;
    ramp = acc / jerk;
    hold = v / acc - ramp;
    if (hold < 0.0) {  // nor is the full acceleration reached: the way is 2 jerk ramp^3
      ramp = std::cbrt(way / (2.0 * jerk));
      hold = 0.0;
      v = jerk * ramp * ramp;
    }
  }
  const double cruise = std::max(way / v - (2.0 * ramp + hold), 0.0);
  const double j = std::copysign(jerk, to - from);
  Add(ramp, j);
  Add(hold, 0.0);
  Add(ramp, -j);
  Add(cruise, 0.0);
  Add(ramp, -j);
  Add(hold, 0.0);
  Add(ramp, j);
  m_End = to;
}

void C_Trajectory::Plan_Stop(const Motion_State& state, const Motion_Limits& limits) {
  Begin(state);
  const double jerk = limits.jerk;
  // The speed that remains if the acceleration is removed at once gives the direction of the push.
  const double left = state.velocity + state.acceleration * std::abs(state.acceleration) / (2.0 * jerk);
  const double side = left > 0.0 ? -1.0 : 1.0;
  const double a = side * state.acceleration;  // seen in the direction of the push
  const double change = -side * state.velocity;
  // Push up to the peak p and back to none: the speed changes by (2 p^2 - a^2) / (2 jerk).
  const double peak = std::min(std::sqrt(std::max(jerk * change + a * a / 2.0, 0.0)), std::max(limits.acceleration, a));
  const double hold = (change - (2.0 * peak * peak - a * a) / (2.0 * jerk)) / peak;
  Add((peak - a) / jerk, side * jerk);
  if (peak > 0.0) Add(hold, 0.0);
  Add(peak / jerk, -side * jerk);
  m_End = m_Last.position;
}

Motion_State C_Trajectory::At(double t) const {
  if (t >= m_Duration) return {m_End, 0.0, 0.0};
  const auto next = std::upper_bound(m_Stretches.begin(), m_Stretches.end(), t,
                                     [](double time, const C_Stretch& s) { return time < s.start; });
  const C_Stretch& s = *std::prev(next);
  return After(s.state, s.jerk, t - s.start);
}

void C_Trajectory::Shift(double amount) {
  for (C_Stretch& s : m_Stretches) s.state.position += amount;
  m_Last.position += amount;
  m_End += amount;
}

}  // namespace simulator
