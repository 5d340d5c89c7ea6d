#include "simulator/installation.h"

#include <cmath>

#include "support/time/clock.h"
#include "support/time/lock.h"

namespace simulator {

namespace {

orsanta::C_Leaf_Lock the_lock;
// Not destroyed at the end of the process: a client that exits without a stop still has threads that read samples.
C_Installation* the_installation = nullptr;
uint64_t the_session = 0;

// Whole ticks; 0 for a time below 0 or one that is no number.
Ticks To_Ticks(double ms) {
  return ms > 0.0 ? static_cast<Ticks>(std::floor(ms * static_cast<double>(Ticks_Per_Ms) + 1e-6)) : 0;
}

void Replace(const Settings& settings) {
  delete the_installation;
  the_installation = new C_Installation(settings);
  the_installation->start_ms = orsanta::Now_Ms();
}

}  // namespace

C_Installation::C_Installation(const Settings& settings)
    : room(settings),
      refused_connects(settings.refused_connects),
      instruction_ticks(To_Ticks(settings.instruction_ms)) {
  Restart_Server();
}

void C_Installation::Restart_Server() {
  room.Unsubscribe_All();
  server = std::make_unique<C_Server>(room, instruction_ticks, server == nullptr ? 0 : server->Now());
  connected = false;
  session = ++the_session;
}

C_Access::C_Access() : m_Guard(the_lock) {
  if (the_installation == nullptr) Replace(Settings());
  m_Installation = the_installation;
  const double clock_ms = orsanta::Now_Ms();
  double now_ms = clock_ms - m_Installation->start_ms;
  if (now_ms < m_Installation->now_ms) {  // the process has changed its clock: the room's time continues from here
    m_Installation->start_ms = clock_ms - m_Installation->now_ms;
    now_ms = m_Installation->now_ms;
  }
  m_Installation->now_ms = now_ms;
  m_Installation->server->Advance(To_Ticks(now_ms));
}

void Replace_Installation(const Settings& settings) {
  const orsanta::C_Lock_Guard hold(the_lock);
  Replace(settings);
}

}  // namespace simulator
