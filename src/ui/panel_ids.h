// The commands of the panel: the second half of a control's id.
#pragma once

namespace orsanta::panel_id {

constexpr int Station_Span = 50;  // ids of one station; the commands for all stand where the next station would

enum {
  Set_Force = 0,
  Set_Speed = 1,
  Set_Up_Speed = 2,
  Set_Acceleration = 3,
  Reference_Plane = 4,
  Block_Size = 5,
  Measure_Slowly = 6,
  Measure = 7,
  Return_Probe = 8,
  Two_Forces = 9,
  Advanced = 10,
  Status = 11,

  Chart_Thickness = 12,  // advanced dialog, up to Spring_K
  Chart_Time = 13,
  Chart_Temperature = 14,
  Clear_Data = 15,
  Calibrate_Force = 16,
  Force_Offset = 17,
  Error_Threshold = 18,
  Settling_Time = 19,
  Serial_Link = 20,
  Direction = 21,
  Origin_Offset = 22,
  Test_Distance = 23,
  Error_Offset = 24,
  Sensor_Scale = 25,
  Linearity = 26,
  Export = 27,
  Temp_Sensor = 28,
  Spring_K = 29,

  Point_Count = 30,  // for all stations
  Automatic_Stations = 31,
  Automatic_Speed = 32,
};

}  // namespace orsanta::panel_id
