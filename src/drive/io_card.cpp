#include "drive/io_card.h"

#include "drive/tremalink.h"

namespace orsanta {

namespace {

constexpr int Server_Thread = 0;  // instruction thread of the card
constexpr int Kind_Card_Output = 3;
constexpr int Kind_Card_Input = 4;
constexpr int No_Card = 3;
constexpr int Slowest_Pulse_Bit = 11;  // of the pulse counter, at rate 0

}  // namespace

Shared<int> C_Io_Card::theIoMapped = 0;
Shared<uint32_t> C_Io_Card::thePulseCounter = 0U;

C_Io_Card::~C_Io_Card() {
  theIoMapped = 0;
}

void C_Io_Card::Set_Io_Mode(int IoInit) {
  m_ChannelCount = 0;
  m_CanId = 1;
  m_SimMask = 0U;
  m_SimRate = 1;
  m_NoCard = IoInit == 0 ? 1 : 0;
}

void C_Io_Card::Map_Io(int count, int can_id) {
  // Required: the card is asked for and mapped whatever the answer; a machine without a card is no fault.
  int beExist = 0;
  CheckDeviceExist(can_id, &beExist);
  if (m_NoCard == 0 && theIoMapped == 0) {
    m_CanId = can_id;
    m_ChannelCount = count;
    for (int i = 0; i < Channel_Count; ++i) {  // always the whole card, whatever the count
      SET_IOOUT_MAP(Server_Thread, m_CanId, Kind_Card_Output, i, i);
      SET_IOIN_MAP(Server_Thread, m_CanId, Kind_Card_Input, i, 0, i);
    }
    WaitForAllInsFinish(Server_Thread);
  }
  theIoMapped = 1;  // also without a card
  m_ChannelTimes.SetArraySize(m_ChannelCount);
  m_ChannelValues.SetArraySize(m_ChannelCount);
}

int C_Io_Card::Get_Io(int channel) {
  if ((m_SimMask & static_cast<uint32_t>(channel)) != 0) {
    const uint32_t count = thePulseCounter + 1;
    thePulseCounter = count;
    const auto bit = static_cast<uint32_t>(Slowest_Pulse_Bit - m_SimRate) % 32;
    return static_cast<int>((count >> bit) & 1U);
  }
  if (m_NoCard != 0) return No_Card;
  int temp = 0;
  return GetCurIoInput(channel, &temp) == 1 ? temp : Read_Failed;
}

void C_Io_Card::Set_Io(int channel, int value) {
  if (m_NoCard == 0) SetCurIoOutput(channel, static_cast<uint8_t>(value));
}

}  // namespace orsanta
