// The thickness cycle: one measurement, from the landing to the settled position.
#include <algorithm>
#include <cmath>
#include <limits>

#include "drive/interpolation_motor.h"
#include "drive/motor.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/services/time_viewer.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

// Far off every position: as long as this sample stands in the detector's window, no window counts as settled.
constexpr double Poison_Sample = 99999.0;

constexpr double No_Number = std::numeric_limits<double>::quiet_NaN();

constexpr double Shortest_Window = 1.0;       // samples; a shorter one would have a mean of nothing
constexpr double Read_Limit_Ms = 100.0;       // a drive that delivers nothing for so long is silent
constexpr float Settling_Grace_Ms = 2000.0F;  // on top of the time that the whole travel takes

}  // namespace

double C_VoiceMotor::Detection_thickness(float speed, float current) {
  const double thickness = Measure_Thickness(speed, current);
  if (std::isfinite(thickness)) return thickness;
  Ans_Valid = 0;
  return No_Samples_Result;
}

// The cycle. Returns the thickness, a substitute of a failure, or not-a-number where a value of the cycle was none: the
// operator was told, and no result or reference may come of it.
double C_VoiceMotor::Measure_Thickness(float speed, float current) {
  double check_val = 0.0;
  {
    const C_Lock_Guard hold(m_TestLock);
    C_TimeViewer tver;
    const C_Time_Mark mark(tver, L"Detection_thickness");

    DetectorState det_model;
    DetectorInit(det_model);
    det_model.WindowLen = std::max(Shortest_Window, Val_ErrorWindowLen.Get());
    det_model.Threshold = Val_ErrorThreshold / 1000.0;  // micrometres to millimetres
    det_model.Input = Poison_Sample;
    DetectorStep(det_model);
    const float limit_ms = test_distance / speed * 1000.0F + Settling_Grace_Ms;
    CMyArray<double> temp_val;
    m_pMotor->Get_Pos_Window(
        temp_val);  // Required: one read before the clock starts, as the cycle times of hosts count

    m_CycleTimer.InitBeginTime(0.0);
    // The first leg ends where the last part was touched, so that the second starts from standstill close to the
    // surface.
    if (Last_Land_Pos != 0.0) {
      const double target = Is_Inverted() ? -Last_Land_Pos : Last_Land_Pos.Get();
      if (Land_To(speed, current, static_cast<float>(target)) != 1) return No_Number;
    }
    if (Land_To(speed, current, test_distance) != 1) return No_Number;

    CMyArray<double> MotorTestData;
    if (!Wait_Until_Settled(det_model, MotorTestData, limit_ms)) return No_Samples_Result;

    double CVal = 0.0;
    m_pMotor->Get_Current(CVal);
    m_CurForce = Current_To_Force(CVal);
    if (MotorTestData.GetSize() == 0) {
      Message_Box(L"位置数据空，检测位置失败");
      return No_Position_Result;
    }
    check_val = det_model.Mean;  // 0.0 where the wait timed out
    if (std::isfinite(check_val)) Record_Cycle(check_val, MotorTestData);
  }
  const double thickness = Cur_BaseDistance - check_val + Val_Block_Size;
  if (!std::isfinite(thickness)) {
    Message_Box(Format_Text("ID:%d 测量结果不是有效数字，请检查传感器比例系数和基准块尺寸", CanID));
    return No_Number;
  }
  Ans_Valid = check_val != 0.0 ? 1 : 0;
  return thickness;
}

// Feeds what the position window delivers to the detector until a delivery ends settled, or until the time is up, which
// is reported and leaves the detector unsettled. Returns false when the drive delivers nothing.
//
// A read does not drain the window, so that a sample comes again in later deliveries and is fed again. While the window
// is shorter than the settling length the detector sees overlapping stretches and can accept with fewer different
// samples than that; once it is longer, each delivery replaces the detector's whole window by the newest samples.
// Required: results of running stations compare with new ones only so.
bool C_VoiceMotor::Wait_Until_Settled(DetectorState& det_model, CMyArray<double>& MotorTestData, float limit_ms) {
  CMyArray<double> temp_val;
  int fed = 0;  // samples of MotorTestData that the detector has seen
  m_SettleTimer.InitBeginTime(0.0);
  m_pMotor->Clear_Pos_Window(m_pMotor->m_PosWindow);
  Sleep(10);
  for (;;) {
    if (m_SettleTimer.GetCurPerformanceTimeFromBeginTimeMsDouble() > limit_ms) {
      Message_Box(L"等待测量值稳定超时");
      return true;
    }
    if (!Read_Window(temp_val)) return false;
    const double surplus = std::min<double>(temp_val.GetSize() - Val_ErrorWindowLen, temp_val.GetSize());
    if (surplus > 1.0) temp_val.RemoveData(0, static_cast<int>(surplus));  // the newest samples stay
    MotorTestData.ExpandMem(MotorTestData.GetSize() + temp_val.GetSize());
    for (const double sample : temp_val) MotorTestData.Add(sample);
    for (; fed < MotorTestData.GetSize(); ++fed) {
      det_model.Input = MotorTestData[fed];
      DetectorStep(det_model);
    }
    // A stretch inside the band in the middle of a delivery does not count: the end decides.
    if (det_model.Settled) return true;
  }
}

// Reads the position window until it delivers. Returns false after Read_Limit_Ms, even if the last read delivered.
bool C_VoiceMotor::Read_Window(CMyArray<double>& temp_val) {
  m_ReadTimer.InitBeginTime(0.0);
  for (;;) {
    const int delivered = m_pMotor->Get_Pos_Window(temp_val);
    Sleep(5);
    if (m_ReadTimer.GetCurPerformanceTimeFromBeginTimeMsDouble() > Read_Limit_Ms) return false;
    if (delivered == 1) return true;
  }
}

// Takes over what the cycle observed. A timed-out cycle is a part of the history too, with the position 0.0, and leaves
// no first leg to the next cycle.
void C_VoiceMotor::Record_Cycle(double check_val, const CMyArray<double>& MotorTestData) {
  m_Observed = check_val;
  m_TestTime = m_CycleTimer.GetCurPerformanceTimeFromBeginTimeMsDouble();
  TestTimeArray.Append(m_TestTime);
  ThicknessArray.Append(check_val);
  if (m_pTempSensor != nullptr) {
    double Temperature = 0.0;
    m_pTempSensor->Get_Temperature(Temperature, 0);
    TempArray.Append(Temperature);
  }
  Last_Land_Pos = check_val;
  if (m_TestTime > m_MaxTestTime) m_MaxTestTime = m_TestTime;
  SlowTestData.Append(MotorTestData);
}

}  // namespace orsanta
