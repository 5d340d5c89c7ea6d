// The one simulated installation of the process: machine room, motion server, connection and journal behind one lock.
//
// Any thread may open it. Opening takes the lock and advances the room to the present time; it is never held across a
// wait.
#pragma once

#include <memory>

#include "simulator/journal.h"
#include "simulator/room.h"
#include "simulator/server.h"
#include "simulator/simulator.h"
#include "support/time/lock.h"

namespace simulator {

struct C_Installation {
  explicit C_Installation(const Settings& settings);

  // Drops all maps, FIFOs and instruction threads, as the start of a connection and its end do.
  void Restart_Server();

  C_Journal journal;
  C_Room room;
  std::unique_ptr<C_Server> server;
  bool initialized = false;
  bool connected = false;
  uint64_t session = 0;  // counts the server's restarts
  int refused_connects;
  const Ticks instruction_ticks;
  double now_ms = 0.0;    // since Reset, at the last opening
  double start_ms = 0.0;  // of the clock, at Reset
};

// Access to the installation while it lives.
class C_Access {
 public:
  C_Access();
  C_Installation* operator->() const { return m_Installation; }
  C_Installation& operator*() const { return *m_Installation; }

 private:
  orsanta::C_Lock_Guard<orsanta::C_Leaf_Lock> m_Guard;
  C_Installation* m_Installation;
};

// Builds a new room. The count of sessions continues, so that waits in an earlier room end.
void Replace_Installation(const Settings& settings);

}  // namespace simulator
