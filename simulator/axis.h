// An axis of the motion server's interpolator: it makes the commanded position of one interpolation device, tick by
// tick.
//
// A move starts from rest. A move that is commanded while the axis still moves, or while it is paused, waits: a moving
// axis first brakes. Positions are in user units; raw = position * scale + zero. The caller holds the simulator's lock.
#pragma once

#include <optional>

#include "simulator/ticks.h"
#include "simulator/trajectory.h"

namespace simulator {

class C_Axis {
 public:
  explicit C_Axis(double scale) : m_Scale(scale) {}

  void Step();  // one tick

  void Go(double target);
  // The commanded position becomes the target at once.
  void Jump(double target);
  void Stop();
  // Brakes, and keeps what is left of the move for Resume.
  void Pause();
  void Resume();

  // Limits hold for later moves. All are above 0.
  Motion_Limits& Limits() { return m_Limits; }
  // The axis is at rest, scale is not 0.
  void Set_Scale(double scale);
  // The present position gets the value; nothing moves.
  void Set_Position(double value);

  bool Is_Moving() const { return m_Moving; }
  bool Is_Done() const { return !m_Moving && !m_Next; }
  bool Is_Paused() const { return m_Paused && !m_Moving; }
  bool Is_Pause_Asked() const { return m_Paused; }

  double Position() const { return m_State.position; }
  double Raw(double position) const { return position * m_Scale + m_Zero; }
  double Scale() const { return m_Scale; }
  const Motion_State& State() const { return m_State; }

 private:
  struct C_Move {
    double target;
    Motion_Limits limits;
  };

  void Brake();
  void Start_Next();

  C_Trajectory m_Trajectory;
  Motion_State m_State;
  Motion_Limits m_Limits;        // for later moves
  C_Move m_Current{};            // the move that runs or ran last
  std::optional<C_Move> m_Next;  // what follows when the axis is at rest and not paused
  Ticks m_Ticks = 0;             // since the start of the trajectory
  bool m_Moving = false;
  bool m_Paused = false;
  double m_Scale;
  double m_Zero = 0.0;
};

}  // namespace simulator
