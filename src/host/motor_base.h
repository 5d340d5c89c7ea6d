// C_VoiceMotorBase: the supervisor, the one object that owns everything else: the stations, the IO card, the host's
// serial port, the task lanes and the loop.
//
// The constructor builds the system and returns once every station stands and the loop runs; the destructor waits for
// running tasks and takes it down. In between do_test and get_ans may be called from any thread, and the loop thread
// turns IO inputs and serial bytes into tasks, one station for each pass.
//
// IoLock is held around IO outputs of the task callbacks and around every write to HostSerial. StationList and
// ResourceList do not change once the constructor has returned.
//
// A station whose CAN id is the one of an earlier station, or of the IO card, is told at the start and rests: it stays
// in the list with its parameters, counts as not ready, gets no task, and saves nothing over the store of the other.
#pragma once

#include <string>

#include "drive/io_card.h"
#include "host/task_app.h"
#include "orsanta/orsanta.h"
#include "support/base/array.h"
#include "support/dialog/chart.h"
#include "support/services/serial.h"
#include "support/services/time_viewer.h"
#include "support/system/wide_string.h"
#include "support/threads/thread.h"
#include "support/time/critical_section.h"
#include "support/time/shared.h"

namespace orsanta {

class C_VoiceMotor;
class plot_task;

class C_VoiceMotorBase : public C_Muti_Task_app, public CBaseBindThread {
 public:
  // resources: one record for each station. PortNum: the host's serial port, 0 for none. Baud: its rate. advanceduser:
  // start value of AdvancedUser. IoInit: 1 with the IO card, 0 without.
  C_VoiceMotorBase(CMyArray<VCM_Resource_struct> resources, int PortNum, int Baud, int advanceduser, int IoInit);
  ~C_VoiceMotorBase() override;

  // Queues a task on the station (from 1) and returns at once: 1 queued, 0 refused or no such station.
  int do_test(int station, int task_code);
  // Takes the latest result of the station (from 1): 1 if it is new. Writes thickness (mm) and set force (g) in either
  // case, unless there is no such station, which gives 0.
  int get_ans(int station, double* thickness, double* force);
  // False, after a message, for a station (from 0) whose CAN id belongs to another station or to the IO card: it moves
  // no drive, since that would move the other's probe or wait for ever.
  bool Check_Drive_Is_Own(int64_t index) const;
  // Runs the operator's panel on the calling thread to its end.
  void show();

  // Callbacks of the tasks and of the panel; each takes IoLock.
  void OnTaskBegin(int id) override;
  void OnTestResult(C_VoiceMotor* station) override;
  void OnForceBackOk(int id) override;

  Shared<double> PlotPointNum = 1000.0;  // how many of the newest points a chart takes
  Shared<int> SelectedStation = 0;       // of the panel's charts, from 0
  Shared<int> SelectedChart = 0;         // chart kind, of all charts at once
  CMyArray<C_VoiceMotor*> StationList;   // in the order of the resources; owned
  C_Io_Card IoCard;
  CMyArray<plot_task*> PlotWorkers;    // filled, emptied and owned by the panel
  Shared<int> LoopPaused = 0;          // 1 while the panel holds the loop for a manual procedure
  CMyArray<std::wstring> ParamTitles;  // page titles of the panel, one for each station
  CMyArray<std::wstring> StateTitles;
  CComSerial HostSerial;
  int HostSerialOpen = 0;  // 1 when HostSerial was opened at start
  CKestrunePlot Plot;      // the panel's chart
  C_TimeViewer TimeViewer;
  CMyCriticalSection IoLock;
  Shared<int> AdvancedUser = 0;
  int StationCount = 0;
  CMyArray<VCM_Resource_struct> ResourceList;

 protected:
  void OnThreadLoop(void* param) override;

 private:
  void Ensure_Single_Process();
  void Open_Host_Serial(int PortNum, int Baud);
  void Add_Station(int index, int IoInit);
  int Earlier_Station_On_Id(int index) const;  // -1 for none
  bool Is_On_Card(int index, int IoInit) const;
  CMyStringW Id_Conflict(int index, int IoInit) const;

  void SomeThinkNeedLoop();
  void Serve_Station(int cursor);
  int Trigger_Level(C_VoiceMotor& station);
  void Start_Task_For_Level(int lane, int level);
  void Serve_Host_Serial();
  void Send_Status_Lines();
  void Send_Host_Line(const CMyStringW& line);

  CMyArray<std::wstring> m_IdConflicts;  // one for each station: whose its CAN id is; empty for its own
};

}  // namespace orsanta
