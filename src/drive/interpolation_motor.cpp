#include "drive/interpolation_motor.h"

#include <algorithm>
#include <cmath>

#include "drive/channel_read.h"
#include "drive/sent_value.h"
#include "drive/thermistor.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr double Open_Clamp_Current = 50.0;  // amperes, beyond what the coil ever draws
// Output ports of the two clamps.
constexpr int Port_Current_A = 4;
constexpr int Port_Current_B = 12;

}  // namespace

// The server itself goes on when the last object goes: other clients may stand on it.
C_Server_Connection C_Interpolation_Voice_Motor::theServer(
    {.refused_words = L"连接服务端失败，请重启服务端，或重启电脑",
     .refused_box = Box_Yes_No,
     .sleep_first = true,
     .library_dialogs_off = true,
     .last_object_goes = ReBuildSystem});
C_Mapped_Ids C_Interpolation_Voice_Motor::theMappedIds;

C_Interpolation_Voice_Motor::C_Interpolation_Voice_Motor(int can_id, int axis, int sensor_io, int thread_num,
                                                         int connect_server, int io_can_id, int sensor_io2, int io_bit)
    : C_Mapped_Device(thread_num),
      m_CanId(can_id),
      m_Axis(axis),
      m_IoCanId(io_can_id == -1 ? can_id : io_can_id),
      m_IoBit(io_bit == -1 ? 0 : io_bit),  // without a bit the sensor is the device's own, which has a fixed one
      m_SensorIo(sensor_io),
      m_HomeIo(sensor_io),
      m_SensorIo2(sensor_io2 == -1 ? sensor_io + 1 : sensor_io2) {
  const C_Lock_Guard hold(theServer.theDriveLock);
  const int connected = theServer.Join(connect_server);
  MY_DEBUG_ASSERT(connected == 1);
  static_cast<void>(connected);  // whatever came of it: the operator has had the question
  m_BeMapped = Map_Once();
}

C_Interpolation_Voice_Motor::~C_Interpolation_Voice_Motor() {
  const C_Lock_Guard hold(theServer.theDriveLock);
  m_ThreadNum = -1;
  End_Windows();
  if (theServer.Leave() == 0) theMappedIds.Clear();
}

// --- Instruction stream ---

int C_Interpolation_Voice_Motor::Send_Go(double mm) {
  const int sent = Sgo(mm);
  Till_Stop(0);
  return sent;
}

int C_Interpolation_Voice_Motor::Go_Wait(double mm) {
  const int sent = Send_Go(mm);
  Till_Stop(1);
  return sent;
}

int C_Interpolation_Voice_Motor::Send_To_Axis(int instruction(int, int, double), const char* what, double value) {
  if (!May_Send(m_CanId, what, value)) return 0;
  instruction(m_ThreadNum, m_Axis, value);
  return 1;
}

int C_Interpolation_Voice_Motor::Sgo(double mm) {
  return Send_To_Axis(SGO, "目标位置", mm);
}

void C_Interpolation_Voice_Motor::Till_Stop(int wait) {
  TILLSTOP(m_ThreadNum, m_Axis);
  if (wait == 1) WaitForAllInsFinish(m_ThreadNum);
}

int C_Interpolation_Voice_Motor::Go_Relative(double d) {
  if (!May_Send(m_CanId, "目标位置", d)) return 0;
  constexpr int Target_Register = 500;
  USE_LOCAL_REG(m_ThreadNum);
  GET_OUTPUT_POS(m_ThreadNum, m_Axis, Target_Register);
  ADD_R_C(m_ThreadNum, Target_Register, Target_Register, d);
  SGO_R(m_ThreadNum, m_Axis, Target_Register);
  return 1;
}

int C_Interpolation_Voice_Motor::Rapid_Go(double mm) {
  if (Send_To_Axis(RAPID_GO, "目标位置", mm) != 1) return 0;
  TILLTIME(m_ThreadNum, 1);
  return 1;
}

int C_Interpolation_Voice_Motor::Set_Max_Vel(double velocity) {
  return Send_To_Axis(SET_MAX_VEL, "速度", velocity);
}
int C_Interpolation_Voice_Motor::Set_Max_Acc(double acceleration) {
  return Send_To_Axis(SET_MAX_ACC, "加速度", acceleration);
}
int C_Interpolation_Voice_Motor::Set_Max_Jerk(double jerk) {
  return Send_To_Axis(SET_MAX_JERK, "加加速度", jerk);
}

