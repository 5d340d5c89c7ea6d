// Start and stop of the system, and what the tasks report. The loop stands in motor_loop.cpp.
#include "host/motor_base.h"

#include <cstdio>
#include <cstdlib>

#include "drive/motor.h"
#include "station/debug_com.h"
#include "station/voice_motor.h"
#include "support/base/process.h"
#include "support/dialog/message_box.h"
#include "support/system/priority.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

constexpr int Stop_Timeout_Ms = 300000;  // of the lanes and of the loop thread
constexpr int Io_Card_Can_Id = 15;
constexpr int First_Position_Ms = 1000;  // for the first position of a device on the card's id
constexpr double Pause_From_Um =
    100.0;  // a result beyond it, either way, leaves the host's line at rest for 1 ms first

// A drive sends positions all the time, the IO card never.
bool Is_A_Drive(C_Kestrune_Motor_test& device) {
  double position = 0.0;
  for (int waited_ms = 0; waited_ms <= First_Position_Ms; waited_ms += 10) {
    if (device.Get_Cur_Pos(position) == 1) return true;
    Sleep(10);
  }
  return false;
}

}  // namespace

C_VoiceMotorBase::C_VoiceMotorBase(CMyArray<VCM_Resource_struct> resources, int PortNum, int Baud, int advanceduser,
                                   int IoInit) {
  Ensure_Single_Process();
  if (PortNum > 0) Open_Host_Serial(PortNum, Baud);
  AdvancedUser = advanceduser;
  SetPriorityClass(Process_Class_High);
  SetThreadPriority(Priority_Above_Normal);
  ResourceList = resources;
  StationCount = ResourceList.GetSize();
  Init(StationCount + 1, 0, Stop_Timeout_Ms);
  for (int i = 0; i < StationCount; ++i) Add_Station(i, IoInit);
  SetUseCWndThread(1);
  BeginThread(nullptr, Priority_Time_Critical, 2, Stop_Timeout_Ms, nullptr);
}

C_VoiceMotorBase::~C_VoiceMotorBase() {
  for (int channel = 0; channel < C_Io_Card::Channel_Count; ++channel) IoCard.Set_Io(channel, 0);
  LoopPaused = 0;
  EndThread(1, 1);
  while (BeAtLeaseOneDelayTaskInProcess() != 0) Sleep(10);
  ReleaseSubClass_CBaseBindThread();
  ReleaseSubClass_CQueueTask_MutiTask_Thread();
  for (C_VoiceMotor* station : StationList) delete station;
}

void C_VoiceMotorBase::Ensure_Single_Process() {
  CMyArray<int> ids;
  CProcessAndThreadSnapShot::GetProcessIDFromProcessName(L"Orsanta.exe", ids, 0);
  if (ids.GetSize() <= 1) return;
  Message_Box(L"Orsanta.exe 已经在运行");
  std::fflush(nullptr);
  std::_Exit(0);  // at once: the other process owns the machine
}

void C_VoiceMotorBase::Open_Host_Serial(int PortNum, int Baud) {
  if (HostSerial.OpenCom(PortNum) == 0) {
    Message_Box(Format_Text("无法打开串口%d", PortNum));
    return;
  }
  if (HostSerial.SetPropW(Baud, 8, 1, 0) == 0) {
    HostSerial.CloseCom();
    Message_Box(Format_Text("无法打开串口%d：波特率%d无法设定", PortNum, Baud));
    return;
  }
  HostSerialOpen = 1;
}

void C_VoiceMotorBase::Add_Station(int index, int IoInit) {
  const VCM_Resource_struct& record = ResourceList[index];
  const CMyStringW title = Format_Text("微米仪%d参数", record.CanID);
  auto* station = new C_VoiceMotor(record.CanID, record.AxisNum, record.AuxAxisNum, record.ControllerNum,
                                   record.SpareNum, record.ConnectServer, -1, -1, -1);
  ParamTitles.Add(title.Text());
  StateTitles.Add(title.Text());
  StationList.Add(station);
  station->Owns_Store = Earlier_Station_On_Id(index) < 0 ? 1 : 0;
  m_IdConflicts.Add(Id_Conflict(index, IoInit).Text());
  if (!Check_Drive_Is_Own(index)) {
    station->Motor_Ready = 0;
  } else if (station->Get_Motor_Ready() == 1) {
    station->m_pMotor->SetScale(station->Val_SensorScale);
    station->Set_Cur_BaseDistance(static_cast<float>(station->Val_BaseDistance.Get()));
    IoCard.Set_Io_Mode(IoInit);
    IoCard.Map_Io(StationCount, Io_Card_Can_Id);
    IoCard.Set_Sim_Mask(0);
    AddNewDelayProcess(index, Task_Force_Back, 0, station);
    C_VoiceMotorBase::OnForceBackOk(index + 1);
  } else {
    Message_Box(Format_Text("CanID：%d的设备没有连接", record.CanID));
  }
}

