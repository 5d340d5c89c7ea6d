// C_Kestrune_Motor_test: the one place where a station talks to its voice-coil drive. One object stands for one drive.
//
// Everything that goes to the drive is a double written to a numbered output channel; everything that comes back is a
// stream of doubles from a numbered input channel. Channel numbers are can_id * 20 + k, with the k of
// motor_channels.h. The drive is always position-commanded: a force is a clamp on the coil current, and a landing
// commands a position beyond the part, so that the probe comes to rest pressing with that current.
//
// Raw positions (raw_position.h) go outward as
//     raw = mm * m_Sign * m_Scale + m_Offset
// and come inward as
//     mm = raw / m_Scale
// Required: sign and offset are not applied on the way in; every reader relies on it.
//
// Threads: every operation may be called from any thread, and the object has no lock of its own; a station takes its
// own lock around a motion sequence. Waits block the calling thread, message boxes too. Construction and destruction
// are guarded by theServer.theDriveLock, Map_Once by theMappedIds.
//
// Unless told otherwise an operation returns 1 for success and 0 for failure; millimetres, mm/s, mm/s^2, amperes and
// milliseconds are the units. No operation but the constructor throws.
#pragma once

#include <cstdint>

#include "drive/channel_map.h"
#include "drive/fifo_window.h"
#include "drive/motor_channels.h"
#include "drive/raw_position.h"
#include "drive/server_connection.h"
#include "support/base/array.h"
#include "support/system/wide_string.h"
#include "support/time/shared.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Kestrune_Motor_test : public C_Mapped_Device, private C_Uncopied {
 public:
  // can_id: CAN id of the drive, 1 to 63. thread_num: instruction thread of the motion server for this drive's
  // instructions. connect_server: 1 lets this object open the connection when none is open.
  // Opening connects, rebuilds the server's side and connects again, each with up to 101 tries 100 ms apart. A pass
  // that fails shows a box; when the second one fails, an assertion report ends the process. Nothing is mapped yet:
  // Map_Once.
  C_Kestrune_Motor_test(int can_id, int thread_num, int connect_server);
  // Ends the window threads. The last object of the process releases the server.
  ~C_Kestrune_Motor_test();

  // --- Mapping (motor_map.cpp) ---

  // Maps the drive's channels unless an object of the process has mapped this id: then it returns 1 at once, and the
  // window of this object never starts. Returns 1 when mapped, else 0.
  int Map_Once();
  // Searches the bus, ids 1 to 63, and maps the channels of the drive can_id. A drive that does not answer is reported
  // in one box with the list of the ids that do, and the result is 0.
  int MapMotorID(int can_id);

  // --- Scaling ---

  // Offset of outgoing positions, raw. Returns 1.
  int Set_Pos_Offset(double offset);
  // dir 1 sets the sign to 1.0. Any other value sets -1.0 only while the sign is 0.0, which it never is: it changes
  // nothing and returns 0.
  int Set_Run_Dir(int dir);
  // counts_per_mm: encoder counts for each millimetre. Returns 1.
  int SetScale(double counts_per_mm);

  // --- Status ---

  // The drive's ready flag: 1 ready, 0 while it homes. When the channel is silent it shows a box and returns 0.
  int Check_Ready();
  // ver: software version; bcd_date: its date as the drive sends it. 0 when no sample waits.
  int Get_Version(uint16_t& ver, uint32_t& bcd_date);
  // code: the fault bits, 0 for none. When no sample waits it returns 0 and leaves code as it is.
  int Get_Error_Code(uint64_t& code);
  // pos: the newest position in mm. Untouched, with result 0, while the window is empty.
  int Get_Cur_Pos(double& pos);
  // value: the drive's load figure. Untouched on failure.
  int Get_Load(double& value) { return Read_Latest(Channel(motor_channels::In_Load), value); }
  // positions: the whole window in mm, oldest first. Returns 1 if it is not empty.
  int Get_Pos_Window(CMyArray<double>& positions);
  // Drops all samples of the window. Returns 1.
  int Clear_Pos_Window(C_FIFO2Window& window) { return window.Clear_Window(); }
  // The samples that wait on the channels of the measured coil current and of three streamed drive values.
  int Get_Current_Fifo(CMyArray<double>& samples) { return Read_All(motor_channels::In_Current, samples); }
  int Get_Fifo7(CMyArray<double>& samples) { return Read_All(motor_channels::In_Stream_7, samples); }
  int Get_Fifo8(CMyArray<double>& samples) { return Read_All(motor_channels::In_Stream_8, samples); }
  int Get_Fifo10(CMyArray<double>& samples) { return Read_All(motor_channels::In_Stream_10, samples); }
  // Empties those four FIFOs and sets their depth to 4096. Returns 1.
  int Reset_Data_Fifo();
  // current: measured coil current in amperes, as old as the time since the last read allows; see Read_Latest.
  // Untouched on failure.
  int Get_Current(double& current) { return Read_Latest(Channel(motor_channels::In_Current), current); }
  // The run flag: 1 while the drive moves or takes up a current, 0 idle. When the channel is silent it shows a box and
  // returns 2.
  int Get_InterRunFlag();
  // 1 once the run flag was read. A drive that is not there, or not there any more, while its channels are mapped never
  // sends one, whatever comes on the bus later.
  int Has_Answered() const { return m_HasAnswered; }

  // --- Commands ---

  // A value that is no number is never sent: the operation tells the operator and returns 0, Go_Pos Position_Refused.
  static constexpr int Position_Refused = -1;

  // Waits until the drive is idle, without a limit, commands the position, and waits for its arrival. Returns what
  // TillStop returns.
  int Go_Pos(double mm);
  // Commands a position and does not wait for the arrival.
  int Send_Pos(double mm);
  // The coil current in amperes that clamps the force, upward and downward. Both wait until the server has sent it.
  int Set_Current_Pos(double current);
  int Set_Current_Neg(double current) { return Set_Current_Pos(-current); }
  // Opens both clamps, to +40 and -40 amperes.
  void Reset_Current_Limit();
  // Speed in mm/s, acceleration in mm/s^2, for later moves.
  int Set_Speed(double speed);
  int Set_Acc(double acceleration);
  // The drive has no jerk setting: does nothing.
  void Set_Jerk(double jerk);
  // Holds the instruction thread for ms milliseconds, not the caller. Returns what the library returns.
  int Till_Time(double ms);
  // Waits until the run flag reads 0. After 5000 polls of 1 ms each further poll shows the time-out box and the wait
  // goes on. 0 when the flag cannot be read.
  int TillStop();
  // The drive's zero routine: a pass over its 256 registers and device instruction 0x55.
  int Go_Zero();

  // --- Homing (motor_homing.cpp) ---

  // Runs the drive's own homing and stroke measurement. max, min: the ends of the stroke, raw. 0 when the drive takes
  // more than 5000 polls of 1 ms or sends no ends.
  int Measure_Stroke(double& max, double& min);
  // Maps, homes and runs the drive over its stroke in steps and back and forth. can_id goes into the report texts only.
  // max, min: the ends of the stroke in mm. The first failure is told in a box and ends it with 0.
  int Home_And_Check(int can_id, double& max, double& min);

  // --- Channel reads ---

  // value: the newest of up to 256 samples; of a FIFO of that depth a fresh one, not an old one out of a full FIFO. A
  // deeper FIFO that nobody read for a while, the one of the current, gives an old sample at first. 0 when none comes
  // in 41 reads 1 ms apart.
  int Read_Latest(int channel, double& value);
  // samples: all that wait, 65536 at most. 0 when none comes in three reads. Not for a cyclic path.
  int Read_Channel_Array(int channel, CMyArray<double>& samples);

  // 1: the two current operations swap their channels and the station negates positions. Nothing sets it.
  Shared<int64_t> m_Be_Invert = 0;
  const int m_CanId;
  C_FIFO2Window m_PosWindow;  // the actual position, raw

 private:
  static constexpr int Poll_Budget = 5000;  // polls of 1 ms: for a move, and for a homing from start to end

  // The number of input or output channel k. An id that no bus has uses the channels of id 0, which no device has.
  int Channel(int k) const {
    const bool is_on_bus = m_CanId >= 1 && m_CanId <= motor_channels::Last_Can_Id;
    return (is_on_bus ? m_CanId : 0) * motor_channels::Channels_Per_Drive + k;
  }
  int Read_All(int k, CMyArray<double>& samples) { return Read_Channel_Array(Channel(k), samples); }
  // Writes a value to output channel k: the one way out to the drive. what: the operator's word for the value.
  int Output(int k, const char* what, double value);
  // The same, and waits until the server has sent it.
  int Output_And_Wait(int k, const char* what, double value);
  // One read of input channel k without a retry: the newest of the samples that wait.
  int Read_Once(int k, double& value);
  // The search and the maps of MapMotorID, without its box. report: for the operator, where the drive does not answer.
  int Search_And_Map(int can_id, CMyStringW& report);
  // Polls the ready flag until it has the wanted value. polls: spent so far of the poll budget; 0 once it is used up.
  int Wait_For_Ready_Flag(int wanted, int& flag, int& polls);

  Shared<int> m_HasAnswered = 0;
  Shared<double> m_Sign = 1.0;
  Shared<double> m_Offset = 0.0;
  Shared<double> m_Scale = Start_Scale;

  static C_Server_Connection theServer;  // of all objects of the process, as the next
  static C_Mapped_Ids theMappedIds;
};

}  // namespace orsanta
