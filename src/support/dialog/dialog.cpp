#include "support/dialog/dialog.h"

#include "support/dialog/dialog_entry.h"
#include "support/dialog/dialog_run.h"

namespace orsanta {

namespace {

C_Bound_Control Make_Control(C_Control_Kind kind, const wchar_t* caption, int column, float width, int rows, int id,
                             CParameterInOutDlgInterface* callback) {
  C_Bound_Control control;
  control.model.kind = kind;
  control.model.caption = caption != nullptr ? caption : L"";
  control.model.column = column;
  control.model.width = width;
  control.model.rows = rows;
  control.id = id;
  control.callback = callback;
  return control;
}

// Fills in a number edit over a variable of any of the types that read and assign like `Number`.
// An edit that still shows its opening text stands for the exact value of that moment, which may have more decimals
// than are shown.
template <class Number, class Variable>
void Bind_Number(C_Bound_Control& control, Variable& value) {
  const C_Control_Model model = control.model;  // with range and opening text
  const Number opened = value;
  control.check = [model, opened, &value](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    const auto in_range = [&model](Number number) {
      return !model.has_range || (number >= model.min && number <= model.max);
    };
    Number typed{};
    if (entry.text == model.text && in_range(opened)) {
      typed = opened;
    } else if (!Read_Typed(entry.text, typed)) {
      const std::wstring reason = No_Number_Reason(model.kind == C_Control_Kind::Integer_Edit);
      return model.has_range ? reason + L"," + Range_Reason(model.min, model.max) : reason;
    } else if (!in_range(typed)) {
      return Range_Reason(model.min, model.max);
    }
    write = [typed, &value] { value = typed; };
    return L"";
  };
}

void Set_Range(C_Control_Model& model, double min, double max) {
  model.has_range = true;
  model.min = min;
  model.max = max;
}

template <class Variable>
C_Bound_Control Make_Check_Box(C_Bound_Control control, Variable& value) {
  control.model.selected = value != 0 ? 1 : 0;
  control.check = [&value](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    write = [ticked = entry.selected != 0, &value] { value = ticked ? 1 : 0; };
    return L"";
  };
  return control;
}

template <class Variable>
C_Bound_Control Make_Number_Edit(C_Bound_Control control, Variable& value, double min, double max, int digits) {
  Set_Range(control.model, min, max);
  control.model.digits = digits;
  control.model.text = Number_Text(value, digits);
  Bind_Number<double>(control, value);
  return control;
}

template <class Variable>
C_Bound_Control Make_Integer_Edit(C_Bound_Control control, Variable& value) {
  control.model.text = std::to_wstring(static_cast<int>(value));
  Bind_Number<int>(control, value);
  return control;
}

}  // namespace

CParameterInOutDlg_Base::CParameterInOutDlg_Base() : m_Run(std::make_unique<C_Dialog_Run>()) {}
CParameterInOutDlg_Base::~CParameterInOutDlg_Base() = default;

void CParameterInOutDlg_Base::AddButton(const wchar_t* caption, int column, float width, int rows, int id,
                                        CParameterInOutDlgInterface* callback, int /*reserved*/, float text_scale) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Button, caption, column, width, rows, id, callback);
  control.model.text_scale = text_scale;
  m_Run->controls.push_back(std::move(control));
}

void CParameterInOutDlg_Base::AddDataDynamicDisp(const wchar_t* caption, int column, float width, int rows,
                                                 CParameterInOutDlgInterface* callback, int period_ms, int id,
                                                 int /*reserved*/, float text_scale) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Dynamic_Display, caption, column, width, rows, id, callback);
  control.model.text_scale = text_scale;
  control.period_ms = period_ms;
  m_Run->controls.push_back(std::move(control));
}

void CParameterInOutDlg_Base::AddDataDisp(const wchar_t* caption, int column, float width, std::wstring& text,
                                          int /*reserved*/, int rows, int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Text_Display, caption, column, width, rows, id, callback);
  control.model.text = text;
  m_Run->controls.push_back(std::move(control));
}

