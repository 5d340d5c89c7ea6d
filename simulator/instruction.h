// One entry of an instruction thread, and the errors that running one can give.
#pragma once

#include <array>
#include <cstdint>
#include <string>

namespace simulator {

enum class Op : uint8_t {
  Set_Input_Data_Map,     // can id, port, format, channel
  Set_Output_Data_Map,    // can id, port, format, channel
  Reset_Input_Data_Fifo,  // channel, depth
  Set_Axis_Map,           // can id, reserved, axis
  Set_Ioin_Map,           // can id, kind, bit, reserved, io
  Set_Ioout_Map,          // can id, kind, bit, io
  Set_Back_Jump_Size,     // size
  Output_Data,            // channel; value
  // Waits, from here to Till_Thread_Finish.
  Till_Stop,           // axis
  Till_Time,           // ms
  Till_Io,             // io
  Till_Io_Neg,         // io
  Till_Axis_Pause,     // axis
  Till_Thread_Finish,  // other thread
  Clear_Thread,        // other thread
  Axis_Resume,         // axis
  Sgo,                 // axis; position
  Sgo_Register,        // axis, register
  Rapid_Go,            // axis; position
  Stop_Smooth,         // axis
  Set_Max_Vel,         // axis; value
  Set_Max_Acc,         // axis; value
  Set_Max_Jerk,        // axis; value
  Set_Axis_Scale,      // axis; scale
  Set_Axis_Zeros,      // axis; value
  Set_Output_Io,       // io, on
  Use_Local_Reg,
  Get_Output_Pos,  // axis, register
  Add_Register,    // destination, source; constant
};

struct C_Instruction {
  Op op;
  std::array<int, 5> i{};  // whole arguments, in the order listed above
  double value = 0.0;
};

// Numbers and texts of what GetError reports.
enum class Fault : int {
  Thread_Number = 1,
  Queue_Full,
  No_Device,
  No_Port,
  No_Channel,
  Bad_Value,
  No_Io,
  No_Axis,
  Axis_Busy,
  No_Register,
  Waits_For_Itself,
};

const wchar_t* Fault_Words(Fault fault);

struct C_Instruction_Error {
  int thread = 0;
  int point = 0;  // position in the thread's stream, from 0
  Fault fault = Fault::Thread_Number;
  std::wstring text;
};

}  // namespace simulator
