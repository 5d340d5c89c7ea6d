#include "drive/motor.h"

#include <cmath>

#include "drive/channel_read.h"
#include "drive/motor_channels.h"
#include "drive/sent_value.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

using namespace motor_channels;

constexpr double Sleep_Above_Current = 11.0;  // amperes
constexpr double Open_Clamp_Current = 40.0;   // amperes, beyond what the coil ever draws

constexpr int Run_Flag_Unreadable = 2;

}  // namespace

C_Server_Connection C_Kestrune_Motor_test::theServer({.refused_words = L"连接服务端失败",
                                                      .refused_box = Box_Plain,
                                                      .sleep_first = false,
                                                      .library_dialogs_off = false,
                                                      .last_object_goes = ReleaseDevice});
C_Mapped_Ids C_Kestrune_Motor_test::theMappedIds;

C_Kestrune_Motor_test::C_Kestrune_Motor_test(int can_id, int thread_num, int connect_server)
    : C_Mapped_Device(thread_num), m_CanId(can_id) {
  const C_Lock_Guard hold(theServer.theDriveLock);
  if (theServer.Join(connect_server) != 1) {
    MY_ASSERT_REPORT("the motion server refused the connection; restart the motion server, then the program");
  }
  Set_Run_Dir(0);  // the direction stays as it is, see there
}

C_Kestrune_Motor_test::~C_Kestrune_Motor_test() {
  const C_Lock_Guard hold(theServer.theDriveLock);
  End_Windows();
  if (theServer.Leave() == 0) theMappedIds.Clear();
}

// --- Scaling ---

int C_Kestrune_Motor_test::Set_Pos_Offset(double offset) {
  m_Offset = offset;
  return 1;
}

int C_Kestrune_Motor_test::Set_Run_Dir(int dir) {
  if (dir == 1) {
    m_Sign = 1.0;
    return 1;
  }
  // Required: only a sign that was never set can be turned; once it is 1.0, -1.0 is out of reach. Stored positions of
  // running stations count on it.
  if (m_Sign != 0.0) return 0;
  m_Sign = -1.0;
  return 1;
}

int C_Kestrune_Motor_test::SetScale(double counts_per_mm) {
  m_Scale = counts_per_mm * Raw_Per_Count;
  return 1;
}

// --- Status ---

int C_Kestrune_Motor_test::Check_Ready() {
  double value = 0.0;
  if (Read_Latest(Channel(In_Ready), value) != 1) {
    Message_Box(L"Check_Ready无法获取数据通道");
    return 0;
  }
  return static_cast<int>(value);
}

int C_Kestrune_Motor_test::Get_Version(uint16_t& ver, uint32_t& bcd_date) {
  double value = 0.0;
  if (Read_Once(In_Version, value) != 1) return 0;
  Split_Version(value, ver, bcd_date);
  return 1;
}

int C_Kestrune_Motor_test::Get_Error_Code(uint64_t& code) {
  double value = 0.0;
  if (Read_Once(In_Fault, value) != 1) return 0;
  code = static_cast<uint64_t>(static_cast<int64_t>(value));
  return 1;
}

int C_Kestrune_Motor_test::Get_Cur_Pos(double& pos) {
  double raw = 0.0;
  if (m_PosWindow.Newest(raw) != 1) return 0;
  pos = raw / m_Scale;
  return 1;
}

int C_Kestrune_Motor_test::Get_Pos_Window(CMyArray<double>& positions) {
  const int result = m_PosWindow.Get_Window(positions);
  const double scale = m_Scale;
  for (double& position : positions) position /= scale;
  return result;
}

int C_Kestrune_Motor_test::Reset_Data_Fifo() {
  for (const int k : {In_Current, In_Stream_7, In_Stream_10, In_Stream_8}) {
    RESET_INPUT_DATA_FIFO(m_ThreadNum, Channel(k), Depth_Stream);
  }
  return 1;
}

int C_Kestrune_Motor_test::Get_InterRunFlag() {
  double value = 0.0;
  if (Read_Latest(Channel(In_Run), value) != 1) {
    Message_Box(Format_Text("CANID:%d  Get_InterRunFlag无法读取数据通道", m_CanId));
    return Run_Flag_Unreadable;
  }
  m_HasAnswered = 1;
  return static_cast<int>(value);
}

