// The advanced dialog of a station and its commands.
#include <cmath>

#include "drive/motor.h"
#include "host/motor_base.h"
#include "station/debug_com.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"
#include "ui/panel.h"
#include "ui/plot_task.h"

namespace orsanta {

namespace {

constexpr float Advanced_Width = 20.0F;
constexpr double Sample_Ms = 2.0;  // from one sample of the settling window to the next
constexpr int All_Digits = C_Small_Dialog::All_Digits;

// Sub-ids from Chart_Thickness on, in the order of the buttons.
constexpr const wchar_t* Advanced_Captions[] = {
    L"测量位置曲线", L"测量时间曲线",   L"测量温度曲线",
    L"清除曲线数据", L"推力矫正",       L"推力修正值",
    L"误差阀值",     L"稳定时间",       L"调试串口",
    L"电机方向",     L"原点偏移",       L"测试距离",
    L"测量误差补偿", L"传感器比例系数", L"传感器线性度测量",
    L"导出调试数据", L"设置温度传感器", L"弹簧K值补偿（仅用于2D标定）",
};

}  // namespace

// The dialog's buttons come to OnCtrlButton while this call stands on the stack. One such dialog at a time: a further
// press does nothing, and saves nothing.
C_ORS_Dlg::C_End C_ORS_Dlg::Show_Advanced_Dialog(int index) {
  if (m_AdvanceDlgOpen == 1) {
    Refuse_Press(L"高级功能窗口已经打开，请先关闭");
    return C_End::Leave;
  }
  m_AdvanceDlgOpen = 1;
  CParameterInOutDlg advance_dlg;
  int sub_id = panel_id::Chart_Thickness;
  for (const wchar_t* caption : Advanced_Captions) {
    advance_dlg.AddButton(caption, 0, Advanced_Width, 1, Id(index, sub_id), this, 1, 1.0F);
    ++sub_id;
  }
  advance_dlg.SetCaptionName(Format_Text("电机%d 高级功能", index + 1));
  advance_dlg.SetColumnStation(0, m_pMotorBase->ResourceList[index].CanID);
  advance_dlg.DoParameterDlg(1, 0, 1.0F, 0, nullptr, nullptr, 1);
  m_AdvanceDlgOpen = 0;
  return C_End::Save;
}

void C_ORS_Dlg::Carry_Out_Advanced(int index, int sub_id, C_VoiceMotor& station) {
  switch (sub_id) {
    case panel_id::Chart_Thickness:
    case panel_id::Chart_Time:
    case panel_id::Chart_Temperature:
      Show_Chart(index, sub_id - panel_id::Chart_Thickness);
      break;
    case panel_id::Clear_Data:
      Clear_Charted_Data();
      break;
    case panel_id::Calibrate_Force:
      station.Calibrate_Force();
      break;
    case panel_id::Force_Offset:  // Required: the caption is that of the set force, as operators know it
      station.Edit_On_Panel(L"设定推力(g)", station.Val_Force_OffSet);
      break;
    case panel_id::Error_Threshold:
      station.Edit_On_Panel(L"输入误差阀值(um)", station.Val_ErrorThreshold);
      break;
    case panel_id::Settling_Time:
      Edit_Settling_Time(station);
      break;
    case panel_id::Serial_Link:
      Change_Serial_Link(station);
      break;
    case panel_id::Direction:
      Edit_Direction(station);
      break;
    case panel_id::Origin_Offset:
      station.Edit_On_Panel(L"原点偏移(mm)", station.Val_BeginePoint_offset);
      break;
    case panel_id::Test_Distance:
      Edit_Test_Distance(station);
      break;
    case panel_id::Error_Offset:
      station.Edit_On_Panel(L"测量误差补偿", station.Val_Error_offset, All_Digits);
      break;
    case panel_id::Sensor_Scale:
      Edit_Sensor_Scale(station);
      break;
    case panel_id::Linearity:
      Check_Linearity(index, station);
      break;
    case panel_id::Export:
      station.Export_History();
      break;
    case panel_id::Temp_Sensor:
      station.Edit_On_Panel(L"ntc温度传感器CANID", station.Val_TempSensorCanID, All_Digits);
      break;
    case panel_id::Spring_K:
      station.Edit_On_Panel(L"弹簧K值补偿（g/mm）", station.Val_Spring_K, All_Digits);
      break;
    default:
      break;
  }
}

// Opens the chart of the station. From its next pass on the worker draws it, under its own title; the kind holds for
// all charts.
void C_ORS_Dlg::Show_Chart(int index, int kind) {
  m_pMotorBase->SelectedStation = index;
  m_pMotorBase->SelectedChart = kind;
  const C_VoiceMotor& station = *m_pMotorBase->StationList[index];
  const C_History& data = kind == 0 ? station.ThicknessArray : kind == 1 ? station.TestTimeArray : station.TempArray;
  if (data.GetSize() == 0) Refuse_Press(L"还没有数据");
  const CMyStringW title = Format_Text(kind == 2 ? "电机：%d测量温度" : "电机：%d测量结果", index + 1);
  m_pMotorBase->PlotWorkers[index]->Plot_Last(title.Text(), data.Copy(), static_cast<int>(m_pMotorBase->PlotPointNum),
                                              0);
  m_pMotorBase->PlotWorkers[index]->Raise();
}

// Required: of the station that was charted last, which need not be the one of this dialog; operators clear what they
// see.
void C_ORS_Dlg::Clear_Charted_Data() {
  C_VoiceMotor& station = *m_pMotorBase->StationList[m_pMotorBase->SelectedStation];
  station.ThicknessArray.Clear();
  station.TestTimeArray.Clear();
  station.TempArray.Clear();
}

// Shown as a time.
void C_ORS_Dlg::Edit_Settling_Time(C_VoiceMotor& station) {
  double time_ms = station.Val_ErrorWindowLen * Sample_Ms;
  C_Small_Dialog()
      .Number(L"输入稳定时间", time_ms, station.Ranges_Of(&station.Val_ErrorWindowLen).panel.Times(Sample_Ms))
      .Ask();
  station.Val_ErrorWindowLen = time_ms / Sample_Ms;
}

void C_ORS_Dlg::Change_Serial_Link(C_VoiceMotor& station) {
  if (const auto link = station.Debug_Com()) link->Settings_Dialog();
  station.Renew_Debug_Com();
}

void C_ORS_Dlg::Edit_Direction(C_VoiceMotor& station) {
  C_Small_Dialog().Tick(L"电机反转", station.Val_Run_Negative).Ask();
  station.Set_RunNegative(station.Val_Run_Negative == 0 ? 1 : 0);
}

void C_ORS_Dlg::Edit_Test_Distance(C_VoiceMotor& station) {
  double distance = 10.0;
  station.Get_TestDistance(distance);
  const C_Range range = station.Ranges_Of(&station.test_distance).panel;
  if (C_Small_Dialog().Number(L"测试距离", distance, range, All_Digits).Ask()) station.Set_TestDistance(distance);
}

void C_ORS_Dlg::Edit_Sensor_Scale(C_VoiceMotor& station) {
  if (!station.Edit_On_Panel(L"传感器比例系数", station.Val_SensorScale, All_Digits)) return;
  station.m_pMotor->SetScale(station.Val_SensorScale);
}

// Measures two blocks of known size. Two equal sizes divide by zero, and the message shows what comes of it.
void C_ORS_Dlg::Check_Linearity(int index, C_VoiceMotor& station) {
  double block_size_set[2] = {0.0, 0.0};
  double block_size_check[2] = {0.0, 0.0};
  station.Test_Force[0] = station.Val_Force_Set[0].Get();
  for (int n = 0; n < 2; ++n) {
    C_Small_Dialog().Number(L"请输入量块尺寸", block_size_set[n], {0, 64}, All_Digits).Ask();
    Measure_And_Return(index, station);
    block_size_check[n] = station.Test_Ans;
  }
  const double ratio = std::abs((block_size_check[0] - block_size_check[1]) / (block_size_set[0] - block_size_set[1]));
  Message_Box(Format_Text("线性比例结果%3.4f", ratio));
}

}  // namespace orsanta
