// C_VoiceMotor: one measurement station. A voice-coil motor with a linear encoder, its drive, its persisted parameters,
// its result, and what its cycles measured.
//
// Units: lengths are millimetres, forces grams, currents amperes, speeds mm/s, times milliseconds, temperatures degrees
// Celsius, unless a member says otherwise.
//
// Threads. The motion sequences (Detection_thickness, Land_To, Force_Back, Correct_Base) hold m_TestLock from start to
// end and may be called from any thread: the station's task lane, the panel, the host. The lock is recursive and is
// released on every way out. Parameters and results are read and written by several threads without a lock. The
// histories, the force surface and the serial link each have a leaf lock of their own, so that they may be read,
// replaced and cleared while a cycle runs. Dialogs and the calibration belong to one panel thread.
//
// Memory. SlowTestData keeps at most the newest 1,000,000 position samples (Max_History_Samples), the three histories
// with one value for each cycle at most the newest 200,000 cycles (Max_History_Cycles): some 25 megabytes a station,
// however long the system runs. Whoever needs more exports the histories in time (Export_History).
//
// Store. The parameters live in the store "音圈电机%d参数" (with CanID) in the working directory. The constructor loads
// them, Save and the destructor write them. A parameter that the store lacks keeps its default.
//
// The sequences stand in one file each: thickness_cycle.cpp, landing.cpp, calibration.cpp; beside them force_model.cpp
// and station_dialogs.cpp.
#pragma once

#include <memory>
#include <string>

#include "numeric/basis_fit.h"
#include "numeric/settling_detector.h"
#include "station/handshake.h"
#include "station/history.h"
#include "station/station_parameters.h"
#include "support/base/array.h"
#include "support/services/vector_file.h"
#include "support/store/store.h"
#include "support/time/critical_section.h"
#include "support/time/lock.h"
#include "support/time/shared.h"
#include "support/time/stopwatch.h"

namespace orsanta {

class C_Interpolation_Voice_Motor;
class C_Kestrune_Motor_test;
class C_VoiceDebugCom;

class C_VoiceMotor : public CAutoSaveClassData2, public C_Station_Parameters, public C_Handshake {
 public:
  // Greatest lengths of the histories; the newest values are kept.
  static constexpr int Max_History_Samples = 1000000;
  static constexpr int Max_History_Cycles = 200000;

  // Results of Detection_thickness that are no thickness.
  static constexpr double No_Samples_Result = -99.0;  // no position within 100 ms, or a value that is no number
  static constexpr double No_Position_Result = 0.0;   // no position at all

  // Loads the parameters, connects and maps the drive, and reports its faults in message boxes. Blocks until the
  // station stands; a drive that does not answer leaves Motor_Ready at 0, and the station stays with its parameters.
  // The arguments are those of VCM_Resource_struct; the last three are never read.
  C_VoiceMotor(int can_id, int axis_num, int aux_axis_num, int controller_num, int spare_num, int connect_server,
               int reserved1, int reserved2, int reserved3);
  // Saves the parameters, then ends the link and the drive. No sequence of the station may run.
  ~C_VoiceMotor() override;
  C_VoiceMotor(const C_VoiceMotor&) = delete;
  C_VoiceMotor& operator=(const C_VoiceMotor&) = delete;

  // --- Parameters ---

  // Writes the parameters to the station's store. Any thread.
  void Save();
  // Sets the reference surface, in single precision. One that is no number is told to the operator and not taken.
  void Set_Cur_BaseDistance(float position);
  // 0 to 9; returns 1, or 0 for any other mode, which is refused.
  int Set_TestMode(int mode);

  // --- The drive's state; any thread ---

  int Get_Motor_Ready() const { return Motor_Ready; }
  // Reads the drive's fault word and shows a message box for each fault. Returns 1 if the word could be read, else 0.
  int Report_Fault();

  // --- Serial link ---

  // The station's serial link for as long as the caller holds it. Null while Renew_Debug_Com replaces it.
  // Any thread.
  std::shared_ptr<C_VoiceDebugCom> Debug_Com() const;
  // Deletes the link and makes it anew from its stored settings.
  void Renew_Debug_Com();

