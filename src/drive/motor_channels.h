// The channels of a drive, as k in can_id * 20 + k. Output and input channels are two separate number spaces.
#pragma once

namespace orsanta::motor_channels {

constexpr int Channels_Per_Drive = 20;
constexpr int Last_Can_Id = 63;  // of a bus; the first is 1

// Output channels 4 to 7 are mapped and never written.
constexpr int Out_Position = 0;       // position command, raw
constexpr int Out_Home = 1;           // 0.0 starts the drive's own homing and stroke measurement
constexpr int Out_Current_Upper = 2;  // amperes
constexpr int Out_Speed = 3;          // mm/s, without the position scale
constexpr int Out_Acceleration = 8;   // mm/s^2, without the position scale
constexpr int Out_Current_Lower = 9;  // amperes

constexpr int In_Ready = 0;         // 1 ready, 0 while the drive homes
constexpr int In_Fault = 1;         // fault bits, 0 for none
constexpr int In_Stroke_Lower = 2;  // raw
constexpr int In_Stroke_Upper = 3;  // raw
constexpr int In_Version = 4;       // bytes 0-1 software version, bytes 2-5 its date
constexpr int In_Position = 5;      // raw, read by the window thread alone
constexpr int In_Run = 6;           // 1 while the drive executes a command, 0 idle
constexpr int In_Stream_7 = 7;      // streamed drive values, not interpreted
constexpr int In_Stream_8 = 8;
constexpr int In_Current = 9;  // measured coil current, amperes
constexpr int In_Stream_10 = 10;
constexpr int In_Load = 11;

}  // namespace orsanta::motor_channels
