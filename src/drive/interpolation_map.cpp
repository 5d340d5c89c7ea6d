// Connection and mapping of an interpolation device.
//
// c stands for can_id * 256. In the order in which they are mapped:
//
//     port       channel              samples      reader
//     201, 199   c + port             256          the two fault words
//     202, 203   c + port             256          error counters of the two encoders
//     200        c + port             256          version
//     30 to 33   500 + can_id * 4 + i 4096         windows, 10240 samples long
//     40 to 44   400 + can_id * 5 + i 4096         windows
//     1          c + 5                4096         window of the position
//     16, 17, 19, 25, 26, 20  c + port  4096       windows
//     18         c + port             4096         arrays
//     15, 29, 50 c + port             256          load, use, error value
//     27, 28     c + port             256          temperature inputs
//     21 to 24   c + port             4096         arrays
#include "drive/bus_search.h"
#include "drive/interpolation_motor.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/system/trace.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int Depth_Status = 256;
constexpr int Depth_Stream = 4096;
constexpr int Fast_Window_Len = 10240;
constexpr int First_Fast_Port = 30;
constexpr int First_Slow_Port = 40;
constexpr int Position_Port = 1;
constexpr int Position_Channel = 5;  // not its port's number
constexpr int Back_Jump_Size = 100;

constexpr double Start_Velocity = 1000.0;
constexpr double Start_Acceleration = 10000.0;
constexpr double Start_Jerk = 1000000.0;
constexpr int Axis_Map_Polls = 1000;  // of 1 ms

constexpr int Kind_Own_Input = 1;
constexpr int Kind_Card_Input = 4;
constexpr int Home_Sensor_Bit = 2;
constexpr int Second_Sensor_Bit = 6;

}  // namespace

int C_Interpolation_Voice_Motor::Map_Once() {
  const C_Lock_Guard hold(theServer.theDriveLock);  // the constructor holds it already; a later call takes it here
  for (const int id : theMappedIds) {
    if (id == m_CanId) return 1;
  }
  const int result = MapMotorID(m_CanId);
  if (result != 0) theMappedIds.Add(m_CanId);
  return result;
}

int C_Interpolation_Voice_Motor::MapMotorID(int can_id) {
  for (;;) {
    const CMyStringW id_list = Search_Bus();
    int beExist = 0;
    Sleep(50);
    const int asked = CheckDeviceExist(can_id, &beExist);
    Sleep(100);
    if (asked == 0) return 0;
    if (beExist != 0) break;
    Message_Box(Missing_Drive_Report(can_id, id_list));
    const CMyStringW question = Format_Text("无法找到ID：%d的驱动器,是否重试", can_id);
    if (Message_Box(question, Box_Yes_No | Box_Stop_Icon) != Answer_Yes) return 0;
  }
  MY_TRACE0(Format_Text("MapMotorID canid = %d", can_id));
  SetBackJmpInsSize(m_ThreadNum, Back_Jump_Size);
  Map_Inputs(can_id);
  Map_Outputs(can_id);
  return Map_Axis(can_id);
}