  // --- The thickness cycle (thickness_cycle.cpp) ---

  // Lands on the part and waits until the position holds still. The probe stays on the part, under force.
  // speed: mm/s. current: the coil current that stands for the force, A. Returns the thickness in mm, without
  // Val_Error_offset. Failures show in-band: No_Samples_Result, No_Position_Result, or after a time-out, with a message
  // box, Cur_BaseDistance + Val_Block_Size; Ans_Valid is 0 after a time-out. Where the current or anything else of the
  // cycle is no number, a box says what, the result is No_Samples_Result, and Ans_Valid is 0.
  double Detection_thickness(float speed, float current);

  // --- Landing and force-back (landing.cpp) ---

  // Drives the probe toward target (mm) with the current as its limit, and returns when the drive has finished.
  // Returns 1; or 0, with the probe where it was, if the drive refused a value that is no number.
  int Land_To(float speed, float current, float target);
  // Lifts the probe to Val_BeginePoint_offset and opens the current limits. A probe that does not come free is retried
  // twice and then reported. Always 1.
  int Force_Back(float speed);
  // Measures the reference block and takes its surface as the zero of the thickness scale; lifts the probe with the
  // same speed. Returns Cur_BaseDistance, mm, which stays as it was if the measurement gave no number.
  double Correct_Base(float speed, float current);
  // Measures with the set force and the calibration speed and keeps the position in Val_Pos_Set[0] and Val_Pos_Set[2].
  // Returns the position, mm, without the sign that an inverted drive gives it.
  double Store_Position();
  // Force-backs of all stations since the process began.
  static int Force_Back_Count();

  // --- Force model (force_model.cpp) ---

  // The coil current of the force by the polynomial; not-a-number for a force that the polynomial never reaches.
  double Force_To_Current(double force) const;
  double Current_To_Force(double current) const;
  // Force of the suspension at the position; zero at Val_mark_pos.
  double Spring_Force(double position) const;
  double Force_Less_Spring(double current, double position) const;
  CMyArray<double> Currents_To_Forces(CMyArray<double> currents) const;
  // positions must be at least as long as currents.
  CMyArray<double> Net_Forces(CMyArray<double> currents, CMyArray<double> positions) const;
  // Fits the force surface m_P. Always 1.
  int Surface_Fit(const CMyArray<double>& currents, const CMyArray<double>& positions, const CMyArray<double>& forces);
  // By the force surface, which must hold exactly six coefficients.
  double Surface_Current(double force, double position) const;
  double Surface_Force(double current, double position) const;
  CMyArray<double> Surface_Currents(CMyArray<double> forces, CMyArray<double> positions) const;
  CMyArray<double> Surface_Forces(CMyArray<double> currents, CMyArray<double> positions) const;
  // The current of the next landing for the force: by the surface at the height of the last landing once both are
  // known, else by the polynomial.
  double Landing_Current(double force) const;
  // Sends the drive the current for the force at the position, the spring included.
  void Set_Landing_Current(double force, double position);
  // The linear sample correction: a store of at most 11 pairs, which starts as the identity. Always 1.
  int Add_Sample(double y, double x);
  // The straight line through the store at x. The store must not be empty.
  double Sample_Value(double x) const;

  // --- Calibration (calibration.cpp) ---

  // The force calibration with the operator's help, in dialogs on the calling thread. Returns 1 when it ended with
  // parameters set, 0 when the operator cancelled.
  int Calibrate_Force();
  // Fits Val_Force_KK, Val_Force_K and Val_Static_GForce to n pairs of current and force. Returns 1, or 0 when n is
  // below 3.
  int Fit_Force_Model(double* currents, double* forces, int n);
  // The friction force of the fit at each position.
  CMyArray<double> Friction_Forces(CMyArray<double> positions, FitData fit) const;

  // --- History ---

  // Writes the four histories to vector files, with the station and the local time in their names.
  void Export_History();

