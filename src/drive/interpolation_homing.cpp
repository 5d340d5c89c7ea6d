// Homing on a sensor edge under the server's control, and the check of an axis over its stroke.
#include "drive/interpolation_motor.h"
#include "drive/sent_value.h"
#include "drive/stroke_check.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr double Home_Acceleration = 5000.0;  // mm/s^2
constexpr double Home_Jerk = 500000.0;        // mm/s^3

constexpr int Home_Mode_Simple = 1;
constexpr int Home_Mode_Approach = 2;
constexpr int Home_Timed_Out = -1;

}  // namespace

int C_Interpolation_Voice_Motor::Home_And_Check(int can_id, double& max, double& min) {
  if (Map_Once() != 1) return 0;
  if (Check_Map_Stop() != 1) return stroke_check::Report_Failure(can_id, stroke_check::Home_Failed);
  if (Measure_Stroke(max, min) != 1) return stroke_check::Report_Failure(can_id, stroke_check::Stroke_Failed);
  // Required: the step is longer than any stroke in mm, so that both step loops take at most one step; the self-test of
  // a machine is timed for that.
  constexpr double Step = 16384000.0;
  return stroke_check::Run(*this, &C_Interpolation_Voice_Motor::Go_Wait, can_id, max, min, Step);
}

int C_Interpolation_Voice_Motor::Measure_Stroke(double& max, double& min) {
  constexpr double Current = 1.0;  // amperes
  constexpr double End = 15.0;     // mm, beyond the mechanical stop
  Set_Current_Pos(Current);
  Set_Current_Neg(-Current);
  Set_Max_Vel(10.0);
  Go_Wait(End);
  Get_Cur_Pos(max);
  Go_Wait(-End);
  Get_Cur_Pos(min);
  Go_Wait(0.0);
  return 1;
}

void C_Interpolation_Voice_Motor::Begin_Homing(double jerk) {
  Set_Enable(1);
  Set_Max_Vel(m_HomeSpeed);
  Set_Max_Acc(Home_Acceleration);
  Set_Max_Jerk(jerk);
  Till_Stop(0);
  USE_LOCAL_REG(m_ThreadNum);
  SET_AXIS_ZEROS(m_ThreadNum, m_Axis, 0.0);
}

int C_Interpolation_Voice_Motor::Go_Home(int dir, double offset) {
  m_HomeMode = Home_Mode_Simple;
  m_HomeDir = dir;
  m_HomeArg[0] = offset;
  // Twice the time that the stroke takes at the first speed, and a second for what stands around it.
  const int timeout_ms = static_cast<int>(m_HomeStroke * 2000 / m_HomeSpeed + 1000);

  Begin_Homing(Home_Jerk);
  Reset_Current_Limit();
  Till_Stop(0);
  Till_Time(100.0);  // until the currents have settled
  WaitForAllInsFinish(m_ThreadNum);

  Queue_Home_Passes(dir);
  const int result = Watch_Home(timeout_ms);

  Till_Stop(1);
  Set_Max_Vel(m_HomeSpeed);
  Sgo(offset);
  Till_Stop(0);
  Zero_Correct(0.0);
  WaitForAllInsFinish(m_ThreadNum);
  m_HomeIo = m_SensorIo;
  return result;
}

// Queues the whole search; the server runs it without a further call. The edge of the sensor is met three times, at the
// speed, a tenth and a hundredth of it, so that the last meeting is as sharp as the input:
//
//     <---------- fast ------------|   onto the sensor (dir 1: in the negative direction)
//         |--- slow --->               off it
//             <- slowest -|            onto it again; here the axis takes its zero
void C_Interpolation_Voice_Motor::Queue_Home_Passes(int dir) {
  const double distance = dir == 1 ? m_HomeStroke : -m_HomeStroke;
  if (Read_Io(m_HomeIo) == 1) {  // on the sensor already: leave it first
    Sgo(distance);
    TILLIO_NEG(m_ThreadNum, m_HomeIo);
    STOP_S(m_ThreadNum, m_Axis);
  }
  double speed = m_HomeSpeed;
  for (int pass = 0; pass < 3; ++pass) {
    if (pass % 2 == 0) {
      Sgo(-distance);
      TILLIO(m_ThreadNum, m_HomeIo);
    } else {
      Sgo(distance);
      TILLIO_NEG(m_ThreadNum, m_HomeIo);
    }
    STOP_S(m_ThreadNum, m_Axis);
    speed /= 10.0;
    Set_Max_Vel(speed);
  }
  Till_Stop(0);
  SET_AXIS_ZEROS(m_ThreadNum, m_Axis, 0.0);
  Set_Max_Vel(speed);
  Set_Max_Acc(Home_Acceleration);
  Set_Max_Jerk(Home_Jerk);
}

