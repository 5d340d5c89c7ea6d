#include "host/task_app.h"

#include <cstdint>

#include "drive/motor.h"
#include "station/voice_motor.h"
#include "support/dialog/subject.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

constexpr double Slow_Speed = 3.0;    // mm/s
constexpr int Fault_Word_Reads = 20;  // 1 ms apart

// The drive's fault word, 0 when it sends none. The loop takes samples from the same channel, so that one read alone
// often finds it empty and a fault would pass for none.
uint64_t Read_Fault_Word(C_VoiceMotor& station) {
  uint64_t motor_error = 0;
  for (int i = 0; i < Fault_Word_Reads && station.m_pMotor->Get_Error_Code(motor_error) != 1; ++i) Sleep(1);
  return motor_error;
}

}  // namespace

void C_Muti_Task_app::OnProcessTask(int /*lane*/, int code, void* station_object) {
  C_VoiceMotor& station = *static_cast<C_VoiceMotor*>(station_object);
  const C_Subject_Scope subject({station.CanID});
  const double current = station.Landing_Current(station.Test_Force[0]);
  switch (code) {
    case Task_Measure:
      return Measure(station, station.Val_Speed_Set[0], current);
    case Task_Force_Back:
      return Lift_Off(station);
    case Task_Force_Difference:
      return Measure_Force_Difference(station);
    case Task_Measure_Slow:
      return Measure(station, Slow_Speed, current);
    default:
      return;
  }
}

void C_Muti_Task_app::PreEndDelayTask(int /*lane*/) {}

void C_Muti_Task_app::Measure(C_VoiceMotor& station, double speed, double current) {
  Begin_Measuring(station);
  const double thickness = station.Detection_thickness(static_cast<float>(speed), static_cast<float>(current));
  station.Test_Ans = thickness + station.Val_Error_offset;  // as it stands at the end of the cycle
  Report_Result(station);
}

void C_Muti_Task_app::Lift_Off(C_VoiceMotor& station) {
  station.Force_Back(static_cast<float>(station.Val_UpSpeed_Set.Get()));
  if (Read_Fault_Word(station) == 0) OnForceBackOk(station.CanID);
  // The flag rises on a fault too, so that the handshake goes on; the output, which then stays low, tells of the fault.
  station.Set_Force_Back_Finish();
}

void C_Muti_Task_app::Measure_Force_Difference(C_VoiceMotor& station) {
  Begin_Measuring(station);
  const auto speed = static_cast<float>(station.Val_Speed_Set[0].Get());
  // Both landings go by the plain force model, so that its errors drop out of the difference.
  const double first_current = station.Force_To_Current(station.Test_Force[0]);
  station.Test_Ans = station.Detection_thickness(speed, static_cast<float>(first_current));
  const double second_current = station.Force_To_Current(station.Test_Force[1]);
  const double second = station.Detection_thickness(speed, static_cast<float>(second_current));
  station.Test_Ans = station.Test_Ans - second;
  Report_Result(station);
}

void C_Muti_Task_app::Begin_Measuring(C_VoiceMotor& station) {
  OnTaskBegin(station.CanID);
  station.Take_Force_Back_Finish();
}

void C_Muti_Task_app::Report_Result(C_VoiceMotor& station) {
  station.Ans_Ready = 1;
  OnTestResult(&station);
  station.Set_Test_Finish();
}

}  // namespace orsanta
