// C_Muti_Task_app: what a task does on a station.
//
// Each station has a lane of its own, so that stations work side by side and the tasks of one station run one after the
// other. Four codes are the whole vocabulary: measure, lift off, force difference, measure slowly. What the world is
// told of a task (IO outputs, serial reports) is left to the supervisor, in the three callbacks.
//
// OnProcessTask runs on the lane's thread. The class has no data.
#pragma once

#include "support/threads/task_lanes.h"

namespace orsanta {

class C_VoiceMotor;

enum Task_Code { Task_Measure = 1, Task_Force_Back = 2, Task_Force_Difference = 3, Task_Measure_Slow = 4 };

class C_Muti_Task_app : public CQueueTask_MutiTask_Thread {
 public:
  // A measuring task of the station with this CAN id begins.
  virtual void OnTaskBegin(int id) = 0;
  // The station has a new result.
  virtual void OnTestResult(C_VoiceMotor* station) = 0;
  // The probe is off the part, and the drive has no fault.
  virtual void OnForceBackOk(int id) = 0;

 protected:
  // station: the C_VoiceMotor that the task is for. A code other than the four does nothing.
  void OnProcessTask(int lane, int code, void* station) override;
  void PreEndDelayTask(int lane) override;

 private:
  void Measure(C_VoiceMotor& station, double speed, double current);
  void Lift_Off(C_VoiceMotor& station);
  void Measure_Force_Difference(C_VoiceMotor& station);
  // Lowers the station's IO output and its Force_Back_Finish, which stay so while a measuring task runs.
  void Begin_Measuring(C_VoiceMotor& station);
  void Report_Result(C_VoiceMotor& station);
};

}  // namespace orsanta
