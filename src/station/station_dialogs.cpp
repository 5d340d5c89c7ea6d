// The small dialogs of a station: one edit each. Whether a Set_ dialog was confirmed is not looked at, since a cancel
// leaves the bound value as it is.
#include "station/station_parameters.h"

namespace orsanta {

bool C_Station_Parameters::Edit_On_Panel(const wchar_t* caption, Shared<double>& parameter, int digits) {
  return C_Small_Dialog().Number(caption, parameter, Ranges_Of(&parameter).panel, digits).Ask();
}

void C_Station_Parameters::Set_Force_Dlg(int index) {
  if (index == 0 || index == 1) {
    double shown = Val_Force_Set[index] - Val_Force_OffSet;
    C_Small_Dialog().Number(L"设定推力(g)", shown, Ranges_Of(&Val_Force_Set[index]).dialog).Ask();
    Val_Force_Set[index] = shown + Val_Force_OffSet;
    return;
  }
  const double shown = Val_Force_Set[0] - Val_Force_OffSet;
  Edit_In_Dialog(L"设定推力修正值(g)", Val_Force_OffSet);
  Val_Force_Set[0] = shown + Val_Force_OffSet;
}

void C_Station_Parameters::Set_Speed_Dlg(int index) {
  MY_ASSERT(index >= 0 && index <= 2);
  Edit_In_Dialog(L"设定速度（mm/s）", Val_Speed_Set[index]);
}

void C_Station_Parameters::Set_Acc_Dlg(int index) {
  MY_ASSERT(index == 0 || index == 1);
  Edit_In_Dialog(L"设定加速度（mm/s^2）", Val_Acc_Set[index]);
}

void C_Station_Parameters::Set_HoldTime_Dlg(int index) {
  MY_ASSERT(index == 0 || index == 1);
  Edit_In_Dialog(L"设定推力保持时间（ms）", Val_HoldTime_Set[index]);
}

}  // namespace orsanta
