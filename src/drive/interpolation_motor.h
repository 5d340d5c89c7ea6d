// C_Interpolation_Voice_Motor: a drive on an axis of the motion server's interpolator.
//
// Where C_Kestrune_Motor_test lets the drive run the motion, here the server works out the trajectory and the class
// commands it through the instruction stream. Any drive of the family can be run this way; a station uses the class to
// read its temperature board.
//
// Channels are can_id * 256 + port; the position and the two window groups have numbers of their own
// (interpolation_map.cpp has the table). Axis positions are user units, millimetres here. Position samples are raw,
// m_Scale for each millimetre, and every position handed out has m_ZeroOffset subtracted.
//
// Threads: any thread may call. Instructions of one object go to one instruction thread of the server, in the order of
// the calls. m_Lock keeps the scale and the zero offset together with a position read. Homing runs on the calling
// thread, blocks it for seconds, and takes m_Lock only to move the zero offset. Construction and destruction are
// guarded by theServer.theDriveLock.
//
// Unless told otherwise an operation returns 1 for success and 0 for failure. A value that is no number is never sent:
// the operation tells the operator and returns 0. Broken preconditions (a scale of 0, an unmapped axis) are assertion
// reports.
#pragma once

#include <cstdint>

#include "drive/channel_map.h"
#include "drive/fifo_window.h"
#include "drive/raw_position.h"
#include "drive/server_connection.h"
#include "support/base/array.h"
#include "support/time/critical_section.h"
#include "support/time/shared.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Interpolation_Voice_Motor : public C_Mapped_Device, private C_Uncopied {
 public:
  // can_id: CAN id of the device. axis: its axis in the server. sensor_io: IO number of the home sensor. thread_num:
  // instruction thread. connect_server: 1 lets this object open the connection when none is open.
  // io_can_id: CAN id of the device that holds the home sensor, -1 for this one. sensor_io2: IO number of the second
  // sensor, -1 for the one after the first. io_bit: bit of the home sensor on its device.
  // Connects where asked to, with a question to the operator after each 101 failed tries, and maps the device, with a
  // question when it does not answer. Be_Mapped tells how that went.
  C_Interpolation_Voice_Motor(int can_id, int axis, int sensor_io, int thread_num, int connect_server, int io_can_id,
                              int sensor_io2, int io_bit);
  // Ends the sixteen window threads. The last object of the process rebuilds the server's side of the connection.
  ~C_Interpolation_Voice_Motor();

  // --- Mapping (interpolation_map.cpp) ---

  int Map_Once() {
    return theMappedIds.Map_Once(m_CanId, [this] { return MapMotorID(m_CanId); });
  }
  // Searches the bus and maps the device. A device that does not answer is reported, and the operator is asked whether
  // to search again, without a limit.
  int MapMotorID(int can_id);
  // 1 when the constructor mapped the device.
  int Be_Mapped() const { return m_BeMapped; }

  // --- Instruction stream; these queue and do not wait, unless told otherwise ---

  // Smooth move, then a hold of the thread until the axis has stopped.
  int Send_Go(double mm);
  // The same, and waits for the end.
  int Go_Wait(double mm);
  // Smooth move alone.
  int Sgo(double mm);
  // Holds the thread until the axis has stopped; wait 1 waits for it.
  void Till_Stop(int wait);
  // Smooth move by d. The server works out the target when the instruction runs.
  int Go_Relative(double d);
  // Direct, unplanned move.
  int Rapid_Go(double mm);
  // Limits of later moves: mm/s, mm/s^2, mm/s^3.
  int Set_Max_Vel(double velocity);
  int Set_Max_Acc(double acceleration);
  int Set_Max_Jerk(double jerk);
  // Holds the thread for ms milliseconds, cut off to an integer. Returns what the library returns.
  int Till_Time(double ms);
  // Stops the axis and drops what other_thread still has queued, from instruction thread 0, and waits for that.
  void Emergency_Stop(int other_thread);
  // Places left in the instruction buffer.
  int GetInsBuffLen();
  // 1 when all instructions have run and the axis stands, else 0.
  int CheckStop();
  // Waits until all instructions have run; 1 when the axis stands.
  int Check_Map_Stop();
  // Redirects all later instructions to another thread of the server.
  void Set_Thread_Num(int thread_num) { m_ThreadNum = thread_num; }

  // --- Output ports ---

  // The two coil current clamps in amperes. The direction swaps them and turns their signs. Set_Current_Neg waits.
  int Set_Current_Pos(double current);
  int Set_Current_Neg(double current);
  // Opens both clamps, to +50 and -50 amperes.
  void Reset_Current_Limit();
  // 1 puts the device under power.
  void Set_Enable(int enable) { Output_Port(17, "使能", enable); }
  void Set_Port8(int value) { Output_Port(8, "端口8的值", value); }
  void Set_Port16(int value) { Output_Port(16, "端口16的值", value); }
  // Clamped to 250 at least and 2000 at most.
  void Set_Port15(int value);
  int Set_Port18(double value) { return Output_Port(18, "端口18的值", value); }
  // The device has no outputs of its own: does nothing and returns 0.
  int Set_Output_Io(int /*io*/, int /*value*/) { return 0; }

  // counts_per_mm: encoder counts for each millimetre, not 0. Required: a positive value turns the axis round; the
  // scales that hosts have stored are of that sign.
  int SetScale(double counts_per_mm);

  // --- Status ---

  // pos: the newest position in mm, whole encoder counts. Untouched, with result 0, while the window is empty.
  int Get_Cur_Pos(double& pos);
  // positions: the whole window in mm, oldest first; its indices become the time index.
  int Get_Pos_Window(CMyArray<double>& positions);
  // pos: the commanded position at the end of the server's list. Returns the length of that list.
  int Get_Output_Pos(double& pos);
  // code: the newest fault word of either fault port; both share the word that is handed out while none waits.
  int Get_Error_Code(uint64_t& code) { return Get_Code(201, code); }
  int Get_Error_Code2(uint64_t& code) { return Get_Code(199, code); }
  // counter: encoder errors of encoder 0 or 1.
  int Get_encoder_Error_counter(int which, int& counter);
  int Get_Version(uint16_t& ver, uint32_t& bcd_date);
  int Get_Load(double& value) { return Read_Port(15, value); }
  int Get_Used(double& value) { return Read_Port(29, value); }
  int Get_Error_Value(double& value) { return Read_Port(50, value); }
  // which 0: t := degrees Celsius of the thermistor input; 1: t := the second input's value as it comes. One read
  // without a retry; t is untouched on failure.
  int Get_Temperature(double& t, int which);
  // State of the first, second sensor input.
  int Get_Sensor() { return Read_Io(m_SensorIo); }
  int Get_Sensor2() { return Read_Io(m_SensorIo2); }
  // The server's oldest instruction error; see GetError of the motion contract.
  int Get_Error(int* ith, int* ins_point, wchar_t* str, int* str_len, int* ERROR_Num);

  // The sample windows by port: 30 + i (i from 0 to 3), 40 + i (i from 0 to 4), and single ones. 1 when not empty.
  int Get_Fast_Window(int i, CMyArray<double>& samples);
  int Get_Slow_Window(int i, CMyArray<double>& samples);
  int Get_Window16(CMyArray<double>& samples);  // its indices become the time index
  // value: the newest sample of port 16. Untouched while the window is empty.
  int Get_Window16_Newest(double& value) { return m_Window16.Newest(value); }
  int Get_Window17(CMyArray<double>& samples) { return m_Window17.Get_Window(samples); }
  int Get_Window19(CMyArray<double>& samples) { return m_Window19.Get_Window(samples); }
  int Get_Window20(CMyArray<double>& samples) { return m_Window20.Get_Window(samples); }
  int Get_Window25(CMyArray<double>& samples) { return m_Window25.Get_Window(samples); }
  int Get_Window26(CMyArray<double>& samples) { return m_Window26.Get_Window(samples); }
  // The sample indices of the last position or port 16 window read.
  CMyArray<uint64_t> Get_Time_Index();
  // The samples that wait on a port without a window: 18, or 21 to 24.
  int Get_Fifo(int port, CMyArray<double>& samples);

  // --- Homing (interpolation_homing.cpp) ---

  // Maps, measures the stroke and runs the axis back and forth. can_id goes into the report texts only. max, min in mm.
  int Home_And_Check(int can_id, double& max, double& min);
  // Finds the mechanical stops by pushing into them at a low current. max, min in mm. Returns 1.
  int Measure_Stroke(double& max, double& min);
  // Homes on the sensor edge in three passes at falling speed and goes to offset mm from it. dir 1: the sensor lies in
  // the negative direction. Returns 1, or -1 when the search ran out of time, which a box tells at every further look.
  int Go_Home(int dir, double offset);
  // Drives to pos1, pos2 and back to the start under a current clamp in amperes, then homes on the second sensor.
  int Go_Home_Approach(int dir, double offset, double current, double pos1, double pos2);
  // Gives the place where the axis stands the position x in the server, and takes the zero offset from there.
  int Zero_Correct(double x);
  // Repeats the last homing with its arguments; 0 if there was none.
  int Home_Again();
  // mm/s of the first pass, above 0; mm of the search.
  void Set_Home_Speed(double speed);
  void Set_Home_Stroke(double stroke) { m_HomeStroke = stroke; }

  // --- Channel reads ---

  // One read without a retry: the newest of up to 4096 samples.
  int Read_Once(int channel, double& value);
  // value: a sample that is fresh, not an old one out of a full FIFO. 0 when none comes in 201 reads 1 ms apart.
  int Read_Latest(int channel, double& value);
  // samples: all that wait, 65536 at most. Up to three reads, until one works.
  int Read_Channel_Array(int channel, CMyArray<double>& samples);

 private:
  static constexpr int Fast_Windows = 4;
  static constexpr int Slow_Windows = 5;

  static int Port_Channel(int can_id, int port) { return can_id * 256 + port; }
  // Writes a value to an output port. what: the operator's word for the value.
  int Output_Port(int port, const char* what, double value);
  // The same for an instruction of the axis.
  int Send_To_Axis(int instruction(int, int, double), const char* what, double value);
  int Is_Direction_Turned() const;
  static int Read_Io(int io);
  // The newest sample of an input port.
  int Read_Port(int port, double& value) { return Read_Once(Port_Channel(m_CanId, port), value); }
  int Get_Code(int port, uint64_t& code);
  void Map_Ports(int can_id);
  int Map_Axis(int can_id);
  double Axis_Scale() const { return m_Dir == 1 ? -m_Scale : +m_Scale; }
  void Begin_Homing(double jerk);
  void Queue_Home_Passes(int dir);
  bool Is_Thread_Finished();
  int Watch_Home(int timeout_ms);

  CMyCriticalSection m_Lock;    // also holds the scale and the zero offset together with a position read
  Shared<int> m_Dir = 0;        // 1: the axis scale goes negative and the two current channels swap
  Shared<int> m_DirInvert = 0;  // 1: turns m_Dir round for the current channels; nothing sets it
  const int m_CanId;
  const int m_Axis;
  const int m_IoCanId;
  const int m_IoBit;
  C_FIFO2Window m_FastWindow[Fast_Windows];
  C_FIFO2Window m_PosWindow;
  C_FIFO2Window m_Window16;
  int m_BeMapped = 0;
  int m_HomeDir = 0;
  double m_HomeArg[4] = {};
  Shared<uint64_t> m_LastCode = uint64_t{0};
  int m_HomeMode = 0;  // 0 none, 1 simple, 2 with approach
  CMyArray<uint64_t> m_TimeIndex GUARDED_BY(m_Lock);
  C_FIFO2Window m_Window19;
  C_FIFO2Window m_Window17;
  C_FIFO2Window m_Window20;
  C_FIFO2Window m_Window25;
  C_FIFO2Window m_Window26;
  C_FIFO2Window m_SlowWindow[Slow_Windows];
  double m_HomeStroke = 15.0;
  double m_HomeSpeed = 20.0;
  const int m_SensorIo;
  int m_HomeIo;  // the IO number that the running homing watches
  const int m_SensorIo2;
  Shared<double> m_Scale = Start_Scale;
  Shared<double> m_ZeroOffset = 0.0;  // mm

  static C_Server_Connection theServer;  // of all objects of the process, as the next
  static C_Mapped_Ids theMappedIds;
};

}  // namespace orsanta
