// C_ORS_Dlg: the operator's panel. One column of commands and a status display for each station, and one column of
// commands for all.
//
// The constructor builds the panel and runs it: it returns when the operator has closed it. Everything of the panel,
// callbacks included, runs on the thread that constructs it. The panel holds no measured data; it works on the
// supervisor and the stations, whose loop and lanes go on meanwhile.
//
// Every button of the panel and of the advanced dialog comes to OnCtrlButton with the id station index * 50 + command.
// The commands stand in panel_commands.cpp and advanced_commands.cpp, the two password gates and the auto-lock in
// panel_gates.cpp. The advanced dialog runs inside a press, so that OnCtrlButton is entered again from within.
//
// Store: "pw_file.dat" holds the password in clear text and the auto-lock time. It keeps operators on the floor from
// settings by mistake, and no one else.
#pragma once

#include <memory>
#include <string>

#include "support/base/array.h"
#include "support/dialog/dialog.h"
#include "support/store/store.h"
#include "ui/panel_ids.h"

namespace orsanta {

class C_Station_Board;
class C_VoiceMotor;
class C_VoiceMotorBase;

class C_ORS_Dlg : public CParameterInOutDlg, public CParameterInOutDlgInterface, public CAutoSaveClassData2 {
 public:
  // base: the supervisor, which must outlive the panel. With no stations there is no panel, and the call returns at
  // once.
  explicit C_ORS_Dlg(C_VoiceMotorBase* base);
  ~C_ORS_Dlg() override;

  void OnCtrlButton(int id, long word1, long word2) override;
  void OnCtrlDynamicDisp(int id, std::wstring& text, long word) override;

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override;

 private:
  // How a command ended: a command that was refused or given up saves nothing.
  enum class C_End { Save, Leave };

  // panel.cpp
  void Add_Station_Column(int index);
  void Add_Panel_Button(const wchar_t* caption, int column, int sub_id);
  C_End Carry_Out(int index, int sub_id, C_VoiceMotor* station);
  int Id(int index, int sub_id) const { return index * panel_id::Station_Span + sub_id; }

  // panel_gates.cpp
  bool Pass_Service_Gate();
  bool Pass_Operator_Gate();
  void Count_Toward_Lock();

  // panel_commands.cpp
  void Edit_Acceleration(C_VoiceMotor& station);
  void Correct_Reference_Plane(int index, C_VoiceMotor& station);
  void Measure_Slowly(int index, C_VoiceMotor& station);
  void Measure_By_Hand(int index, C_VoiceMotor& station);
  void Return_Probe(int index, C_VoiceMotor& station);
  C_End Test_Two_Forces(int index, C_VoiceMotor& station);
  void Edit_Point_Count();
  void Set_Automatic_Stations();
  void Set_Automatic_Speed();
  void Measure_And_Return(int index, C_VoiceMotor& station);
  void Hold_For_Manual(int index, int task_code, C_VoiceMotor& station);

  // advanced_commands.cpp
  C_End Show_Advanced_Dialog(int index);
  void Carry_Out_Advanced(int index, int sub_id, C_VoiceMotor& station);
  void Show_Chart(int index, int kind);
  void Clear_Charted_Data();
  void Edit_Settling_Time(C_VoiceMotor& station);
  void Change_Serial_Link(C_VoiceMotor& station);
  void Edit_Direction(C_VoiceMotor& station);
  void Edit_Test_Distance(C_VoiceMotor& station);
  void Edit_Sensor_Scale(C_VoiceMotor& station);
  void Check_Linearity(int index, C_VoiceMotor& station);

  CMyArray<std::wstring> m_StateText;   // the status half of each station's display
  CMyArray<std::wstring> m_ResultText;  // the result half
  C_VoiceMotorBase* m_pMotorBase;
  std::unique_ptr<C_Station_Board> m_Board;
  int m_AdvanceDlgOpen = 0;  // 1 while the advanced dialog is open
  bool m_BeUnlocked = false;
  int m_LockCounter = 0;  // milliseconds since the last press, as the displays count them
  int auto_lock_password_time_s = 60;
  std::wstring password_str = L"mocha";
};

}  // namespace orsanta