int C_Interpolation_Voice_Motor::Till_Time(double ms) {
  if (!May_Send(m_CanId, "等待时间", ms)) return 0;
  return TILLTIME(m_ThreadNum, static_cast<int>(ms));
}

void C_Interpolation_Voice_Motor::Emergency_Stop(int other_thread) {
  constexpr int Emergency_Thread = 0;
  TILL_AXIS_PAUSE(Emergency_Thread, m_Axis);
  CLEAR_THREAD_INS(Emergency_Thread, other_thread);
  TILL_THREAD_INS_FINISH(Emergency_Thread, other_thread);
  STOP_S(Emergency_Thread, m_Axis);
  AXIS_RESUME(Emergency_Thread, m_Axis);
  WaitForAllInsFinish(Emergency_Thread);
}

int C_Interpolation_Voice_Motor::GetInsBuffLen() {
  int len = 0;
  int ins_finish = 0;
  MY_ASSERT(GetThreadInsBufferRemainCount(m_ThreadNum, &len, &ins_finish) == 1);
  return len;
}

int C_Interpolation_Voice_Motor::CheckStop() {
  int len = 0;
  int ins_finish = 0;
  MY_ASSERT(GetThreadInsBufferRemainCount(m_ThreadNum, &len, &ins_finish) == 1);
  if (ins_finish != 1) return 0;
  int be_map = 0;
  int run = 0;
  BeAxisRun(m_Axis, &be_map, &run);
  MY_ASSERT(be_map == 1);
  return run == 0 ? 1 : 0;
}

int C_Interpolation_Voice_Motor::Check_Map_Stop() {
  WaitForAllInsFinish(m_ThreadNum);
  int be_map = 0;
  int run = 0;
  BeAxisRun(m_Axis, &be_map, &run);
  return run == 0 ? 1 : 0;
}

// --- Output ports ---

int C_Interpolation_Voice_Motor::Output_Port(int port, const char* what, double value) {
  if (!May_Send(m_CanId, what, value)) return 0;
  OUTPUT_DATA(m_ThreadNum, Port_Channel(m_CanId, port), value);
  return 1;
}

int C_Interpolation_Voice_Motor::Is_Direction_Turned() const {
  const int turned = m_Dir == 1 ? 1 : 0;
  return m_DirInvert == 1 ? 1 - turned : turned;
}

int C_Interpolation_Voice_Motor::Set_Current_Pos(double current) {
  if (Is_Direction_Turned() == 1) return Output_Port(Port_Current_B, "电流", -current);
  return Output_Port(Port_Current_A, "电流", current);
}

int C_Interpolation_Voice_Motor::Set_Current_Neg(double current) {
  const int sent = Is_Direction_Turned() == 1 ? Output_Port(Port_Current_A, "电流", -current)
                                              : Output_Port(Port_Current_B, "电流", current);
  WaitForAllInsFinish(m_ThreadNum);
  return sent;
}

void C_Interpolation_Voice_Motor::Reset_Current_Limit() {
  Output_Port(Port_Current_A, "电流", Open_Clamp_Current);
  Output_Port(Port_Current_B, "电流", -Open_Clamp_Current);
}

void C_Interpolation_Voice_Motor::Set_Port15(int value) {
  Output_Port(15, "端口15的值", std::clamp(value, 250, 2000));
}

int C_Interpolation_Voice_Motor::SetScale(double counts_per_mm) {
  MY_ASSERT(counts_per_mm != 0.0);
  if (!May_Send(m_CanId, "传感器比例系数", counts_per_mm)) return 0;
  const double magnitude = std::abs(counts_per_mm);
  {
    const C_Lock_Guard hold(m_Lock);
    m_Dir = static_cast<int>(counts_per_mm / magnitude);
    m_Scale = magnitude * Raw_Per_Count;
  }
  SET_AXIS_SCALE(m_ThreadNum, m_Axis, Axis_Scale());
  return 1;
}

// --- Status ---

int C_Interpolation_Voice_Motor::Get_Cur_Pos(double& pos) {
  const C_Lock_Guard hold(m_Lock);
  double raw = 0.0;
  if (m_PosWindow.Newest(raw) != 1) return 0;
  const int64_t counts = static_cast<int64_t>(raw) >> Count_Fraction_Bits;
  pos = static_cast<double>(counts) / m_Scale * Raw_Per_Count - m_ZeroOffset;
  return 1;
}

