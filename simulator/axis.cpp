#include "simulator/axis.h"

namespace simulator {

void C_Axis::Step() {
  if (!m_Moving) return;
  ++m_Ticks;
  const double t = static_cast<double>(m_Ticks) * Tick_S;
  m_State = m_Trajectory.At(t);
  if (t < m_Trajectory.Duration()) return;
  m_Moving = false;
  Start_Next();
}

void C_Axis::Go(double target) {
  m_Next = C_Move{target, m_Limits};
  if (m_Moving) {
    Brake();
  } else {
    Start_Next();
  }
}

void C_Axis::Start_Next() {
  if (m_Paused || !m_Next) return;
  m_Current = *m_Next;
  m_Next.reset();
  m_Trajectory.Plan_Move(m_State.position, m_Current.target, m_Current.limits);
  m_Ticks = 0;
  m_Moving = m_Trajectory.Duration() > 0.0;
}

void C_Axis::Brake() {
  m_Trajectory.Plan_Stop(m_State, m_Current.limits);
  m_Ticks = 0;
}

void C_Axis::Jump(double target) {
  m_Next.reset();
  m_Moving = false;
  m_State = {target, 0.0, 0.0};
}

void C_Axis::Stop() {
  m_Next.reset();
  if (m_Moving) Brake();
}

void C_Axis::Pause() {
  if (m_Paused) return;
  m_Paused = true;
  if (!m_Moving) return;
  if (!m_Next && m_Trajectory.End() == m_Current.target) m_Next = m_Current;
  Brake();
}

void C_Axis::Resume() {
  m_Paused = false;
  if (!m_Moving) Start_Next();
}

void C_Axis::Set_Scale(double scale) {
  m_State.position = m_State.position * m_Scale / scale;
  m_Scale = scale;
}

void C_Axis::Set_Position(double value) {
  const double shift = value - m_State.position;
  m_Zero -= shift * m_Scale;
  m_State.position = value;
  m_Trajectory.Shift(shift);
  m_Current.target += shift;
  if (m_Next) m_Next->target += shift;
}

}  // namespace simulator
