// The motion sequences around a cycle: the landing under a limited current, the force-back that lifts the probe off the
// part, and the reference correction. Each reports what goes wrong in message boxes and goes on.
#include <atomic>
#include <cmath>

#include "drive/motor.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

std::atomic<int> the_Force_Backs{0};

constexpr double Current_Limit_Ms = 2000.0;    // until a current setting must have been taken up
constexpr double Retract_Limit_Ms = 5000.0;    // for one attempt to lift the probe
constexpr double Free_Mm = 1.0;                // a probe that moved so far has come off the part
constexpr double Sane_Position_Mm = 100.0;     // a reading beyond it is garbage
constexpr double Farthest_Target_Mm = 1000.0;  // no probe travels so far
constexpr int Retries = 1;                     // attempts after the first before the probe counts as stuck

}  // namespace

int C_VoiceMotor::Land_To(float speed, float current, float target) {
  // A target out of all reach would stretch the limit below without end, and a lost drive be waited for so long.
  if (!(std::fabs(target) <= Farthest_Target_Mm)) {
    Message_Box(Format_Text("ID:%d 目标位置%g mm超出探头行程，没有下压，请检查测试距离", CanID, target));
    return 0;
  }
  // Required: the travel figure is in seconds and stretches a limit in milliseconds, by next to nothing; the time of a
  // failed landing is part of the contract with hosts.
  const double travel = std::fabs(target / speed);
  const C_Lock_Guard hold(m_TestLock);
  if (m_pMotor->Set_Speed(speed) != 1) return 0;
  // The two operations are mirror images, so that both ways put the same value on the same channel.
  const int limited = Val_Run_Negative == 1 ? m_pMotor->Set_Current_Neg(-current) : m_pMotor->Set_Current_Pos(current);
  if (limited != 1) return 0;  // the limit of before, or none, is in force: no way down with that
  Wait_Idle(Current_Limit_Ms + travel, L"等待电流设定超时");
  if (m_pMotor->Go_Pos(target) == C_Kestrune_Motor_test::Position_Refused) return 0;
  Sleep(5);
  return 1;
}

// Waits until the drive is idle; past limit_ms (counted in sleeps) shows the message and gives up. An unreadable flag
// counts as busy.
void C_VoiceMotor::Wait_Idle(double limit_ms, const CMyStringW& message) {
  int waited_ms = 0;
  while (m_pMotor->Get_InterRunFlag() != 0) {
    Sleep(10);
    waited_ms += 10;
    if (waited_ms > limit_ms) {
      Message_Box(message);
      return;
    }
  }
}

void C_VoiceMotor::Set_Landing_Current(double force, double position) {
  m_pMotor->Set_Current_Pos(Current_At(force, position));
}

int C_VoiceMotor::Force_Back(float speed) {
  const C_Lock_Guard hold(m_TestLock);
  double pos = 0.0;
  for (int retries = 0; !Try_Retract(speed, retries, pos);) ++retries;
  m_pMotor->Reset_Current_Limit();  // until here the current of the last landing was in force
  // No limit, and no sleep of its own: reading the flag waits for a fresh sample of it. With a drive that has never
  // sent one the station's tasks end all the same, and so does a stop.
  while (m_pMotor->Has_Answered() == 1 && m_pMotor->Get_InterRunFlag() != 0) {
  }
  ++the_Force_Backs;
  return 1;
}

// One attempt to lift the probe. pos: the position last read, in and out. Returns true when the probe has come free,
// has arrived, or was reported as stuck; false when the attempt ran out of time.
bool C_VoiceMotor::Try_Retract(float speed, int retries, double& pos) {
  Wait_Idle(Retract_Limit_Ms, Format_Text("canid:%d force_back_timeout Get_InterRunFlag", CanID));
  m_pMotor->Set_Speed(speed);
  const double temp_pos = Val_BeginePoint_offset;
  m_pMotor->Send_Pos(temp_pos);  // of a retry too: the move that the drive is carrying out is not cancelled
  m_BackTimer.InitBeginTime(0.0);
  m_pMotor->Get_Cur_Pos(pos);
  const double start_pos = pos;
  for (;;) {
    if (m_BackTimer.GetCurPerformanceTimeFromBeginTimeMsDouble() > Retract_Limit_Ms) return false;
    if (retries > Retries) {
      Give_Up_Retract(pos);
      return true;
    }
    if (m_pMotor->Get_Cur_Pos(pos) != 1) {
      Message_Box(Format_Text("CANID:%d读取位置超时,请检查驱动器电源", CanID));
    }
    if (std::fabs(pos - start_pos) > Free_Mm) return true;
    if (std::fabs(pos - temp_pos) < Free_Mm) return true;
    Sleep(1);
  }
}

// The probe does not come free: the current of the landing is too small to lift it. Holds it where it is, opens the
// limits and sends it to 0.
void C_VoiceMotor::Give_Up_Retract(double pos) {
  if (std::fabs(pos) > Sane_Position_Mm) pos = 0.0;
  Message_Box(Format_Text("canid:%d force_back_timeout 最小电流过小 ", CanID));
  m_pMotor->Go_Pos(pos);
  m_pMotor->Reset_Current_Limit();
  m_pMotor->Go_Pos(0.0);
}

int C_VoiceMotor::Force_Back_Count() {
  return the_Force_Backs;
}

double C_VoiceMotor::Correct_Base(float speed, float current) {
  double result = 0.0;
  {
    const C_Lock_Guard hold(m_TestLock);
    result = Measure_Thickness(speed, current);
    Force_Back(speed);
  }
  if (result == No_Samples_Result)
    Message_Box(Format_Text("ID:%d 基准面标定时没有读到位置，基准面无效，请检查驱动器后重新进行基准面标定", CanID));
  // The result is measured against the old reference, so that this is the observed position, whatever that one was.
  const double base = Cur_BaseDistance + Val_Block_Size - result;
  if (std::isfinite(base)) Cur_BaseDistance = base;
  return Cur_BaseDistance;
}

double C_VoiceMotor::Store_Position() {
  m_pMotor->Set_Acc(Val_Acc_Set[0]);
  const double force = Val_Force_Set[0] + static_cast<float>(Spring_Force(test_distance));
  const double current = Force_To_Current(force);
  const double position =
      -Detection_thickness(static_cast<float>(Val_Speed_Set[1]), static_cast<float>(current)) + Val_Block_Size;
  Val_Pos_Set[0] = Is_Inverted() ? -position : position;
  Val_Pos_Set[2] = Val_Pos_Set[0];
  Force_Back(10.0F);
  return position;
}

}  // namespace orsanta