void C_Interpolation_Voice_Motor::Map_Input(int can_id, int port, int format, int depth) {
  const int channel = Port_Channel(can_id, port);
  SET_INPUT_DATA_MAP(m_ThreadNum, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(m_ThreadNum, channel, depth);
}

void C_Interpolation_Voice_Motor::Map_Inputs(int can_id) {
  for (const int port : {201, 199}) Map_Input(can_id, port, 6, Depth_Status);
  for (const int port : {202, 203}) Map_Input(can_id, port, 4, Depth_Status);
  Map_Input(can_id, 200, 6, Depth_Status);
  for (int i = 0; i < Fast_Windows; ++i) {
    Map_Fifo_Channel(can_id, First_Fast_Port + i, 500 + can_id * Fast_Windows + i, &m_FastWindow[i], 8);
    m_FastWindow[i].Set_Window_Len(Fast_Window_Len);
  }
  for (int i = 0; i < Slow_Windows; ++i) {
    Map_Fifo_Channel(can_id, First_Slow_Port + i, 400 + can_id * Slow_Windows + i, &m_SlowWindow[i], 8);
  }
  Map_Fifo_Channel(can_id, Position_Port, Port_Channel(can_id, Position_Channel), &m_PosWindow, 6);
  Map_Fifo_Channel(can_id, 16, Port_Channel(can_id, 16), &m_Window16, 8);
  Map_Fifo_Channel(can_id, 17, Port_Channel(can_id, 17), &m_Window17, 8);
  Map_Fifo_Channel(can_id, 19, Port_Channel(can_id, 19), &m_Window19, 8);
  Map_Fifo_Channel(can_id, 25, Port_Channel(can_id, 25), &m_Window25, 8);
  Map_Fifo_Channel(can_id, 26, Port_Channel(can_id, 26), &m_Window26, 8);
  Map_Fifo_Channel(can_id, 20, Port_Channel(can_id, 20), &m_Window20, 8);
  Map_Input(can_id, 18, 8, Depth_Stream);
  for (const int port : {15, 29, 50}) Map_Input(can_id, port, 8, Depth_Status);
  for (const int port : {27, 28}) Map_Input(can_id, port, 4, Depth_Status);
  for (const int port : {21, 22, 23, 24}) Map_Input(can_id, port, 8, Depth_Stream);
}

int C_Interpolation_Voice_Motor::Map_Fifo_Channel(int can_id, int port, int channel, C_FIFO2Window* window,
                                                  int format) {
  SET_INPUT_DATA_MAP(m_ThreadNum, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(m_ThreadNum, channel, Depth_Stream);
  window->Set_Window_Len(C_FIFO2Window::Default_Window_Len);
  WaitForAllInsFinish(m_ThreadNum);  // the thread may not read before the map has reached the server
  window->Start_Read(channel);
  m_WindowList.Add(window);
  return 1;
}

void C_Interpolation_Voice_Motor::Map_Outputs(int can_id) {
  const auto map_output = [&](int port, int format) {
    SET_OUTPUT_DATA_MAP(m_ThreadNum, can_id, port, format, Port_Channel(can_id, port));
  };
  map_output(4, 8);
  map_output(12, 8);
  map_output(16, 4);
  WaitForAllInsFinish(m_ThreadNum);
  map_output(8, 5);
  map_output(17, 5);
  map_output(15, 4);
  map_output(18, 8);
}

// Ties the axis and the sensors, and waits until the server has taken it all.
int C_Interpolation_Voice_Motor::Map_Axis(int can_id) {
  SET_AXIS_MAP(m_ThreadNum, can_id, 0, m_Axis);
  SET_AXIS_SCALE(m_ThreadNum, m_Axis, Axis_Scale());
  Set_Max_Vel(Start_Velocity);
  Set_Max_Acc(Start_Acceleration);
  Set_Max_Jerk(Start_Jerk);
  if (m_IoCanId == can_id) {
    SET_IOIN_MAP(m_ThreadNum, can_id, Kind_Own_Input, Home_Sensor_Bit, 0, m_SensorIo);
  } else {
    SET_IOIN_MAP(m_ThreadNum, m_IoCanId, Kind_Card_Input, m_IoBit, 0, m_SensorIo);
  }
  SET_IOIN_MAP(m_ThreadNum, can_id, Kind_Own_Input, Second_Sensor_Bit, 0, m_SensorIo2);

  int bufferlen = 0;
  int allfinish = 0;
  GetThreadInsBufferRemainCount(m_ThreadNum, &bufferlen, &allfinish);
  for (int count = 0; allfinish == 0;) {
    GetThreadInsBufferRemainCount(m_ThreadNum, &bufferlen, &allfinish);
    Sleep(1);
    ++count;
    if (count > Axis_Map_Polls) {
      Message_Box(L"map轴超时");
      return 0;
    }
  }
  return 1;
}

}  // namespace orsanta
