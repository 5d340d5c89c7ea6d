// C_Station_Parameters: what a station keeps from run to run.
//
// Each parameter is one row of Parameters(), in the order of the store. From the rows run the defaults, the pass over
// the store, the ranges of all entries that edit a parameter, and docs/parameters.md, where units and meanings can be
// read.
//
// Threads. Parameters are read and written by several threads without a lock; the fits of the friction are used in
// passes over the store alone. Dialogs belong to one panel thread.
#pragma once

#include <variant>
#include <vector>

#include "numeric/basis_fit.h"
#include "support/base/array.h"
#include "support/dialog/small_dialog.h"
#include "support/time/shared.h"

namespace orsanta {

// The ranges of the entries that edit a parameter, in its unit. Where there is no such entry both ends are 0.
// Required: those of one parameter may differ; operators know the narrow ones of the panel, callers of the dialogs
// theirs.
struct C_Entry_Ranges {
  C_Range panel = {};        // the panel's own edits and those of its advanced dialog
  C_Range dialog = {};       // the small dialogs below
  C_Range calibration = {};  // the force calibration
};

struct C_Parameter {
  using C_Member = std::variant<Shared<double>*, Shared<float>*, Shared<int>*, double*, CMyArray<double>*,
                                Shared<CMyArray<double>>*>;

  const char* key;  // in the store
  C_Member member;
  double initial;  // its default; an array starts empty
  const char* unit;
  C_Entry_Ranges ranges;
  const char* purpose;
};

class C_Station_Parameters {
 public:
  // Gives every parameter its default.
  C_Station_Parameters();

  std::vector<C_Parameter> Parameters();
  // parameter: where a member with a row stands.
  C_Entry_Ranges Ranges_Of(const void* parameter);

  // 1: the current limit goes out as it is (Val_Run_Negative 0); 0: through its mirror image (Val_Run_Negative 1).
  // Returns 1; any other flag changes nothing and returns 0.
  int Set_RunNegative(int flag);
  // The greatest landing travel in mm, held in single precision.
  void Set_TestDistance(double distance) { test_distance = static_cast<float>(distance); }
  void Get_TestDistance(double& distance) const { distance = test_distance; }
  // The stored positions as a start margin and a key travel, mm. Always 1.
  int Get_Key_Window(double& start_margin, double& key_dis) const;
  // Writes back what Get_Key_Window gives. Required: both arguments are ignored; hosts pass what they have. Always 1.
  int Set_Key_Window(double start_margin, double key_dis);

  // --- Dialogs (station_dialogs.cpp) of one edit each; a cancel leaves the parameter as it is ---

  // With the panel's range. True after a confirmation.
  bool Edit_On_Panel(const wchar_t* caption, Shared<double>& parameter, int digits = C_Small_Dialog::Few_Digits);
  void Set_Force_Dlg(int index);  // 0, 1: a set force; any other: the force correction, with the shown force kept
  void Set_Speed_Dlg(int index);  // 0 to 2
  void Set_UpSpeed_Dlg() { Edit_In_Dialog(L"设定速度（mm/s）", Val_UpSpeed_Set); }
  void Set_Spring_Dlg() { Edit_In_Dialog(L"设定弹簧K值（g/mm）", Val_Spring_K); }
  void Set_Acc_Dlg(int index);  // 0 to 1
  void Set_BeginePoint_Dlg() { Edit_In_Dialog(L"原点偏移（mm）", Val_BeginePoint_offset); }
  void Set_Jerk_Dlg() { Edit_In_Dialog(L"设定加加速度（mm/s^3）", Val_Jerk_Set); }
  void Set_HoldTime_Dlg(int index);  // 0 to 1

  // Forces and the model of them.
  Shared<double> Val_Force_Set[2], Val_Force_OffSet;
  Shared<double> Val_Static_GForce, Val_Force_K, Val_Force_KK;
  Shared<CMyArray<double>> m_P;
  Shared<double> Val_mark_pos, Val_Spring_K;
  FitData Val_Pos_Friction[2];
  Shared<double> Val_Head_mg;
  // The force calibration.
  Shared<double> Val_Correction_MaxI, Val_Correction_MinI;
  Shared<int> Val_FC_test_num;
  // Motion.
  Shared<double> Val_Speed_Set[3], Val_UpSpeed_Set, Val_Acc_Set[2], Val_Jerk_Set, Val_HoldTime_Set[2];
  Shared<float> test_distance;
  Shared<double> Val_BeginePoint_offset;
  Shared<double> Val_Pos_Set[3];
  Shared<int> Val_Run_Negative;
  // Result.
  Shared<double> Val_BaseDistance, Val_Block_Size, Val_Error_offset;
  Shared<double> Val_ErrorThreshold, Val_ErrorWindowLen;
  // Sensors.
  Shared<double> Val_SensorScale, Val_TempSensorCanID;
  Shared<int> Val_Sendback_Frq;

 private:
  void Edit_In_Dialog(const wchar_t* caption, Shared<double>& parameter) {
    C_Small_Dialog().Number(caption, parameter, Ranges_Of(&parameter).dialog).Ask();
  }
};

}  // namespace orsanta
