// How the ports of a device are tied to the channels of the motion server, for both drive classes. A port is a data
// item inside the device; code after the mapping deals in channels alone.
//
// Threads: an object is mapped by one thread at a time, which C_Mapped_Ids sees to.
#pragma once

#include <functional>
#include <span>

#include "drive/fifo_window.h"
#include "support/base/array.h"
#include "support/time/critical_section.h"
#include "support/time/shared.h"

namespace orsanta {

// FIFO depths in samples: of a status value, and of a stream that must not lose samples.
constexpr int Depth_Status = 256;
constexpr int Depth_Stream = 4096;

struct C_Input_Row {
  int port;
  int format;  // code of the value: 1 a flag, 4 and 6 whole numbers of 32 and 48 bits, 8 a number of 8 bytes
  int channel;
  int depth;
  C_FIFO2Window* window = nullptr;  // is started on the channel; not owned
};

struct C_Output_Row {
  int port;
  int format;
  int channel;
};

// What an object of a drive class has mapped.
class C_Mapped_Device {
 public:
  // Ties a port to an input channel with a FIFO of `depth` samples and starts the window on it. Returns 1.
  int Map_Fifo_Channel(int can_id, int port, int channel, C_FIFO2Window* window, int format, int depth = Depth_Stream);

 protected:
  // thread_num: the server's instruction thread for all instructions of the object.
  explicit C_Mapped_Device(int thread_num) : m_ThreadNum(thread_num) {}
  ~C_Mapped_Device() = default;

  // Queue the maps in the order of the rows, each of which empties its FIFO. Only a row with a window waits.
  void Map_Inputs(int can_id, std::span<const C_Input_Row> rows);
  void Map_Outputs(int can_id, std::span<const C_Output_Row> rows);
  // Ends the threads of the windows. The owner calls it before the windows go.
  void End_Windows();

  Shared<int> m_ThreadNum;

 private:
  void Map_Input(int can_id, int port, int format, int channel, int depth);

  CMyArray<C_FIFO2Window*> m_WindowList;  // started here; not owned
};

// The CAN ids of one drive class whose channels stand. Any thread.
class C_Mapped_Ids {
 public:
  // Calls map unless the id is mapped: of several objects on one id exactly one maps, and the others wait and find it
  // done. Returns 1 for a mapped id, else what map returned.
  int Map_Once(int can_id, const std::function<int()>& map);
  // Forgets all ids: their maps went with the connection.
  void Clear();

 private:
  CMyCriticalSection m_Lock;  // held across a search and mapping
  CMyArray<int> m_Ids GUARDED_BY(m_Lock);
};

}  // namespace orsanta