// --- Commands ---

int C_Kestrune_Motor_test::Go_Pos(double mm) {
  while (Get_InterRunFlag() == 1) Sleep(10);
  if (Send_Pos(mm) != 1) return Position_Refused;
  const int result = TillStop();
  WaitForAllInsFinish(m_ThreadNum);
  return result;
}

int C_Kestrune_Motor_test::Send_Pos(double mm) {
  WaitForAllInsFinish(m_ThreadNum);
  return Output(Out_Position, "目标位置", mm * m_Sign * m_Scale + m_Offset);
}

int C_Kestrune_Motor_test::Output(int k, const char* what, double value) {
  if (!May_Send(m_CanId, what, value)) return 0;
  OUTPUT_DATA(m_ThreadNum, Channel(k), value);
  return 1;
}

int C_Kestrune_Motor_test::Output_And_Wait(int k, const char* what, double value) {
  if (Output(k, what, value) != 1) return 0;
  WaitForAllInsFinish(m_ThreadNum);
  return 1;
}

int C_Kestrune_Motor_test::Set_Current_Pos(double current) {
  if (std::abs(current) > Sleep_Above_Current) Sleep(1);  // a breath before a strong push; it changes nothing else
  if (m_Be_Invert == 1) return Output_And_Wait(Out_Current_Lower, "电流", -current);
  return Output_And_Wait(Out_Current_Upper, "电流", current);
}

void C_Kestrune_Motor_test::Reset_Current_Limit() {
  Output(Out_Current_Upper, "电流", Open_Clamp_Current);
  Output_And_Wait(Out_Current_Lower, "电流", -Open_Clamp_Current);
}

int C_Kestrune_Motor_test::Set_Speed(double speed) {
  return Output_And_Wait(Out_Speed, "速度", speed);
}
int C_Kestrune_Motor_test::Set_Acc(double acceleration) {
  return Output_And_Wait(Out_Acceleration, "加速度", acceleration);
}
void C_Kestrune_Motor_test::Set_Jerk(double) {}

int C_Kestrune_Motor_test::Till_Time(double ms) {
  if (!May_Send(m_CanId, "等待时间", ms)) return 0;
  return TILLTIME(m_ThreadNum, static_cast<int>(ms));
}

int C_Kestrune_Motor_test::TillStop() {
  int polls = 0;
  for (;;) {
    const int flag = Get_InterRunFlag();
    if (flag == Run_Flag_Unreadable) {
      Message_Box(L"TillStop无法获取数据");
      return 0;
    }
    ++polls;
    Sleep(1);
    // A drive that does not arrive is told again at each further poll, and the wait goes on: nobody may command a drive
    // that still moves.
    if (polls > Poll_Budget) Message_Box(L"到位超时");
    if (flag == 0) return 1;
  }
}

int C_Kestrune_Motor_test::Go_Zero() {
  constexpr int Register_Count = 256;
  constexpr int Zero_Instruction = 0x55;
  // One buffer for one register, used for all of them: the write pass therefore gives every register the last one's
  // value. The drive's zero routine wants it this way.
  char temp_data[Register_Count] = {};
  int res = 0;
  for (int reg = 0; reg < Register_Count; ++reg) {
    ReadDeviceReg(m_CanId, reg, temp_data, 1, &res);
    if (res != 1) return 0;
  }
  for (int reg = 0; reg < Register_Count; ++reg) {
    WriteDeviceReg(m_CanId, reg, temp_data, 1, &res);
    if (res != 1) return 0;
  }
  ExecuteDeviceIns(m_CanId, Zero_Instruction, &res);
  return res;
}

// --- Channel reads ---

int C_Kestrune_Motor_test::Read_Once(int k, double& value) {
  return Read_Newest_Sample<Depth_Status>(Channel(k), value);
}

int C_Kestrune_Motor_test::Read_Latest(int channel, double& value) {
  constexpr int Tries = 40;
  return Read_Fresh_Sample<Depth_Status>(channel, Tries, value);
}

int C_Kestrune_Motor_test::Read_Channel_Array(int channel, CMyArray<double>& samples) {
  return Read_All_Samples(channel, false, samples);
}

}  // namespace orsanta
