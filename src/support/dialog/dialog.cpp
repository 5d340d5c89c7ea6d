#include "support/dialog/dialog.h"

#include "support/dialog/dialog_entry.h"
#include "support/dialog/dialog_run.h"
#include "support/dialog/dialog_thread.h"

namespace orsanta {

namespace {

void Set_Range(C_Control_Model& model, double min, double max) {
  model.has_range = true;
  model.min = min;
  model.max = max;
}

template <class Variable>
void Bind_Check_Box(C_Bound_Control& control, Variable& value) {
  control.model.selected = value != 0 ? 1 : 0;
  control.check = [&value](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    write = [ticked = entry.selected != 0, &value] { value = ticked ? 1 : 0; };
    return L"";
  };
}

// Binds an edit, whose range and opening text are set, to a variable that reads and assigns like `Number`. An edit that
// still shows its opening text has the exact value of that moment, which may have more decimals than are shown.
template <class Number, class Variable>
void Bind_Number(C_Bound_Control& control, Variable& value) {
  const C_Control_Model model = control.model;
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

template <class Variable>
void Bind_Double(C_Bound_Control& control, Variable& value, double min, double max, int digits) {
  Set_Range(control.model, min, max);
  control.model.digits = digits;
  control.model.text = Number_Text(value, digits);
  Bind_Number<double>(control, value);
}

template <class Variable>
void Bind_Integer(C_Bound_Control& control, Variable& value) {
  control.model.text = std::to_wstring(static_cast<int>(value));
  Bind_Number<int>(control, value);
}

}  // namespace

CParameterInOutDlg_Base::CParameterInOutDlg_Base() : m_Run(std::make_unique<C_Dialog_Run>()) {}
CParameterInOutDlg_Base::~CParameterInOutDlg_Base() = default;

void CParameterInOutDlg_Base::AddButton(const wchar_t* caption, int column, float width, int rows, int id,
                                        CParameterInOutDlgInterface* callback, int /*reserved*/, float text_scale) {
  m_Run->Add(C_Control_Kind::Button, caption, column, width, rows, id, callback).model.text_scale = text_scale;
}

void CParameterInOutDlg_Base::AddDataDynamicDisp(const wchar_t* caption, int column, float width, int rows,
                                                 CParameterInOutDlgInterface* callback, int period_ms, int id,
                                                 int /*reserved*/, float text_scale) {
  C_Bound_Control& control = m_Run->Add(C_Control_Kind::Dynamic_Display, caption, column, width, rows, id, callback);
  control.model.text_scale = text_scale;
  control.period_ms = period_ms;
}

void CParameterInOutDlg_Base::AddDataDisp(const wchar_t* caption, int column, float width, std::wstring& text,
                                          int /*reserved*/, int rows, int id, CParameterInOutDlgInterface* callback) {
  m_Run->Add(C_Control_Kind::Text_Display, caption, column, width, rows, id, callback).model.text = text;
}

void CParameterInOutDlg_Base::AddDataEdit(const wchar_t* caption, int column, float width, std::wstring& value,
                                          int rows, int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control& control = m_Run->Add(C_Control_Kind::Text_Edit, caption, column, width, rows, id, callback);
  control.model.text = value;
  control.check = [&value](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    write = [text = entry.text, &value] { value = text; };
    return L"";
  };
}

void CParameterInOutDlg_Base::AddDataEdit(const wchar_t* caption, int column, float width, int& value, int rows, int id,
                                          CParameterInOutDlgInterface* callback) {
  Bind_Integer(m_Run->Add(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback), value);
}

void CParameterInOutDlg_Base::AddDataEditBool(const wchar_t* caption, int column, float width, int& value, int rows,
                                              int id, CParameterInOutDlgInterface* callback) {
  Bind_Check_Box(m_Run->Add(C_Control_Kind::Check_Box, caption, column, width, rows, id, callback), value);
}

void CParameterInOutDlg_Base::AddDataEditBool(const wchar_t* caption, int column, float width, Shared<int>& value,
                                              int rows, int id, CParameterInOutDlgInterface* callback) {
  Bind_Check_Box(m_Run->Add(C_Control_Kind::Check_Box, caption, column, width, rows, id, callback), value);
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, double& value,
                                               double min, double max, int digits, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  Bind_Double(m_Run->Add(C_Control_Kind::Number_Edit, caption, column, width, rows, id, callback), value, min, max,
              digits);
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, Shared<double>& value,
                                               double min, double max, int digits, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  Bind_Double(m_Run->Add(C_Control_Kind::Number_Edit, caption, column, width, rows, id, callback), value, min, max,
              digits);
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, int& value, double min,
                                               double max, int rows, int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control& control = m_Run->Add(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback);
  Set_Range(control.model, min, max);
  Bind_Integer(control, value);
}

void CParameterInOutDlg_Base::AddDataEditRange(const wchar_t* caption, int column, float width, Shared<int>& value,
                                               double min, double max, int rows, int id,
                                               CParameterInOutDlgInterface* callback) {
  C_Bound_Control& control = m_Run->Add(C_Control_Kind::Integer_Edit, caption, column, width, rows, id, callback);
  Set_Range(control.model, min, max);
  Bind_Integer(control, value);
}

void CParameterInOutDlg_Base::AddDropdownList(const wchar_t* caption, int column, float width,
                                              CSmartPointer<CMyArray<std::wstring>, 0> items, int& selected, int rows,
                                              int id, CParameterInOutDlgInterface* callback) {
  C_Bound_Control& control = m_Run->Add(C_Control_Kind::Dropdown, caption, column, width, rows, id, callback);
  if (items) control.model.items.assign(items->begin(), items->end());
  const int count = static_cast<int>(control.model.items.size());
  control.model.selected = selected >= 0 && selected < count ? selected : 0;
  control.check = [count, &selected](const C_Control_Entry& entry, std::function<void()>& write) -> std::wstring {
    if (entry.selected < 0 || entry.selected >= count) return L"请选择一项";
    write = [place = entry.selected, &selected] { selected = place; };
    return L"";
  };
}

void CParameterInOutDlg_Base::AddBlank(int column, float width, int rows, int /*reserved*/, int id,
                                       CParameterInOutDlgInterface* callback) {
  m_Run->Add(C_Control_Kind::Blank, nullptr, column, width, rows, id, callback);
}

void CParameterInOutDlg_Base::SetCaptionName(const wchar_t* title) {
  m_Run->title = title != nullptr ? title : L"";
}

void CParameterInOutDlg_Base::SetColumnStation(int column, int station) {
  m_Run->stations[column] = station;
}

void CParameterInOutDlg_Base::SetMainButton(int id) {
  for (C_Bound_Control& control : m_Run->controls) control.model.is_main |= control.id == id;
}

void CParameterInOutDlg_Base::ShowStations() {
  m_Run->shows_stations = true;
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

void Refresh_Displays() {
  C_Dialog_Thread::Of_Caller().Refresh_Due();
}

void Refuse_Press(const std::wstring& reason) {
  C_Dialog_Thread::Of_Caller().Refuse_Running(reason);
}

}  // namespace orsanta