  // --- Members ---

 private:
  mutable C_Leaf_Lock m_Link_Lock;
  std::shared_ptr<C_VoiceDebugCom> m_pDebugCom GUARDED_BY(m_Link_Lock);

 public:
  Shared<double> Test_Ans;                          // last reported thickness, as the host reads it
  Shared<int> Ans_Ready;                            // 1 when Test_Ans is new
  double Ans_Max = -1000.0;                         // shown by the panel; nothing updates it
  double Ans_Min = 1000.0;                          // shown by the panel; nothing updates it
  Shared<int> Ans_Valid;                            // 1 if the last cycle's observed position was not exactly 0.0
  std::unique_ptr<C_Kestrune_Motor_test> m_pMotor;  // the drive, always present
  std::unique_ptr<C_Interpolation_Voice_Motor> m_pTempSensor;  // temperature reader, null without one
  C_History ThicknessArray{Max_History_Cycles};                // observed position of each cycle, mm
  C_History TempArray{Max_History_Cycles};                     // temperature of each cycle, where there is a reader
  C_History SlowTestData{Max_History_Samples};  // every position sample of every cycle, as often as it was delivered
  C_History TestTimeArray{Max_History_Cycles};  // duration of each cycle, ms
  Shared<double> Cur_BaseDistance;              // position of the reference surface
  Shared<double> m_Observed;                    // settled position of the last cycle
  Shared<double> m_TestTime;                    // duration of the last cycle
  Shared<double> m_MaxTestTime;                 // longest m_TestTime since start-up
  CMyCriticalSection m_TestLock;                // held across every motion sequence
  CMatLab_Matrix_Data m_MatData;                // writes the vector files
  Shared<int> Motor_Ready;                      // 1 when the drive answered at start-up
  CPerformanceTimeValue m_BackTimer;            // since the retract command
  const int AxisNum;                            // of the resource record; kept, not read again
  Shared<double> Last_Land_Pos;                 // observed position of the last cycle, 0.0 until the first one
  const int ControllerNum;                      // instruction thread of the motion server
  const int SpareNum;                           // of the resource record; kept, not read again
  Shared<int> m_TestMode;
  Shared<double> Test_Force[2];  // what the next measuring task uses
  Shared<double> m_CurForce;     // worked back from the current at the end of a cycle; for display
  // 0: the store belongs to another station of the same CAN id, and Save does nothing.
  Shared<int> Owns_Store{1};
  const int CanID;
  CMyArray<double> m_CalPos;  // calibration samples, index by index
  CMyArray<double> m_CalForce;
  CMyArray<double> m_CalCurrent;
  double m_CalMarkPos = 0.0;   // position read at the last calibration landing
  CMyArray<double> m_SampleY;  // the linear sample correction's store
  CMyArray<double> m_SampleX;
  CPerformanceTimeValue m_ReadTimer;
  CPerformanceTimeValue m_CycleTimer;
  CPerformanceTimeValue m_SettleTimer;

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override;

 private:
  std::wstring Store_Name() const;
  void Make_Temp_Sensor(int aux_axis_num);
  void Report_Faults_At_Start();

  double Measure_Thickness(float speed, float current);
  bool Wait_Until_Settled(DetectorState& det_model, CMyArray<double>& MotorTestData, float limit_ms);
  bool Read_Window(CMyArray<double>& temp_val);
  void Record_Cycle(double check_val, const CMyArray<double>& MotorTestData);

  void Wait_Idle(double limit_ms, const CMyStringW& message);
  bool Try_Retract(float speed, int retries, double& pos);
  void Give_Up_Retract(double pos);

  bool Ask_Cal_Settings(int& be_SetBaseParameter);
  int Enter_Base_Parameters();
  int Measure_Force_Model();
  bool Take_Cal_Samples();
  bool Take_Cal_Sample(double current);
  double Fit_Cal_Samples(bool be_surface);
  void Clear_Cal_Data();
  double Cal_Land(double current);
  void Cal_Back();
};

}  // namespace orsanta
