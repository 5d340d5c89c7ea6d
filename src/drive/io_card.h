// C_Io_Card: the eight digital inputs and eight outputs of the machine, on one IO card on the CAN bus.
//
// It also works without a card, and a pulse generator can stand in for inputs, so that a machine can be run on the
// simulator. Any thread may call; there is no lock. Set_Io_Mode and Map_Io belong to the owner and to the panel.
#pragma once

#include <cstdint>

#include "support/base/array.h"
#include "support/time/shared.h"
#include "support/time/stopwatch.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Io_Card : private C_Uncopied {
 public:
  static constexpr int Channel_Count = 8;  // of the card, as IO numbers 0 to 7
  static constexpr int Read_Failed = -1;   // of Get_Io

  ~C_Io_Card();

  // IoInit: 0 without a card, any other value with one. Ends all simulation.
  void Set_Io_Mode(int IoInit);
  // Maps the card's eight outputs and inputs, once in the life of the object. count: channels asked for, which sizes
  // the channel lists and nothing else. can_id: CAN id of the card. A card that does not answer is not told; reads then
  // give -1.
  void Map_Io(int count, int can_id);
  // The input's state: 0 or 1, -1 when the read failed, 3 when no card is in use. A channel number that shares a bit
  // with the simulation mask answers pulses instead, with or without a card; channel 0 therefore never does.
  int Get_Io(int channel);
  // Sets an output at once; without a card nothing happens. Only the low eight bits of value count.
  void Set_Io(int channel, int value);
  // Mask of simulated inputs, tested against the channel number itself.
  void Set_Sim_Mask(uint32_t mask) { m_SimMask = mask; }
  // A simulated input turns over every 2^(11 - rate) reads, counted over all channels; rate up to 11.
  void Set_Sim_Rate(int rate) { m_SimRate = rate; }

 private:
  Shared<uint32_t> m_SimMask = 0U;
  Shared<int> m_SimRate = 1;
  Shared<int> m_NoCard = 1;  // 1: no card in use
  int m_ChannelCount = 0;
  CMyArray<CPerformanceTimeValue> m_ChannelTimes;  // one for each channel asked for, as the next
  CMyArray<double> m_ChannelValues;
  int m_CanId = 1;

  static Shared<int> theIoMapped;           // 1 once Map_Io has run, until the object goes
  static Shared<uint32_t> thePulseCounter;  // reads of simulated inputs; a count lost between threads does no harm
};

}  // namespace orsanta
