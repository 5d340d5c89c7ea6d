// The commands of the panel's columns.
//
// A measurement that the operator starts by hand pauses the loop (LoopPaused), so that no automatic trigger lifts a
// probe that is held down; returning the probe lets the loop go on.
#include <algorithm>
#include <vector>

#include "drive/motor.h"
#include "host/motor_base.h"
#include "station/voice_motor.h"
#include "support/dialog/small_dialog.h"
#include "support/time/clock.h"
#include "ui/panel.h"

namespace orsanta {

namespace {

constexpr int Mask_Bits = 32;  // of the simulation mask; stations beyond have no bit
constexpr int Poll_Ms = 10;
constexpr int Longest_Slow_Test_Ms = 5000;

constexpr wchar_t Measure_Caption[] = L"测量";
constexpr wchar_t Measure_Manual_Caption[] = L"测量(手动模式)";

}  // namespace

// The drive is told in any case, after a cancel too.
void C_ORS_Dlg::Edit_Acceleration(C_VoiceMotor& station) {
  station.Edit_On_Panel(L"输入加速度mm/s^2", station.Val_Acc_Set[0]);
  station.m_pMotor->Set_Acc(station.Val_Acc_Set[0]);
}

void C_ORS_Dlg::Correct_Reference_Plane(int index, C_VoiceMotor& station) {
  std::wstring prompt = L"请放好基准量块";
  if (!C_Small_Dialog().Words(Format_Text("微米仪%d基准面矫正", index + 1), prompt).Ask()) return;
  const auto current = static_cast<float>(station.Force_To_Current(station.Val_Force_Set[0]));
  const auto speed = static_cast<float>(station.Val_Speed_Set[0].Get());
  station.Val_BaseDistance = station.Correct_Base(speed, current);
  m_StateText[index] = Format_Text("基准面距离: %3.3f", station.Val_BaseDistance.Get()).Text();
}

// Queues a slow measurement, waits for it within bounds, and queues the return of the probe until the queue takes it.
void C_ORS_Dlg::Measure_And_Return(int index, C_VoiceMotor& station) {
  m_pMotorBase->AddNewDelayProcess(index, Task_Measure_Slow, 1, &station);
  m_pMotorBase->LoopPaused = 1;
  int waited_ms = 0;
  while (m_pMotorBase->GetDelayProcessFifoCount(index) > 0) {
    Sleep(Poll_Ms);
    Refresh_Displays();
    waited_ms += Poll_Ms;
    if (waited_ms > Longest_Slow_Test_Ms) break;
  }
  int taken = 0;
  while (taken == 0) {
    Sleep(Poll_Ms);
    Refresh_Displays();
    taken = m_pMotorBase->AddNewDelayProcess(index, Task_Force_Back, 1, &station);
    m_pMotorBase->LoopPaused = 0;
  }
}

void C_ORS_Dlg::Measure_Slowly(int index, C_VoiceMotor& station) {
  station.Test_Force[0] = station.Val_Force_Set[0].Get();
  Measure_And_Return(index, station);
}

// Queues a measurement after which the probe stays on the part.
void C_ORS_Dlg::Hold_For_Manual(int index, int task_code, C_VoiceMotor& station) {
  m_pMotorBase->AddNewDelayProcess(index, task_code, 1, &station);
  m_pMotorBase->LoopPaused = 1;
  SetCtrlWindowText(Id(index, panel_id::Measure), Measure_Manual_Caption);
}

void C_ORS_Dlg::Measure_By_Hand(int index, C_VoiceMotor& station) {
  station.Test_Force[0] = station.Val_Force_Set[0].Get();
  Hold_For_Manual(index, Task_Measure, station);
}

void C_ORS_Dlg::Return_Probe(int index, C_VoiceMotor& station) {
  m_pMotorBase->AddNewDelayProcess(index, Task_Force_Back, 1, &station);
  m_pMotorBase->LoopPaused = 0;
  SetCtrlWindowText(Id(index, panel_id::Measure), Measure_Caption);
}

C_ORS_Dlg::C_End C_ORS_Dlg::Test_Two_Forces(int index, C_VoiceMotor& station) {
  C_Small_Dialog dialog;
  dialog.Number(L"设定推力1(g)", station.Val_Force_Set[0], station.Ranges_Of(&station.Val_Force_Set[0]).panel)
      .Number(L"设定推力2(g)", station.Val_Force_Set[1], station.Ranges_Of(&station.Val_Force_Set[1]).panel);
  if (!dialog.Ask()) return C_End::Leave;
  station.Test_Force[0] = station.Val_Force_Set[0].Get();
  station.Test_Force[1] = station.Val_Force_Set[1].Get();
  Hold_For_Manual(index, Task_Force_Difference, station);
  return C_End::Save;
}

// Required: the caption has a lone bracket; hosts that work the panel find the entry by it.
void C_ORS_Dlg::Edit_Point_Count() {
  C_Small_Dialog().Number(L"显示结果数量)", m_pMotorBase->PlotPointNum, {10, 50000}).Ask();
}

// All boxes start unticked whatever the card holds, and the mask is sent in any case: a cancel clears it.
void C_ORS_Dlg::Set_Automatic_Stations() {
  const int count = m_pMotorBase->StationCount;
  std::vector<int> ticks(static_cast<size_t>(count));
  C_Small_Dialog dialog;
  for (int i = 0; i < count; ++i) dialog.Tick(Format_Text("自动测量电机%d", i + 1), ticks[static_cast<size_t>(i)]);
  dialog.Ask();
  uint32_t mask = 0;
  for (int i = 0; i < std::min(count, Mask_Bits); ++i)
    mask |= static_cast<uint32_t>(ticks[static_cast<size_t>(i)]) << i;
  m_pMotorBase->IoCard.Set_Sim_Mask(mask);
}

void C_ORS_Dlg::Set_Automatic_Speed() {
  int rate = 1;
  C_Small_Dialog().Number(L"自动测量速度", rate, {1, 7}).Ask();
  m_pMotorBase->IoCard.Set_Sim_Rate(rate);
}

}  // namespace orsanta
