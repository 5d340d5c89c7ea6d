// Homing and the check of a motor over its stroke, for both drive classes.
#include <cmath>

#include "drive/interpolation_motor.h"
#include "drive/motor.h"
#include "drive/sent_value.h"
#include "drive/tremalink.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int Shuttle_Passes = 5;
constexpr double Stroke_Parts = 10.0;
// Step of the interpolation class over its stroke. Required: the stroke is in mm, so that both step loops take at most
// one step; the self-test of a machine is timed for that.
constexpr double Interpolation_Step = 16384000.0;

constexpr double Stop_Search_Current = 1.0;  // amperes
constexpr double Stop_Search_Speed = 10.0;   // mm/s
constexpr double Stop_Search_End = 15.0;     // mm, beyond the mechanical stop

constexpr double Home_Acceleration = 5000.0;  // mm/s^2
constexpr double Home_Jerk = 500000.0;        // mm/s^3
constexpr double Approach_Jerk = 1000000.0;   // mm/s^3
constexpr double Pass_Speed_Factor = 10.0;    // each pass is this much slower than the one before
constexpr int Home_Passes = 3;
constexpr int Watch_Sleep_Ms = 100;
constexpr double Current_Settle_Ms = 100.0;
constexpr double Zero_Settle_Ms = 200.0;

constexpr int Home_Mode_Simple = 1;
constexpr int Home_Mode_Approach = 2;
constexpr int Home_Timed_Out = -1;

constexpr const wchar_t* Forward_Failed = L"正向运动无法到位";
constexpr const wchar_t* Reverse_Failed = L"反向运动无法到位";
constexpr const wchar_t* Middle_Failed = L"无法回中";

// Runs over the stroke in steps, out from min and back from max. go(x) moves and returns 1 on arrival. Returns null, or
// the words of the first move that did not arrive. Required: max is left out on the way out and min on the way back,
// give or take a rounded sum, since a machine may stop short of its own ends.
template <class C_Go>
const wchar_t* Step_Over_Stroke(C_Go go, double max, double min, double step) {
  for (double x = min; max > x; x += step) {
    if (go(x) != 1) return Forward_Failed;
  }
  for (double x = max; x > min; x -= step) {
    if (go(x) != 1) return Reverse_Failed;
  }
  return nullptr;
}

// Runs back and forth between the ends with a stop in the middle. Results as above.
template <class C_Go>
const wchar_t* Shuttle(C_Go go, double max, double min) {
  const double middle = (max + min) / 2;
  for (int pass = 0; pass < Shuttle_Passes; ++pass) {
    if (go(max) != 1) return Forward_Failed;
    if (go(middle) != 1) return Middle_Failed;
    if (go(min) != 1) return Reverse_Failed;
    if (go(middle) != 1) return Middle_Failed;
  }
  return nullptr;
}

// Tells the operator which drive failed at what. Returns 0, the result of the failed check.
int Report_Failure(int can_id, const wchar_t* words) {
  CMyStringW str = Format_Text("ID:%d的驱动器", can_id);
  str.Append(words);
  Message_Box(str);
  return 0;
}

}  // namespace

// --- C_Kestrune_Motor_test: the drive homes by itself ---

int C_Kestrune_Motor_test::Home_And_Check(int can_id, double& max, double& min) {
  if (Map_Once() != 1) return 0;  // "无法映射ID:%d" would say no more than the report that the mapping has shown
  if (Check_Ready() != 1) return Report_Failure(can_id, L"无法回零");
  if (Measure_Stroke(max, min) != 1) return Report_Failure(can_id, L"无法测量行程");
  max /= m_Scale;
  min /= m_Scale;

  const auto go = [this](double mm) { return Go_Pos(mm); };
  const wchar_t* failure = Step_Over_Stroke(go, max, min, (max - min) / Stroke_Parts);
  if (failure != nullptr) return Report_Failure(can_id, failure);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  if (Get_Version(ver, bcd_date) != 1)
    return Report_Failure(can_id, L"无法获取版本号");  // a proof of the link, no more
  failure = Shuttle(go, max, min);
  if (failure != nullptr) return Report_Failure(can_id, failure);
  Go_Pos(min);
  return 1;
}