int C_VoiceMotorBase::Earlier_Station_On_Id(int index) const {
  for (int i = 0; i < index; ++i) {
    if (StationList[i]->CanID == StationList[index]->CanID) return i;
  }
  return -1;
}

bool C_VoiceMotorBase::Is_On_Card(int index, int IoInit) const {
  C_VoiceMotor& station = *StationList[index];
  if (station.CanID != Io_Card_Can_Id || station.Get_Motor_Ready() != 1) return false;
  // Without a card in use the id is free for a drive, but the card may still stand on the bus.
  return IoInit != 0 || !Is_A_Drive(*station.m_pMotor);
}

// Whose the CAN id of the station is, for the operator; empty for its own.
CMyStringW C_VoiceMotorBase::Id_Conflict(int index, int IoInit) const {
  const int can_id = StationList[index]->CanID;
  const int other = Earlier_Station_On_Id(index);
  if (other >= 0) {
    return Format_Text("电机%d的CANID %d与电机%d相同，电机%d停用，请改为不同的CANID后重新启动", index + 1, can_id,
                       other + 1, index + 1);
  }
  if (!Is_On_Card(index, IoInit)) return L"";
  return Format_Text("电机%d的CANID %d是IO卡的地址，电机%d停用，请改为不同的CANID后重新启动", index + 1, can_id,
                     index + 1);
}

bool C_VoiceMotorBase::Check_Drive_Is_Own(int64_t index) const {
  if (m_IdConflicts[index].empty()) return true;
  Message_Box(m_IdConflicts[index].c_str());
  return false;
}

int C_VoiceMotorBase::do_test(int station, int task_code) {
  if (station > StationCount) return 0;
  C_VoiceMotor* object = StationList[int64_t{station} - 1];
  return AddNewDelayProcess(station - 1, task_code, 0, object);
}

int C_VoiceMotorBase::get_ans(int station, double* thickness, double* force) {
  if (station > StationCount) return 0;
  C_VoiceMotor& object = *StationList[int64_t{station} - 1];
  const int ready = object.Ans_Ready;
  if (ready == 1) object.Ans_Ready = 0;
  *thickness = object.Test_Ans;
  *force = object.Val_Force_Set[0];
  return ready;
}

void C_VoiceMotorBase::OnTaskBegin(int id) {
  const C_Lock_Guard hold(IoLock);
  IoCard.Set_Io(id, 0);
}

void C_VoiceMotorBase::OnTestResult(C_VoiceMotor* station) {
  const C_Lock_Guard hold(IoLock);
  const double value_um = station->Test_Ans * 1000.0;
  if (const auto link = station->Debug_Com()) link->Send_Value(value_um);
  if (HostSerialOpen != 1) return;
  if (value_um > Pause_From_Um || value_um < -Pause_From_Um) Sleep(1);
  Send_Host_Line(Format_Text("%x%d%06.0f %04.0f\n", station->CanID, station->Ans_Valid.Get(), value_um,
                             station->Val_Force_Set[0].Get()));
}

void C_VoiceMotorBase::OnForceBackOk(int id) {
  const C_Lock_Guard hold(IoLock);
  IoCard.Set_Io(id, 1);
}

void C_VoiceMotorBase::Send_Host_Line(const CMyStringW& line) {
  const std::string bytes = To_Utf8(line.Text());
  int written = 0;
  HostSerial.WriteComData(bytes.data(), static_cast<int>(bytes.size()), written);
  if (written < static_cast<int>(bytes.size())) Sleep(1);  // the rest of the line is dropped
}

}  // namespace orsanta
