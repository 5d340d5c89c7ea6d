// The machine room: the devices on the bus. The caller holds the bench's lock.
#pragma once

#include <map>
#include <memory>

#include "bench/bench.h"
#include "bench/device.h"
#include "bench/drive.h"
#include "bench/interpolation_device.h"
#include "bench/io_card.h"

namespace bench {

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
  C_Bench_Io_Card* Find_Card() const { return Find_As<C_Bench_Io_Card>(C_Bench_Io_Card::Can_Id_Of_Card); }

  void Advance(Ticks to);
  // The FIFO, or all of them, gets no more samples.
  void Unsubscribe(const C_Sample_Fifo* fifo);
  void Unsubscribe_All();

 private:
  std::map<int, std::unique_ptr<C_Device>> m_Devices;
};

}  // namespace bench