// --- C_Interpolation_Voice_Motor: homing on a sensor, under the server's control ---

int C_Interpolation_Voice_Motor::Home_And_Check(int can_id, double& max, double& min) {
  if (Map_Once() != 1) return 0;
  if (Check_Map_Stop() != 1) return Report_Failure(can_id, L"无法回零");
  if (Measure_Stroke(max, min) != 1) return Report_Failure(can_id, L"无法测量行程");

  const auto go = [this](double mm) { return Go_Wait(mm); };
  const wchar_t* failure = Step_Over_Stroke(go, max, min, Interpolation_Step);
  if (failure != nullptr) return Report_Failure(can_id, failure);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  if (Get_Version(ver, bcd_date) != 1) return Report_Failure(can_id, L"无法获取版本号");
  failure = Shuttle(go, max, min);
  if (failure != nullptr) return Report_Failure(can_id, failure);
  return 1;
}

int C_Interpolation_Voice_Motor::Measure_Stroke(double& max, double& min) {
  Set_Current_Pos(Stop_Search_Current);
  Set_Current_Neg(-Stop_Search_Current);
  Set_Max_Vel(Stop_Search_Speed);
  Go_Wait(Stop_Search_End);
  Get_Cur_Pos(max);
  Go_Wait(-Stop_Search_End);
  Get_Cur_Pos(min);
  Go_Wait(0.0);
  return 1;
}

int C_Interpolation_Voice_Motor::Go_Home(int dir, double offset) {
  m_HomeMode = Home_Mode_Simple;
  m_HomeDir = dir;
  m_HomeArg[0] = offset;
  // Twice the time that the stroke takes at the first speed, and a second for what stands around it.
  const int timeout_ms = static_cast<int>(m_HomeStroke * 2000 / m_HomeSpeed + 1000);

  Set_Enable(1);
  Set_Max_Vel(m_HomeSpeed);
  Set_Max_Acc(Home_Acceleration);
  Set_Max_Jerk(Home_Jerk);
  Till_Stop(0);
  USE_LOCAL_REG(m_ThreadNum);
  SET_AXIS_ZEROS(m_ThreadNum, m_Axis, 0.0);
  Reset_Current_Limit();
  Till_Stop(0);
  Till_Time(Current_Settle_Ms);
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
  int io_temp = 0;
  GetCurIoInput(m_HomeIo, &io_temp);
  if (io_temp == 1) {  // on the sensor already: leave it first
    Sgo(distance);
    TILLIO_NEG(m_ThreadNum, m_HomeIo);
    STOP_S(m_ThreadNum, m_Axis);
  }
  double speed = m_HomeSpeed;
  for (int pass = 0; pass < Home_Passes; ++pass) {
    if (pass % 2 == 0) {
      Sgo(-distance);
      TILLIO(m_ThreadNum, m_HomeIo);
    } else {
      Sgo(distance);
      TILLIO_NEG(m_ThreadNum, m_HomeIo);
    }
    STOP_S(m_ThreadNum, m_Axis);
    speed /= Pass_Speed_Factor;
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
  int result = 1;
  int elapsed_ms = 0;
  for (;;) {
    if (Is_Thread_Finished()) return result;
    Sleep(Watch_Sleep_Ms);
    elapsed_ms += Watch_Sleep_Ms;
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

  Set_Enable(1);
  Set_Max_Vel(m_HomeSpeed);
  Set_Max_Acc(Home_Acceleration);
  Set_Max_Jerk(Approach_Jerk);
  Till_Stop(0);
  USE_LOCAL_REG(m_ThreadNum);
  SET_AXIS_ZEROS(m_ThreadNum, m_Axis, 0.0);
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
  Till_Time(Zero_Settle_Ms);
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
