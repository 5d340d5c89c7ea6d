// CParameterInOutDlg: windows made from a list of controls, each with a caption and a bound variable.
//
// A program makes an object, adds controls, and runs it with DoParameterDlg. Callbacks run on the thread that called
// DoParameterDlg, also for dialogs of that thread further down, which stay alive while this one is open. Bound
// variables are written at confirmation and only then; an entry that is out of range or no number is refused.
//
// The object is used by one thread and for one run. SetCtrlWindowText may be called from a callback.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/base/array.h"
#include "support/base/smart_pointer.h"
#include "support/dialog/front.h"
#include "support/time/shared.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Dialog_Run;

// The callback interface: a button was pressed, a display asks for its text. The numbered events are reserved and never
// come; they hold their places in the table.
class CParameterInOutDlgInterface {
 public:
  virtual void OnCtrlButton(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved2(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved3(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved4(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved5(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved6(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved7(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved8(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved9(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnCtrlDynamicDisp(int /*id*/, std::wstring& /*text*/, long /*word*/) {}
  virtual void OnReserved11(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved12(int /*id*/, long /*word1*/, long /*word2*/) {}
  virtual void OnReserved13(int /*id*/, long /*word*/) {}
  virtual void OnReserved14(long /*word*/) {}
  virtual int OnReserved15(int /*value1*/, int value2) { return value2; }
  virtual ~CParameterInOutDlgInterface() = default;
};

class CParameterInOutDlg_Base : private C_Uncopied {
 public:
  CParameterInOutDlg_Base();
  virtual ~CParameterInOutDlg_Base();

  // Arguments that recur. caption: shown on or beside the control. column: the control goes to the bottom of that
  // column. width: size in the builder's units. rows: height. id: number of the control in callbacks; 0 is one too.
  // callback: may be null.

  // A press calls OnCtrlButton(id).
  void AddButton(const wchar_t* caption, int column, float width, int rows, int id,
                 CParameterInOutDlgInterface* callback, int reserved, float text_scale);
  // A text that asks OnCtrlDynamicDisp(id, text) every period_ms; a callback that leaves the text as it is keeps it.
  void AddDataDynamicDisp(const wchar_t* caption, int column, float width, int rows,
                          CParameterInOutDlgInterface* callback, int period_ms, int id, int reserved, float text_scale);
  void AddDataDisp(const wchar_t* caption, int column, float width, std::wstring& text, int reserved, int rows, int id,
                   CParameterInOutDlgInterface* callback);
  void AddDataEdit(const wchar_t* caption, int column, float width, std::wstring& value, int rows, int id,
                   CParameterInOutDlgInterface* callback);
  void AddDataEdit(const wchar_t* caption, int column, float width, int& value, int rows, int id,
                   CParameterInOutDlgInterface* callback);
  // A tick box over 0 and 1.
  void AddDataEditBool(const wchar_t* caption, int column, float width, int& value, int rows, int id,
                       CParameterInOutDlgInterface* callback);
  void AddDataEditBool(const wchar_t* caption, int column, float width, Shared<int>& value, int rows, int id,
                       CParameterInOutDlgInterface* callback);
  // A number between min and max, both included. digits: decimals.
  void AddDataEditRange(const wchar_t* caption, int column, float width, double& value, double min, double max,
                        int digits, int rows, int id, CParameterInOutDlgInterface* callback);
  void AddDataEditRange(const wchar_t* caption, int column, float width, Shared<double>& value, double min, double max,
                        int digits, int rows, int id, CParameterInOutDlgInterface* callback);
  void AddDataEditRange(const wchar_t* caption, int column, float width, int& value, double min, double max, int rows,
                        int id, CParameterInOutDlgInterface* callback);
  void AddDataEditRange(const wchar_t* caption, int column, float width, Shared<int>& value, double min, double max,
                        int rows, int id, CParameterInOutDlgInterface* callback);
  // A list; selected is the place, from 0. A place outside the list shows as 0.
  void AddDropdownList(const wchar_t* caption, int column, float width, CSmartPointer<CMyArray<std::wstring>, 0> items,
                       int& selected, int rows, int id, CParameterInOutDlgInterface* callback);
  void AddBlank(int column, float width, int rows, int reserved, int id, CParameterInOutDlgInterface* callback);

  // Without a title the dialog bears what its thread is working on (support/dialog/subject.h): mostly the button whose
  // press opened it, with its station.
  void SetCaptionName(const wchar_t* title);
  // The buttons of the column are commands of the station with that number.
  void SetColumnStation(int column, int station);
  // The button with that id is one that is pressed all day, and is to be found at a glance.
  void SetMainButton(int id);
  // The stations at a glance (C_Front::Show_Stations) stand above all else.
  void ShowStations();

  // Shows the dialog and returns when it closes: 1 after a confirmation, 0 after a cancel.
  // confirms: 1 for a dialog with a confirmation, which is modal to the windows under it; 0 for one of buttons only.
  // The other arguments are kept for the callers' sake and have no effect.
  int DoParameterDlg(int reserved1, int reserved2, float reserved3, int confirms, CParameterInOutDlgInterface* callback,
                     void* parent, int reserved4);

  // Sets the visible text of the control with that id, reads what the program has set last: what an operator types is
  // known at confirmation only. Returns 1, or 0 when there is no such control.
  int SetCtrlWindowText(int id, const std::wstring& text);
  int GetCtrlWindowText(int id, std::wstring& text);

 private:
  std::unique_ptr<C_Dialog_Run> m_Run;  // controls and state
};

// The class that programs use and derive from.
class CParameterInOutDlg : public CParameterInOutDlg_Base {};

// For commands that wait: refreshes those displays of the calling thread's dialogs that are due.
void Refresh_Displays();
// For commands that can do nothing: says why, in one line at the button that was pressed.
void Refuse_Press(const std::wstring& reason);

}  // namespace orsanta
