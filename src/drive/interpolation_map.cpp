// Mapping of an interpolation device: which ports go to which channels, and the axis with its sensors.
#include "drive/bus_search.h"
#include "drive/interpolation_motor.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/system/trace.h"
#include "support/time/clock.h"

namespace orsanta {

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
  SetBackJmpInsSize(m_ThreadNum, 100);
  Map_Ports(can_id);
  return Map_Axis(can_id);
}

void C_Interpolation_Voice_Motor::Map_Ports(int can_id) {
  const int c = Port_Channel(can_id, 0);
  const int fast = 500 + can_id * Fast_Windows;
  const int slow = 400 + can_id * Slow_Windows;
  const C_Input_Row inputs[] = {
      {201, 6, c + 201, Depth_Status},  // the two fault words
      {199, 6, c + 199, Depth_Status},
      {202, 4, c + 202, Depth_Status},  // error counters of the two encoders
      {203, 4, c + 203, Depth_Status},
      {200, 6, c + 200, Depth_Status},  // version
      {30, 8, fast + 0, Depth_Stream, &m_FastWindow[0]},
      {31, 8, fast + 1, Depth_Stream, &m_FastWindow[1]},
      {32, 8, fast + 2, Depth_Stream, &m_FastWindow[2]},
      {33, 8, fast + 3, Depth_Stream, &m_FastWindow[3]},
      {40, 8, slow + 0, Depth_Stream, &m_SlowWindow[0]},
      {41, 8, slow + 1, Depth_Stream, &m_SlowWindow[1]},
      {42, 8, slow + 2, Depth_Stream, &m_SlowWindow[2]},
      {43, 8, slow + 3, Depth_Stream, &m_SlowWindow[3]},
      {44, 8, slow + 4, Depth_Stream, &m_SlowWindow[4]},
      {1, 6, c + 5, Depth_Stream, &m_PosWindow},
      {16, 8, c + 16, Depth_Stream, &m_Window16},
      {17, 8, c + 17, Depth_Stream, &m_Window17},
      {19, 8, c + 19, Depth_Stream, &m_Window19},
      {25, 8, c + 25, Depth_Stream, &m_Window25},
      {26, 8, c + 26, Depth_Stream, &m_Window26},
      {20, 8, c + 20, Depth_Stream, &m_Window20},
      {18, 8, c + 18, Depth_Stream},  // read as an array
      {15, 8, c + 15, Depth_Status},  // load
      {29, 8, c + 29, Depth_Status},  // use
      {50, 8, c + 50, Depth_Status},  // error value
      {27, 4, c + 27, Depth_Status},  // temperature inputs
      {28, 4, c + 28, Depth_Status},
      {21, 8, c + 21, Depth_Stream},  // read as arrays
      {22, 8, c + 22, Depth_Stream},
      {23, 8, c + 23, Depth_Stream},
      {24, 8, c + 24, Depth_Stream},
  };
  const C_Output_Row first_outputs[] = {{4, 8, c + 4}, {12, 8, c + 12}, {16, 4, c + 16}};
  const C_Output_Row other_outputs[] = {{8, 5, c + 8}, {17, 5, c + 17}, {15, 4, c + 15}, {18, 8, c + 18}};
  Map_Inputs(can_id, inputs);
  for (C_FIFO2Window& window : m_FastWindow) window.Set_Window_Len(10240);
  Map_Outputs(can_id, first_outputs);
  WaitForAllInsFinish(m_ThreadNum);
  Map_Outputs(can_id, other_outputs);
}

// Ties the axis and the sensors, and waits until the server has taken it all.
int C_Interpolation_Voice_Motor::Map_Axis(int can_id) {
  SET_AXIS_MAP(m_ThreadNum, can_id, 0, m_Axis);
  SET_AXIS_SCALE(m_ThreadNum, m_Axis, Axis_Scale());
  Set_Max_Vel(1000.0);
  Set_Max_Acc(10000.0);
  Set_Max_Jerk(1000000.0);
  constexpr int Kind_Own_Input = 1;
  constexpr int Kind_Card_Input = 4;
  constexpr int Home_Sensor_Bit = 2;
  constexpr int Second_Sensor_Bit = 6;
  if (m_IoCanId == can_id) {
    SET_IOIN_MAP(m_ThreadNum, can_id, Kind_Own_Input, Home_Sensor_Bit, 0, m_SensorIo);
  } else {
    SET_IOIN_MAP(m_ThreadNum, m_IoCanId, Kind_Card_Input, m_IoBit, 0, m_SensorIo);
  }
  SET_IOIN_MAP(m_ThreadNum, can_id, Kind_Own_Input, Second_Sensor_Bit, 0, m_SensorIo2);

  constexpr int Polls = 1000;  // of 1 ms
  int bufferlen = 0;
  int allfinish = 0;
  GetThreadInsBufferRemainCount(m_ThreadNum, &bufferlen, &allfinish);
  for (int count = 0; allfinish == 0;) {
    GetThreadInsBufferRemainCount(m_ThreadNum, &bufferlen, &allfinish);
    Sleep(1);
    ++count;
    if (count > Polls) {
      Message_Box(L"map轴超时");
      return 0;
    }
  }
  return 1;
}

}  // namespace orsanta
