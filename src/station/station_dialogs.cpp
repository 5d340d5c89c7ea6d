// The small parameter dialogs of a station: one edit each. The result of a dialog is not looked at, since a cancel
// leaves the bound value as it is.
#include "station/voice_motor.h"
#include "support/dialog/small_dialog.h"

namespace orsanta {

namespace {

template <class T>
void Edit(const wchar_t* caption, T& value, double min, double max) {
  C_Small_Dialog().Number(caption, value, min, max).Ask();
}

}  // namespace

void C_VoiceMotor::Set_Force_Dlg(int index) {
  if (index == 0 || index == 1) {
    double shown = Val_Force_Set[index] - Val_Force_OffSet;
    Edit(L"设定推力(g)", shown, 0.0, 10000.0);
    Val_Force_Set[index] = shown + Val_Force_OffSet;
    return;
  }
  const double shown = Val_Force_Set[0] - Val_Force_OffSet;
  Edit(L"设定推力修正值(g)", Val_Force_OffSet, -10000.0, 10000.0);
  Val_Force_Set[0] = shown + Val_Force_OffSet;
}

void C_VoiceMotor::Set_Speed_Dlg(int index) {
  MY_ASSERT(index >= 0 && index <= 2);
  Edit(L"设定速度（mm/s）", Val_Speed_Set[index], 0.1, 5000.0);
}

void C_VoiceMotor::Set_UpSpeed_Dlg() {
  Edit(L"设定速度（mm/s）", Val_UpSpeed_Set, 0.1, 5000.0);
}

void C_VoiceMotor::Set_Spring_Dlg() {
  Edit(L"设定弹簧K值（g/mm）", Val_Spring_K, -1000.0, 1000.0);
}

void C_VoiceMotor::Set_Acc_Dlg(int index) {
  MY_ASSERT(index == 0 || index == 1);
  Edit(L"设定加速度（mm/s^2）", Val_Acc_Set[index], 1.0, 200000.0);
}

void C_VoiceMotor::Set_BeginePoint_Dlg() {
  Edit(L"原点偏移（mm）", Val_BeginePoint_offset, -40.0, 40.0);
}

void C_VoiceMotor::Set_Jerk_Dlg() {
  Edit(L"设定加加速度（mm/s^3）", Val_Jerk_Set, 1.0, 1000000000000.0);
}

void C_VoiceMotor::Set_HoldTime_Dlg(int index) {
  MY_ASSERT(index == 0 || index == 1);
  Edit(L"设定推力保持时间（ms）", Val_HoldTime_Set[index], 0.0, 50000.0);
}

}  // namespace orsanta
