// The loop of the supervisor: IO inputs and serial bytes become tasks, one station for each pass. Which level
// may start which task is told in station/handshake.h.
#include <cstring>

#include "drive/motor.h"
#include "host/motor_base.h"
#include "station/debug_com.h"
#include "station/voice_motor.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

constexpr int Measure_Level = 0;
constexpr int Go_Back_Level = 1;
constexpr int No_Level = -1;
constexpr int Serial_Buffer_Bytes = 256;

Shared<int> theStationCursor = 0;  // of the process: a new supervisor goes on where the last one stopped

}  // namespace

void C_VoiceMotorBase::OnThreadLoop(void* /*param*/) {
  Sleep(1);
  while (LoopPaused != 0 || StationList.GetSize() == 0) {
    if (Is_Ending()) return;
    Sleep(1);
  }
  SomeThinkNeedLoop();
}

void C_VoiceMotorBase::SomeThinkNeedLoop() {
  int cursor = theStationCursor + 1;
  if (cursor >= StationList.GetSize()) cursor = 0;
  theStationCursor = cursor;
  if (m_IdConflicts[cursor].empty()) Serve_Station(cursor);
  Serve_Host_Serial();
}

void C_VoiceMotorBase::Serve_Station(int cursor) {
  C_VoiceMotor& station = *StationList[cursor];
  uint64_t fault = 0;
  station.m_pMotor->Get_Error_Code(fault);
  // Required: the output is the one of the station's place in the list, without IoLock, while the task callbacks use
  // the CAN id; machines are wired for it. The two are one output only where the ids start at 1.
  if (fault != 0) IoCard.Set_Io(cursor + 1, 0);

  Start_Task_For_Level(cursor, Trigger_Level(station));
}

int C_VoiceMotorBase::Trigger_Level(C_VoiceMotor& station) {
  const auto link = station.Debug_Com();
  if (link == nullptr) return No_Level;  // the panel replaces it: an IO input that was not in charge starts nothing
  if (link->Is_Open() != 0) return link->Read_Trigger() == 1 ? Measure_Level : Go_Back_Level;
  const int level = IoCard.Get_Io(station.CanID);
  if (level == 0) Sleep(1);
  return level;
}

void C_VoiceMotorBase::Start_Task_For_Level(int lane, int level) {
  if (GetDelayProcessFifoCount(lane) != 0) return;
  C_VoiceMotor& station = *StationList[lane];
  if (level == Go_Back_Level && station.Take_Test_Finish() == 1) {
    while (AddNewDelayProcess(lane, Task_Force_Back, 1, &station) != 1) Sleep(1);
  } else if (level == Measure_Level && station.Take_Force_Back_Finish() == 1) {
    station.Test_Force[0] = station.Val_Force_Set[0] + station.Val_Force_OffSet;
    while (AddNewDelayProcess(lane, Task_Measure, 1, &station) == 0) Sleep(1);
  }
}

void C_VoiceMotorBase::Serve_Host_Serial() {
  if (HostSerialOpen != 1) return;
  char bytes[Serial_Buffer_Bytes];
  int got = 0;
  HostSerial.GetComData(bytes, Serial_Buffer_Bytes, got);
  // A "C" asks for the status lines. All else is dropped, a "T" too, which has no effect on this port.
  if (got > 0 && std::memchr(bytes, 'C', static_cast<size_t>(got)) != nullptr) Send_Status_Lines();
}

void C_VoiceMotorBase::Send_Status_Lines() {
  const C_Lock_Guard hold(IoLock);
  for (C_VoiceMotor* station : StationList) {
    double current = 0.0;
    const bool alive = station->Get_Motor_Ready() == 1 && station->m_pMotor->Get_Current(current) == 1;
    Send_Host_Line(Format_Text("ID:%x State:%x\n", station->CanID, alive ? 1 : 0));
  }
}

}  // namespace orsanta