void CParameterInOutDlg_Base::AddDataEdit(const wchar_t* caption, int column, float width, std::wstring& value,
                                          int rows, int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Text_Edit, caption, column, width, rows, id, callback);
  control.model.text = value;
  control.check = [&value](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    write = [text = entry.text, &value] { value = text; };
    return L"";
  };
  m_Run->controls.push_back(std::move(control));
}

void CParameterInOutDlg_Base::AddDataEdit(const wchar_t* caption, int column, float width, int& value, int rows, int id,
                                          CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(
      Make_Integer_Edit(Make_Control(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback), value));
}

void CParameterInOutDlg_Base::AddDataEditBool(const wchar_t* caption, int column, float width, int& value, int rows,
                                              int id, CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(
      Make_Check_Box(Make_Control(C_Control_Kind::Check_Box, caption, column, width, rows, id, callback), value));
}

void CParameterInOutDlg_Base::AddDataEditBool(const wchar_t* caption, int column, float width, Shared<int>& value,
                                              int rows, int id, CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(
      Make_Check_Box(Make_Control(C_Control_Kind::Check_Box, caption, column, width, rows, id, callback), value));
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, double& value,
                                               double min, double max, int digits, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(Make_Number_Edit(
      Make_Control(C_Control_Kind::Number_Edit, caption, column, width, rows, id, callback), value, min, max, digits));
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, Shared<double>& value,
                                               double min, double max, int digits, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(Make_Number_Edit(
      Make_Control(C_Control_Kind::Number_Edit, caption, column, width, rows, id, callback), value, min, max, digits));
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, int& value, double min,
                                               double max, int rows, int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback);
  Set_Range(control.model, min, max);
  m_Run->controls.push_back(Make_Integer_Edit(std::move(control), value));
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, Shared<int>& value,
                                               double min, double max, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback);
  Set_Range(control.model, min, max);
  m_Run->controls.push_back(Make_Integer_Edit(std::move(control), value));
}

void CParameterInOutDlg_Base::AddDropdownList(const wchar_t* caption, int column, float width,
                                              CSmartPointer<CMyArray<std::wstring>, 0> items, int& selected, int rows,
                                              int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control control = Make_Control(C_Control_Kind::Dropdown, caption, column, width, rows, id, callback);
  if (items) control.model.items.assign(items->begin(), items->end());
  const int count = static_cast<int>(control.model.items.size());
  control.model.selected = selected >= 0 && selected < count ? selected : 0;
  control.check = [count, &selected](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    if (entry.selected < 0 || entry.selected >= count) return L"请选择一项";
    write = [place = entry.selected, &selected] { selected = place; };
    return L"";
  };
  m_Run->controls.push_back(std::move(control));
}

void CParameterInOutDlg_Base::AddBlank(int column, float width, int rows, int /*reserved*/, int id,
                                       CParameterInOutDlgInterface* callback) {
  m_Run->controls.push_back(Make_Control(C_Control_Kind::Blank, L"", column, width, rows, id, callback));
}

void CParameterInOutDlg_Base::SetCaptionName(const wchar_t* title) {
  m_Run->title = title != nullptr ? title : L"";
}

int CParameterInOutDlg_Base::DoParameterDlg(int /*reserved1*/, int /*reserved2*/, float /*reserved3*/, int confirms,
                                            CParameterInOutDlgInterface* /*callback*/, void* /*parent*/,
                                            int /*reserved4*/) {
  return m_Run->Run(confirms != 0);
}

int CParameterInOutDlg_Base::SetCtrlWindowText(int id, const std::wstring& text) {
  return m_Run->Set_Text(id, text);
}

int CParameterInOutDlg_Base::GetCtrlWindowText(int id, std::wstring& text) {
  return m_Run->Get_Text(id, text);
}

}  // namespace orsanta
