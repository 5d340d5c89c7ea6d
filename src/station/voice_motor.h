// C_VoiceMotor: one measurement station. A voice-coil motor with a linear encoder, its drive, its parameters, its force
// model, its result, and what its cycles measured.
//
// Units: lengths are millimetres, forces grams, currents amperes, speeds mm/s, times milliseconds, temperatures degrees
// Celsius, unless a member says otherwise.
//
// Threads. The motion sequences (Detection_thickness, Land_To, Force_Back, Correct_Base) hold m_TestLock from start to
// end and may be called from any thread: the station's task lane, the panel, the host. The lock is recursive and is
// released on every way out. Results are read and written by several threads without a lock. The histories may be
// read and cleared, and the serial link replaced, while a cycle runs. Dialogs and the calibration belong to one panel
// thread.
//
// Memory. SlowTestData keeps at most the newest 1,000,000 position samples (Max_History_Samples), the three histories
// with one value for each cycle at most the newest 200,000 cycles (Max_History_Cycles): some 25 megabytes a station,
// however long the system runs. Whoever needs more exports the histories in time (Export_History).
//
// Store. The parameters live in the store "音圈电机%d参数" (with CanID) in the working directory. The constructor loads
// them, Save and the destructor write them. A parameter that the store lacks keeps its default.
//
// The motion sequences stand in thickness_cycle.cpp and landing.cpp.
#pragma once

#include <memory>
#include <string>

#include "numeric/settling_detector.h"
#include "station/force_model.h"
#include "station/handshake.h"
#include "station/history.h"
#include "support/services/vector_file.h"
#include "support/store/store.h"
#include "support/time/critical_section.h"
#include "support/time/stopwatch.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Interpolation_Voice_Motor;
class C_Kestrune_Motor_test;
class C_VoiceDebugCom;

class C_VoiceMotor : public CAutoSaveClassData2, public C_Force_Model, public C_Handshake, private C_Uncopied {
 public:
  // Greatest lengths of the histories; the newest values are kept.
  static constexpr int Max_History_Samples = 1000000;
  static constexpr int Max_History_Cycles = 200000;

  // Results of Detection_thickness that are no thickness.
  static constexpr double No_Samples_Result = -99.0;  // no position within 100 ms, or a value that is no number
  static constexpr double No_Position_Result = 0.0;   // no position at all

  // Loads the parameters, connects and maps the drive, and reports its faults in message boxes. Blocks until the
  // station stands; a drive that does not answer leaves Motor_Ready at 0, and the station stays with its parameters.
  // The arguments are those of VCM_Resource_struct; spare_num and the last three are never read.
  C_VoiceMotor(int can_id, int axis_num, int aux_axis_num, int controller_num, int spare_num, int connect_server,
               int reserved1, int reserved2, int reserved3);
  // Saves the parameters, then ends the link and the drive. No sequence of the station may run.
  ~C_VoiceMotor() override;

  // --- Motion ---

  // Lands on the part and waits until the position holds still. The probe stays on the part, under force.
  // speed: mm/s. current: the coil current that stands for the force, A. Returns the thickness in mm, without
  // Val_Error_offset. Failures show in-band: No_Samples_Result, No_Position_Result, or after a time-out, with a message
  // box, Cur_BaseDistance + Val_Block_Size; Ans_Valid is 0 after a time-out. Where the current or anything else of the
  // cycle is no number, a box says what, the result is No_Samples_Result, and Ans_Valid is 0.
  double Detection_thickness(float speed, float current);
  // Drives the probe toward target (mm) with the current as its limit, and returns when the drive has finished.
  // Returns 1; or 0, with the probe where it was, if a value is no number or the target, with a message box, out of a
  // probe's reach of 1000 mm.
  int Land_To(float speed, float current, float target);
  // Sends the drive the current for the force at the position, the spring included.
  void Set_Landing_Current(double force, double position);
  // Lifts the probe to Val_BeginePoint_offset and opens the current limits. A probe that does not come free is retried
  // twice and then reported. Always 1.
  int Force_Back(float speed);
  // Measures the reference block and takes its surface as the zero of the thickness scale; lifts the probe with the
  // same speed. Returns Cur_BaseDistance, mm, which stays as it was if the measurement gave no number.
  double Correct_Base(float speed, float current);
  // Measures with the set force and the calibration speed and keeps the position in Val_Pos_Set[0] and Val_Pos_Set[2].
  // Returns the position, mm, without the sign that an inverted drive gives it.
  double Store_Position();
  // The force calibration (calibration.h). Returns 1 when it ended with parameters set, else 0.
  int Calibrate_Force();
  // Force-backs of all stations since the process began.
  static int Force_Back_Count();

