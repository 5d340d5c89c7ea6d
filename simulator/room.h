// The machine room: the devices on the bus. The caller holds the simulator's lock.
#pragma once

#include <map>
#include <memory>

#include "simulator/device.h"
#include "simulator/drive.h"
#include "simulator/interpolation_device.h"
#include "simulator/io_card.h"
#include "simulator/simulator.h"

namespace simulator {

class C_Room {
 public:
  explicit C_Room(const Settings& settings);

  static constexpr int Can_Id_Limit = 64;  // ids run from 1 to 63

  // Null where no device is, or where it does not answer.
  C_Device* Answering(int can_id) const;
  // Null where no such device is built in.
  C_Device* Find(int can_id) const;
  template <class T>
  T* Find_As(int can_id) const {
    return dynamic_cast<T*>(Find(can_id));
  }
  C_Simulated_Io_Card* Find_Card() const { return Find_As<C_Simulated_Io_Card>(C_Simulated_Io_Card::Can_Id_Of_Card); }

  void Advance(Ticks to);
  // The FIFO, or all of them, gets no more samples.
  void Unsubscribe(const C_Sample_Fifo* fifo);
  void Unsubscribe_All();

 private:
  std::map<int, std::unique_ptr<C_Device>> m_Devices;
};

}  // namespace simulator
