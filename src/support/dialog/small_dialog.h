// C_Small_Dialog: a dialog of a few entries in one column, built and shown in one expression:
//
//   if (C_Small_Dialog().Number(L"设定推力(g)", force, {0.0, 1000.0}).Tick(L"电机反转", turned).Ask()) ...
//
// Bound variables are written at the confirmation and only then. They must outlive the dialog.
#pragma once

#include <string>
#include <type_traits>

#include "support/dialog/dialog.h"

namespace orsanta {

// From the least to the greatest value, both included.
struct C_Range {
  double min = 0.0;
  double max = 0.0;

  // The same range of a value that is shown multiplied by the factor, which is above 0.
  C_Range Times(double factor) const { return {min * factor, max * factor}; }
};

class C_Small_Dialog {
 public:
  static constexpr float Control_Width = 10.0F;
  static constexpr int Few_Digits = 3;
  static constexpr int All_Digits = 16;

  // A number in the range. T: double or int, or a Shared of one; digits: decimals of a double.
  template <class T>
  C_Small_Dialog& Number(const wchar_t* caption, T& value, C_Range range, int digits = Few_Digits) {
    if constexpr (std::is_same_v<T, int> || std::is_same_v<T, Shared<int>>) {
      m_Dialog.AddDataEditRange(caption, 0, Control_Width, value, range.min, range.max, 1, 0, nullptr);
    } else {
      m_Dialog.AddDataEditRange(caption, 0, Control_Width, value, range.min, range.max, digits, 1, 0, nullptr);
    }
    return *this;
  }
  // A tick box over 0 and 1. T: int or Shared<int>.
  template <class T>
  C_Small_Dialog& Tick(const wchar_t* caption, T& value) {
    m_Dialog.AddDataEditBool(caption, 0, Control_Width, value, 1, 0, nullptr);
    return *this;
  }
  // A line of text, or a whole number without bounds. T: std::wstring or int.
  template <class T>
  C_Small_Dialog& Entry(const wchar_t* caption, T& value) {
    m_Dialog.AddDataEdit(caption, 0, Control_Width, value, 1, 0, nullptr);
    return *this;
  }
  // A text to read.
  C_Small_Dialog& Words(const wchar_t* caption, std::wstring& text) {
    m_Dialog.AddDataDisp(caption, 0, Control_Width, text, 1, 1, 0, nullptr);
    return *this;
  }
  // A list; selected is the place, from 0.
  C_Small_Dialog& List(const wchar_t* caption, const CSmartPointer<CMyArray<std::wstring>, 0>& items, int& selected) {
    m_Dialog.AddDropdownList(caption, 0, Control_Width, items, selected, 1, 0, nullptr);
    return *this;
  }

  // Shows it: true after a confirmation, false after a cancel.
  bool Ask() { return m_Dialog.DoParameterDlg(0, 1, 1.0F, 1, nullptr, nullptr, 1) != 0; }

 private:
  CParameterInOutDlg m_Dialog;
};

}  // namespace orsanta
