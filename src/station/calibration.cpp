#include "station/calibration.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "drive/motor.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

// How many heights a calibration takes. Shared by all stations, lasts as long as the process: the next calibration, of
// whichever station, starts from the value of the last.
Shared<double> theHeadPositionNum{1.0};

constexpr C_Range Head_Positions{1.0, 10.0};
constexpr double Grams_Per_Newton = 100.0;
constexpr double Surface_From_Heights = 3.0;

}  // namespace

int C_Calibration::Run() {
  int be_SetBaseParameter = 0;
  if (!Ask_Settings(be_SetBaseParameter)) return 0;
  return be_SetBaseParameter != 0 ? Enter_Base_Parameters() : Measure_Force_Model();
}

bool C_Calibration::Ask_Settings(int& be_SetBaseParameter) {
  std::wstring temp_str = L"推力矫正";
  double D_test_distance = m_Station.test_distance;
  const auto range = [&](const auto& parameter) { return m_Station.Ranges_Of(&parameter).calibration; };
  C_Small_Dialog dialog;
  dialog.Words(L"电机", temp_str)
      .Number(L"请输入测试最大电流(A)", m_Station.Val_Correction_MaxI, range(m_Station.Val_Correction_MaxI), 3)
      .Number(L"请输入测试最小电流(A)", m_Station.Val_Correction_MinI, range(m_Station.Val_Correction_MinI), 4)
      .Number(L"测试采集的电流点数", m_Station.Val_FC_test_num, range(m_Station.Val_FC_test_num))
      .Number(L"测试采集的位置点数", theHeadPositionNum, Head_Positions, 1)
      .Number(L"标定最大距离", D_test_distance, range(m_Station.test_distance), 1)
      .Tick(L"直接设置标定参数", be_SetBaseParameter);
  if (!dialog.Ask()) return false;
  m_Station.test_distance = static_cast<float>(D_test_distance);
  return true;
}

// The model entered by hand: it is linear, and there is no surface.
int C_Calibration::Enter_Base_Parameters() {
  double temp_kp = m_Station.Val_Force_K / Grams_Per_Newton;
  double temp_static = m_Station.Val_Static_GForce / Grams_Per_Newton;
  double temp_SK = m_Station.Val_Spring_K / Grams_Per_Newton;
  const auto in_newtons = [&](const Shared<double>& parameter) {
    return m_Station.Ranges_Of(&parameter).calibration.Times(1.0 / Grams_Per_Newton);
  };
  C_Small_Dialog dialog;
  dialog.Number(L"推力常数(N/A)", temp_kp, in_newtons(m_Station.Val_Force_K), C_Small_Dialog::All_Digits)
      .Number(L"弹簧Kp(N/mm)", temp_SK, in_newtons(m_Station.Val_Spring_K), C_Small_Dialog::All_Digits)
      .Number(L"零位补偿(N)", temp_static, in_newtons(m_Station.Val_Static_GForce), C_Small_Dialog::All_Digits);
  if (!dialog.Ask()) return 0;
  m_Station.Val_Force_K = temp_kp * Grams_Per_Newton;
  m_Station.Val_Force_KK = 0.0;
  m_Station.Val_Static_GForce = temp_static * Grams_Per_Newton;
  m_Station.Val_Spring_K = temp_SK * Grams_Per_Newton;
  m_Station.Val_mark_pos = 0.0;
  m_Station.m_P = CMyArray<double>();
  return 1;
}

int C_Calibration::Measure_Force_Model() {
  if (!Take_Samples()) return 0;
  m_Station.m_MatData.Save_Double_Vector(m_CalCurrent.GetData(), m_CalCurrent.GetSize(), L"x_data.dat");
  m_Station.m_MatData.Save_Double_Vector(m_CalPos.GetData(), m_CalPos.GetSize(), L"y_data.dat");
  m_Station.m_MatData.Save_Double_Vector(m_CalForce.GetData(), m_CalForce.GetSize(), L"z_data.dat");

  const bool be_surface = theHeadPositionNum >= Surface_From_Heights;
  const double temp_val = Fit_Samples(be_surface);
  m_Station.Force_Back(static_cast<float>(m_Station.Val_UpSpeed_Set));
  Message_Box(Format_Text(be_surface ? "3D推力拟合误差%3.3f g" : "2D推力拟合误差%3.3f g", temp_val));
  return 1;
}

