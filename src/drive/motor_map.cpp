// Mapping of a drive: which ports of the device go to which channels.
#include "drive/bus_search.h"
#include "drive/motor.h"
#include "drive/motor_channels.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"

namespace orsanta {

using namespace motor_channels;

int C_Kestrune_Motor_test::Map_Once() {
  CMyStringW report;
  const int mapped = theMappedIds.Map_Once(m_CanId, [&] { return Search_And_Map(m_CanId, report); });
  // Nobody waits for this box but the caller: the reports of several drives stand open side by side.
  if (!report.Is_Empty()) Message_Box(report);
  return mapped;
}

int C_Kestrune_Motor_test::MapMotorID(int can_id) {
  CMyStringW report;
  const int mapped = Search_And_Map(can_id, report);
  if (!report.Is_Empty()) Message_Box(report);
  return mapped;
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

  const int c = can_id * Channels_Per_Drive;
  const C_Input_Row inputs[] = {
      {8, 6, c + In_Ready, Depth_Status},
      {201, 6, c + In_Fault, Depth_Status},
      {11, 6, c + In_Stroke_Lower, Depth_Status},
      {10, 6, c + In_Stroke_Upper, Depth_Status},
      {200, 6, c + In_Version, Depth_Status},
      {5, 1, c + In_Run, Depth_Status},
      {4, 4, c + In_Position, Depth_Stream, &m_PosWindow},
      {16, 8, c + In_Current, Depth_Stream},
      {17, 8, c + In_Stream_7, Depth_Stream},
      {18, 8, c + In_Stream_8, Depth_Stream},
      {20, 8, c + In_Stream_10, Depth_Stream},
      {15, 8, c + In_Load, Depth_Status},
  };
  const C_Output_Row outputs[] = {
      {0, 6, c + Out_Position},
      {1, 6, c + Out_Home},
      {4, 8, c + Out_Current_Upper},
      {12, 8, c + Out_Current_Lower},
      {6, 8, c + Out_Speed},
      {11, 8, c + Out_Acceleration},
      {7, 8, c + 4},
      {8, 8, c + 5},
      {9, 0, c + 6},
      {10, 0, c + 7},
  };
  Map_Inputs(can_id, inputs);
  Map_Outputs(can_id, outputs);
  WaitForAllInsFinish(m_ThreadNum);
  return 1;
}

}  // namespace orsanta