int C_Interpolation_Voice_Motor::Get_Pos_Window(CMyArray<double>& positions) {
  const C_Lock_Guard hold(m_Lock);
  const int result = m_PosWindow.Get_Window(positions);
  const double scale = m_Scale;
  const double zero_offset = m_ZeroOffset;
  for (double& position : positions) position = position / scale - zero_offset;
  m_PosWindow.Get_Read_Index(m_TimeIndex);
  return result;
}

int C_Interpolation_Voice_Motor::Get_Output_Pos(double& pos) {
  int count = m_CanId + 1;
  CMyArray<double> positions;
  positions.SetArraySize(count);
  GetCurOutputPos(positions.GetData(), &count);
  if (count >= 1) pos = positions[count - 1];
  return count;
}

int C_Interpolation_Voice_Motor::Get_Code(int port, uint64_t& code) {
  code = m_LastCode;
  double value = 0.0;
  if (Read_Port(port, value) != 1) return 0;
  code = static_cast<uint64_t>(static_cast<int64_t>(value));
  m_LastCode = code;
  return 1;
}

int C_Interpolation_Voice_Motor::Get_encoder_Error_counter(int which, int& counter) {
  MY_ASSERT(which == 0 || which == 1);
  double value = 0.0;
  if (Read_Port(202 + which, value) != 1) return 0;
  counter = static_cast<int>(value);
  return 1;
}

int C_Interpolation_Voice_Motor::Get_Version(uint16_t& ver, uint32_t& bcd_date) {
  double value = 0.0;
  if (Read_Port(200, value) != 1) return 0;
  Split_Version(value, ver, bcd_date);
  return 1;
}

int C_Interpolation_Voice_Motor::Get_Temperature(double& t, int which) {
  double value = 0.0;
  if (Read_Port(which == 0 ? 27 : 28, value) != 1) return 0;
  t = which == 0 ? static_cast<double>(NTC_Adc_To_Temp(static_cast<int>(value))) : value;
  return 1;
}

int C_Interpolation_Voice_Motor::Read_Io(int io) {
  int value = 0;
  GetCurIoInput(io, &value);
  return value;
}

int C_Interpolation_Voice_Motor::Get_Error(int* ith, int* ins_point, wchar_t* str, int* str_len, int* ERROR_Num) {
  return GetError(ith, ins_point, str, str_len, ERROR_Num);
}

// --- Windows ---

int C_Interpolation_Voice_Motor::Get_Fast_Window(int i, CMyArray<double>& samples) {
  MY_ASSERT(i >= 0 && i < Fast_Windows);
  return m_FastWindow[i].Get_Window(samples);
}

int C_Interpolation_Voice_Motor::Get_Slow_Window(int i, CMyArray<double>& samples) {
  MY_ASSERT(i >= 0 && i < Slow_Windows);
  return m_SlowWindow[i].Get_Window(samples);
}

int C_Interpolation_Voice_Motor::Get_Window16(CMyArray<double>& samples) {
  const C_Lock_Guard hold(m_Lock);
  const int result = m_Window16.Get_Window(samples);
  m_Window16.Get_Read_Index(m_TimeIndex);
  return result;
}

CMyArray<uint64_t> C_Interpolation_Voice_Motor::Get_Time_Index() {
  const C_Lock_Guard hold(m_Lock);
  return m_TimeIndex;
}

int C_Interpolation_Voice_Motor::Get_Fifo(int port, CMyArray<double>& samples) {
  MY_ASSERT(port == 18 || (port >= 21 && port <= 24));
  return Read_Channel_Array(Port_Channel(m_CanId, port), samples);
}

// --- Channel reads ---

int C_Interpolation_Voice_Motor::Read_Once(int channel, double& value) {
  return Read_Newest_Sample<Depth_Stream>(channel, value);
}

int C_Interpolation_Voice_Motor::Read_Latest(int channel, double& value) {
  constexpr int Tries = 200;
  return Read_Fresh_Sample<Depth_Stream>(channel, Tries, value);
}

// Unlike the other drive class this one takes the first read that works, even an empty one.
int C_Interpolation_Voice_Motor::Read_Channel_Array(int channel, CMyArray<double>& samples) {
  return Read_All_Samples(channel, true, samples);
}

}  // namespace orsanta
