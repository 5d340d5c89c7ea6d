// Feeds the host's serial line and a station's with arbitrary bytes: a "T" that ends what has come starts a
// measurement, a "C" anywhere is answered by the status lines, and nothing else does anything.
#include "common/pty.h"
#include "common/resources.h"
#include "fuzz/fuzz.h"
#include "host/motor_base.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "station/debug_com.h"
#include "station/voice_motor.h"

using namespace orsanta;

struct C_Room_Without_Drives {
  C_Room_Without_Drives() { simulator::Reset({.drives = 0}); }
};

// Its loop runs where it is called; its tasks are counted and no more.
struct C_Called_Supervisor : C_Room_Without_Drives, C_VoiceMotorBase {
  C_Called_Supervisor() : C_VoiceMotorBase(Numbered_Resources(1), 1, 115200, 0, 0) {
    EndThread(1, 1);
    StationList[0]->Debug_Com()->ValComNum = 2;
    StationList[0]->Debug_Com()->Save();
    StationList[0]->Renew_Debug_Com();
  }
  ~C_Called_Supervisor() override { ReleaseSubClass_CQueueTask_MutiTask_Thread(); }
  void OnProcessTask(int, int code, void*) override { tasks += code == Task_Measure ? 1 : 100; }
  using C_VoiceMotorBase::OnThreadLoop;
  int tasks = 0;
};

void Fuzz(std::string input) {
  static const C_Simulated_Clock clock(1);
  static const C_Temp_Folder folder;
  static C_Pty host(1), link(2);
  static C_Called_Supervisor base;
  // One visit of the loop reads 256 bytes.
  const std::string asked = input.substr(0, std::min(input.size() / 2, size_t{256}));
  const std::string heard = input.substr(asked.size(), 256);
  host.Send(asked), link.Send(heard);
  base.StationList[0]->Force_Back_Finish = 1;
  base.OnThreadLoop(nullptr);
  Sleep(1);  // for the task
  Demand(std::exchange(base.tasks, 0) == (!heard.empty() && heard.back() == 'T' ? 1 : 0), "a wrong task");
  Demand(host.Take() == (asked.find('C') < asked.size() ? "ID:1 State:0\n" : ""), "a wrong answer");
}
