// Mapping of a drive: which ports of the device go to which channels.
#include "drive/bus_search.h"
#include "drive/motor.h"
#include "drive/motor_channels.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"

namespace orsanta {

namespace {

using namespace motor_channels;

struct C_Input_Map {
  int port;
  int format;
  int k;
  int depth;
};

struct C_Output_Map {
  int port;
  int format;
  int k;
};

constexpr int Position_Port = 4;
constexpr int Position_Format = 4;

// In the order in which they are mapped; the position window comes between the two groups.
constexpr C_Input_Map Status_Inputs[] = {
    {8, 6, In_Ready, Depth_Status},         {201, 6, In_Fault, Depth_Status},   {11, 6, In_Stroke_Lower, Depth_Status},
    {10, 6, In_Stroke_Upper, Depth_Status}, {200, 6, In_Version, Depth_Status}, {5, 1, In_Run, Depth_Status},
};
constexpr C_Input_Map Stream_Inputs[] = {
    {16, 8, In_Current, Depth_Stream},   {17, 8, In_Stream_7, Depth_Stream}, {18, 8, In_Stream_8, Depth_Stream},
    {20, 8, In_Stream_10, Depth_Stream}, {15, 8, In_Load, Depth_Status},
};
constexpr C_Output_Map Outputs[] = {
    {0, 6, Out_Position},
    {1, 6, Out_Home},
    {4, 8, Out_Current_Upper},
    {12, 8, Out_Current_Lower},
    {6, 8, Out_Speed},
    {11, 8, Out_Acceleration},
    {7, 8, 4},
    {8, 8, 5},
    {9, 0, 6},
    {10, 0, 7},
};

bool Holds(const CMyArray<int>& ids, int can_id) {
  for (const int id : ids) {
    if (id == can_id) return true;
  }
  return false;
}

}  // namespace

int C_Kestrune_Motor_test::Map_Once() {
  CMyStringW report;
  {
    // Held across the search: of several objects on one id exactly one maps, and the others find it done. Not across
    // the box: the reports of several drives stand open side by side.
    const C_Lock_Guard hold(theMapLock);
    if (Holds(theMappedIds, m_CanId)) return 1;
    if (Search_And_Map(m_CanId, report) != 0) {
      theMappedIds.Add(m_CanId);
      return 1;
    }
  }
  if (!report.Is_Empty()) Message_Box(report);
  return 0;
}

int C_Kestrune_Motor_test::MapMotorID(int can_id) {
  CMyStringW report;
  if (Search_And_Map(can_id, report) != 0) return 1;
  if (!report.Is_Empty()) Message_Box(report);
  return 0;
}

int C_Kestrune_Motor_test::Search_And_Map(int can_id, CMyStringW& report) {
  const CMyStringW id_list = Search_Bus();
  int beExist = 0;
  const int asked = CheckDeviceExist(can_id, &beExist);
  MY_DEBUG_ASSERT(asked != 0);  // a fault of the program: nobody maps before the connection stands
  if (asked == 0) return 0;
  if (beExist == 0) {
    report = Missing_Drive_Report(can_id, id_list);
    return 0;
  }

  const int first_channel = can_id * Channels_Per_Drive;
  const auto map_input = [&](const C_Input_Map& map) {
    SET_INPUT_DATA_MAP(m_ThreadNum, can_id, map.port, map.format, first_channel + map.k);
    RESET_INPUT_DATA_FIFO(m_ThreadNum, first_channel + map.k, map.depth);
  };
  for (const C_Input_Map& map : Status_Inputs) map_input(map);
  Map_Fifo_Channel(can_id, Position_Port, first_channel + In_Position, &m_PosWindow, Position_Format);
  for (const C_Input_Map& map : Stream_Inputs) map_input(map);
  for (const C_Output_Map& map : Outputs) {
    SET_OUTPUT_DATA_MAP(m_ThreadNum, can_id, map.port, map.format, first_channel + map.k);
  }
  WaitForAllInsFinish(m_ThreadNum);
  return 1;
}

int C_Kestrune_Motor_test::Map_Fifo_Channel(int can_id, int port, int channel, C_FIFO2Window* window, int format) {
  SET_INPUT_DATA_MAP(m_ThreadNum, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(m_ThreadNum, channel, Depth_Stream);
  window->Set_Window_Len(C_FIFO2Window::Default_Window_Len);
  WaitForAllInsFinish(m_ThreadNum);  // the thread may not read before the map has reached the server
  window->Start_Read(channel);
  m_WindowList.Add(window);
  return 1;
}

}  // namespace orsanta
