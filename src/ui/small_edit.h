// The one-edit dialogs of the panel: a caption, a bound number, its range. Panel thread only.
#pragma once

#include "support/dialog/dialog.h"

namespace orsanta {

constexpr float Control_Width = 10.0F;  // of all controls but the advanced dialog's buttons
constexpr int Few_Digits = 3;
constexpr int All_Digits = 16;

// Runs a dialog of small edits: 1 after a confirmation, 0 after a cancel.
inline int Run_Edits(CParameterInOutDlg& dialog) {
  return dialog.DoParameterDlg(0, 1, 1.0F, 1, nullptr, nullptr, 1);
}

// Runs a dialog with one number edit; value is written at confirmation and only then. T: double or Shared<double>.
template <class T>
int Edit_Number(const wchar_t* caption, T& value, double min, double max, int digits) {
  CParameterInOutDlg dialog;
  dialog.AddDataEditRange(caption, 0, Control_Width, value, min, max, digits, 1, 0, nullptr);
  return Run_Edits(dialog);
}

}  // namespace orsanta