bool C_Interpolation_Voice_Motor::Is_Thread_Finished() {
  int buffer_len = 0;
  int ins_finish = 0;
  GetThreadInsBufferRemainCount(m_ThreadNum, &buffer_len, &ins_finish);
  return ins_finish == 1;
}

// Waits for the end of the search. Once the time is up each further look drops what is queued, sends the axis back and
// tells the operator again: the watch ends only when the thread has finished, since an axis that may still move is not
// to be commanded. Returns 1, or -1 when the time was up.
int C_Interpolation_Voice_Motor::Watch_Home(int timeout_ms) {
  constexpr int Look_Ms = 100;
  int result = 1;
  int elapsed_ms = 0;
  for (;;) {
    if (Is_Thread_Finished()) return result;
    Sleep(Look_Ms);
    elapsed_ms += Look_Ms;
    if (elapsed_ms <= timeout_ms) continue;
    // The way back that was sent last time has had the sleep to leave the queue: to send it again would only hold up
    // the end of the watch.
    if (result == Home_Timed_Out && Is_Thread_Finished()) return result;
    ClearInsBuffer(m_ThreadNum);
    Sgo(0.0);
    double position = 0.0;
    Get_Cur_Pos(position);
    Message_Box(Format_Text("CANID:%d回零超时，请检查回零传感器和栅尺%3.3f", m_CanId, position));
    result = Home_Timed_Out;
  }
}

int C_Interpolation_Voice_Motor::Go_Home_Approach(int dir, double offset, double current, double pos1, double pos2) {
  m_HomeMode = Home_Mode_Approach;
  m_HomeDir = dir;
  m_HomeArg[0] = offset;
  m_HomeArg[1] = current;
  m_HomeArg[2] = pos1;
  m_HomeArg[3] = pos2;

  Begin_Homing(1000000.0);
  Set_Current_Neg(-current);
  Set_Current_Pos(current);
  WaitForAllInsFinish(m_ThreadNum);
  for (const double place : {pos1, pos2, 0.0}) Send_Go(place);
  Reset_Current_Limit();
  WaitForAllInsFinish(m_ThreadNum);

  m_HomeIo = m_SensorIo2;
  const int result = Go_Home(dir, offset);
  m_HomeMode = Home_Mode_Approach;  // the homing inside has set its own
  return result;
}

int C_Interpolation_Voice_Motor::Zero_Correct(double x) {
  if (!May_Send(m_CanId, "零位", x)) return 0;
  SET_AXIS_ZEROS(m_ThreadNum, m_Axis, x);
  Till_Stop(1);
  Till_Time(200.0);  // until the axis has settled
  const C_Lock_Guard hold(m_Lock);
  double position = 0.0;
  Get_Cur_Pos(position);
  m_ZeroOffset = m_ZeroOffset + position + x;
  return 1;
}

void C_Interpolation_Voice_Motor::Set_Home_Speed(double speed) {
  MY_ASSERT(speed > 0.0);  // the time-out of a homing is the stroke by this speed
  m_HomeSpeed = speed;
}

int C_Interpolation_Voice_Motor::Home_Again() {
  if (m_HomeMode == Home_Mode_Simple) return Go_Home(m_HomeDir, m_HomeArg[0]);
  if (m_HomeMode == Home_Mode_Approach) {
    return Go_Home_Approach(m_HomeDir, m_HomeArg[0], m_HomeArg[1], m_HomeArg[2], m_HomeArg[3]);
  }
  return 0;
}

}  // namespace orsanta