  CMyCriticalSection m_TestLock;  // held across every motion sequence

  // --- Order and result ---

  // 0 to 9; returns 1, or 0 for any other mode, which is refused.
  int Set_TestMode(int mode);
  // Sets the reference surface, in single precision. One that is no number is told to the operator and not taken.
  void Set_Cur_BaseDistance(float position);

  Shared<int> m_TestMode;
  Shared<double> Test_Force[2];     // what the next measuring task uses
  Shared<double> Test_Ans;          // last reported thickness, as the host reads it
  Shared<int> Ans_Ready;            // 1 when Test_Ans is new
  Shared<int> Ans_Valid;            // 1 if the last cycle's observed position was not exactly 0.0
  double Ans_Max = -1000.0;         // nothing updates it
  double Ans_Min = 1000.0;          // nothing updates it
  Shared<double> Cur_BaseDistance;  // position of the reference surface
  Shared<double> m_Observed;        // settled position of the last cycle
  Shared<double> m_CurForce;        // worked back from the current at the end of a cycle; for display
  Shared<double> m_TestTime;        // duration of the last cycle
  Shared<double> m_MaxTestTime;     // longest m_TestTime since start-up

  // --- History ---

  // Writes the four histories to vector files, with the station and the local time in their names.
  void Export_History();

  C_History ThicknessArray{Max_History_Cycles};  // observed position of each cycle, mm
  C_History TempArray{Max_History_Cycles};       // temperature of each cycle, where there is a reader
  C_History TestTimeArray{Max_History_Cycles};   // duration of each cycle, ms
  C_History SlowTestData{Max_History_Samples};   // every position sample of every cycle, as often as it was delivered
  CMatLab_Matrix_Data m_MatData;                 // writes the vector files

  // --- Drive, serial link, store ---

  int Get_Motor_Ready() const { return Motor_Ready; }
  // Reads the drive's fault word and shows a message box for each fault. Returns 1 if the word could be read, else 0.
  // Any thread.
  int Report_Fault();
  // The station's serial link for as long as the caller holds it. Null while Renew_Debug_Com replaces it. Any thread.
  std::shared_ptr<C_VoiceDebugCom> Debug_Com() const { return m_pDebugCom; }
  // Deletes the link and makes it anew from its stored settings.
  void Renew_Debug_Com();
  // Writes the parameters to the station's store. Any thread.
  void Save();

  const int CanID;
  const int ControllerNum;                                     // instruction thread of the motion server
  std::unique_ptr<C_Kestrune_Motor_test> m_pMotor;             // the drive, always present
  std::unique_ptr<C_Interpolation_Voice_Motor> m_pTempSensor;  // temperature reader, null without one
  Shared<int> Motor_Ready;                                     // 1 when the drive answered at start-up
  // 0: the store belongs to another station of the same CAN id, and Save does nothing.
  Shared<int> Owns_Store{1};

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override;
  bool Is_Inverted() const override;

 private:
  std::wstring Store_Name() const { return Format_Text("音圈电机%d参数", CanID).Text(); }
  void Make_Temp_Sensor(int axis_num, int aux_axis_num);
  void Report_Faults_At_Start();

  double Measure_Thickness(float speed, float current);
  bool Wait_Until_Settled(DetectorState& det_model, CMyArray<double>& MotorTestData, float limit_ms);
  bool Read_Window(CMyArray<double>& temp_val);
  void Record_Cycle(double check_val, const CMyArray<double>& MotorTestData);

  void Wait_Idle(double limit_ms, const CMyStringW& message);
  bool Try_Retract(float speed, int retries, double& pos);
  void Give_Up_Retract(double pos);

  CPerformanceTimeValue m_BackTimer;  // since the retract command
  CPerformanceTimeValue m_ReadTimer;
  CPerformanceTimeValue m_CycleTimer;
  CPerformanceTimeValue m_SettleTimer;
  Shared<std::shared_ptr<C_VoiceDebugCom>> m_pDebugCom;
};

}  // namespace orsanta