// One row of currents at each height of the head. Returns false when the operator cancelled.
bool C_Calibration::Take_Samples() {
  const double step = (m_Station.Val_Correction_MaxI - m_Station.Val_Correction_MinI) / (m_Station.Val_FC_test_num - 1);
  for (int i = 0; theHeadPositionNum > i; ++i) {
    Message_Box(L"请调整测量头高度");
    for (int j = 0; j < m_Station.Val_FC_test_num; ++j) {
      if (!Take_Sample(m_Station.Val_Correction_MinI + j * step)) return false;
    }
  }
  return true;
}

// One landing with the current, and the force that the operator reads at it. The probe is up again at the return, after
// a cancel too. Returns false after a cancel, and where the probe did not land.
bool C_Calibration::Take_Sample(double current) {
  if (std::isnan(Cal_Land(current))) return false;
  double temp_force = 0.0;
  const bool confirmed = C_Small_Dialog().Number(L"请输入当前推力(g)", temp_force, {0.0, 10000.0}).Ask();
  m_CalForce.Add(temp_force);
  Cal_Back();
  return confirmed;
}

// Lands with the current and keeps both it and the position; the probe then presses with it. Returns the position, or
// not-a-number where a value of the landing was none: the operator was told, and the probe stays where it is.
double C_Calibration::Cal_Land(double current) {
  if (m_Station.Land_To(static_cast<float>(m_Station.Val_Speed_Set[1]), static_cast<float>(current),
                        m_Station.test_distance) != 1) {
    return std::numeric_limits<double>::quiet_NaN();
  }
  Sleep(100);
  double pos = 0.0;
  if (m_Station.m_pMotor->Get_Cur_Pos(pos) != 1) Message_Box(L"位置数据err");
  m_CalMarkPos = pos;
  m_CalCurrent.Add(current);
  return pos;
}

// Lifts the probe and takes the typed force to the height of the first landing: a higher or lower one gets the spring's
// force of the difference.
void C_Calibration::Cal_Back() {
  m_CalPos.Add(0.0);  // its place, until the probe is up
  m_Station.Force_Back(static_cast<float>(m_Station.Val_UpSpeed_Set));
  m_CalPos.GetEndData() = m_CalMarkPos;
  m_CalForce.GetEndData() += (m_CalMarkPos - m_CalPos[0]) * m_Station.Val_Spring_K;
}

// Fits the polynomial and, where asked for, the surface; else an old surface goes. Returns the largest error of the fit
// that the next landings use, in grams.
double C_Calibration::Fit_Samples(bool be_surface) {
  const int fitted = m_Station.Fit_Force_Model(m_CalCurrent.GetData(), m_CalForce.GetData(), m_CalCurrent.GetSize());
  if (fitted == 1) m_Station.Val_mark_pos = m_CalPos[0];
  CMyArray<double> force_array2 = m_Station.Currents_To_Forces(m_CalCurrent);
  if (be_surface) {
    m_Station.Surface_Fit(m_CalCurrent, m_CalPos, m_CalForce);
    force_array2 = m_Station.Surface_Forces(m_CalCurrent, m_CalPos);
  } else {
    m_Station.m_P = CMyArray<double>();
  }
  double temp_val = 0.0;
  for (int k = 0; k < m_CalForce.GetSize(); ++k) {
    const double error = std::fabs(m_CalForce[k] - force_array2[k]);
    if (std::isnan(error)) return error;  // a fit that went to not-a-number shows as such, not as one without an error
    temp_val = std::max(error, temp_val);
  }
  return temp_val;
}

}  // namespace orsanta
