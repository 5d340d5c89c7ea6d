#include "ui/panel.h"

#include "host/motor_base.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"
#include "ui/plot_task.h"
#include "ui/station_board.h"

namespace orsanta {

namespace {

constexpr wchar_t Password_Store[] = L"pw_file.dat";
constexpr int Refresh_Ms = 100;  // of a status display
constexpr int Io_Card_Can_Id = 15;

struct C_Button {
  int sub_id;
  const wchar_t* caption;
};

constexpr C_Button Station_Buttons[] = {
    {panel_id::Set_Force, L"设定推力"},          {panel_id::Set_Speed, L"设定速度"},
    {panel_id::Set_Up_Speed, L"设定回位速度"},   {panel_id::Set_Acceleration, L"设定加速度"},
    {panel_id::Reference_Plane, L"基准面标定"},  {panel_id::Block_Size, L"基准块尺寸"},
    {panel_id::Measure_Slowly, L"首次慢速测量"}, {panel_id::Measure, L"测量"},
    {panel_id::Return_Probe, L"测量回位"},       {panel_id::Two_Forces, L"双力位移测试"},
};

constexpr C_Button Global_Buttons[] = {
    {panel_id::Point_Count, L"显示结果数量"},
    {panel_id::Automatic_Stations, L"自动测量设置"},
    {panel_id::Automatic_Speed, L"自动测量速度"},
};

// The day of the build as "Dec 15 2020".
constexpr wchar_t Build_Date[] = L"" __DATE__;

}  // namespace

C_ORS_Dlg::C_ORS_Dlg(C_VoiceMotorBase* base) : m_pMotorBase(base) {
  LoadAllClassParameterFromHashOpt(Password_Store, 1);
  for (int i = 0; i < base->StationCount; ++i) Add_Station_Column(i);
  for (const C_Button& button : Global_Buttons) Add_Panel_Button(button.caption, base->StationCount, button.sub_id);
  for (int i = 0; i < base->StationCount; ++i) base->PlotWorkers.Add(new plot_task(base, i));
  if (m_StateText.GetSize() < 1) return;
  ShowStations();
  m_Board = std::make_unique<C_Station_Board>(*base);
  SetCaptionName((std::wstring(L"Orsanta控制系统 ") + Build_Date).c_str());
  DoParameterDlg(1, 0, 1.0F, 0, nullptr, nullptr, 1);
}

C_ORS_Dlg::~C_ORS_Dlg() {
  for (plot_task* worker : m_pMotorBase->PlotWorkers) worker->Ask_To_End();
  for (int i = 0; i < m_pMotorBase->StationCount; ++i) {
    delete m_pMotorBase->PlotWorkers[0];
    m_pMotorBase->PlotWorkers.DelStartData();
  }
}

void C_ORS_Dlg::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) {
  {
    const C_Store_Class entered(*this, data);
    Process_Member("password_str", password_str, data);
    Process_Member("auto_lock_password_time_s", auto_lock_password_time_s, data);
  }
  CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
}

void C_ORS_Dlg::Add_Panel_Button(const wchar_t* caption, int column, int sub_id) {
  AddButton(caption, column, C_Small_Dialog::Control_Width, 1, Id(column, sub_id), this, 1, 1.0F);
}

void C_ORS_Dlg::Add_Station_Column(int index) {
  const int can_id = m_pMotorBase->ResourceList[index].CanID;
  const std::wstring title = Format_Text("微米仪%d参数", can_id).Text();
  SetColumnStation(index, can_id);
  m_StateText.Add(title);
  m_ResultText.Add(title);
  if (m_pMotorBase->StationList[index]->Get_Motor_Ready() != 0) {
    for (const C_Button& button : Station_Buttons) Add_Panel_Button(button.caption, index, button.sub_id);
    for (const int sub_id : {panel_id::Measure, panel_id::Return_Probe}) SetMainButton(Id(index, sub_id));
    AddDataDynamicDisp(Format_Text("微米仪%d状态", can_id), index, C_Small_Dialog::Control_Width, 2, this, Refresh_Ms,
                       Id(index, panel_id::Status), 1, 1.5F);
    Add_Panel_Button(L"高级功能", index, panel_id::Advanced);
    m_pMotorBase->IoCard.Map_Io(m_pMotorBase->StationCount, Io_Card_Can_Id);
    m_pMotorBase->IoCard.Set_Sim_Mask(0);
    m_pMotorBase->OnForceBackOk(index + 1);
  } else {
    AddBlank(index, C_Small_Dialog::Control_Width, 1, 1, 0, nullptr);
    Message_Box(Format_Text("CanID：%d的设备没有连接", can_id));
  }
}

// Refreshes one status display, ten times a second: reads members of the station and nothing of its drive.
void C_ORS_Dlg::OnCtrlDynamicDisp(int id, std::wstring& text, long) {
  const int index = id / panel_id::Station_Span;
  C_VoiceMotor& station = *m_pMotorBase->StationList[index];
  Count_Toward_Lock();
  if (station.Take_Test_Finish_Panel() == 1) {
    // The display itself follows at the next refresh. A failed cycle empties the line.
    m_ResultText[index] =
        station.Ans_Valid != 0 ? Format_Text("%3.4f  mm\r\n", station.Test_Ans.Get()).Text() : std::wstring();
    return;
  }
  if (id % panel_id::Station_Span != panel_id::Status) return;
  m_StateText[index] = Format_Text("%d", station.Get_Force_Back_Finish()).Text();
  text = m_ResultText[index] + m_StateText[index];
}

void C_ORS_Dlg::OnCtrlButton(int id, long, long) {
  m_LockCounter = 0;  // any press is activity, a refused one too
  const int index = id / panel_id::Station_Span;
  const int sub_id = id % panel_id::Station_Span;
  C_VoiceMotor* station = index < m_pMotorBase->StationCount ? m_pMotorBase->StationList[index] : nullptr;
  if (sub_id == panel_id::Advanced && !Pass_Service_Gate()) return;
  const bool is_free = sub_id >= panel_id::Measure_Slowly && sub_id <= panel_id::Two_Forces;
  if (!is_free && !Pass_Operator_Gate()) return;
  if (Carry_Out(index, sub_id, station) == C_End::Leave || station == nullptr) return;
  station->Save();
  SaveAllClassParameterToHashOpt(Password_Store, 1);
}

C_ORS_Dlg::C_End C_ORS_Dlg::Carry_Out(int index, int sub_id, C_VoiceMotor* station) {
  switch (sub_id) {
    case panel_id::Point_Count:
      Edit_Point_Count();
      return C_End::Save;
    case panel_id::Automatic_Stations:
      Set_Automatic_Stations();
      return C_End::Save;
    case panel_id::Automatic_Speed:
      Set_Automatic_Speed();
      return C_End::Save;
    default:
      break;
  }
  if (station == nullptr) return C_End::Leave;
  switch (sub_id) {
    case panel_id::Set_Force:
      station->Set_Force_Dlg(0);
      break;
    case panel_id::Set_Speed:
      station->Set_Speed_Dlg(0);
      break;
    case panel_id::Set_Up_Speed:
      station->Set_UpSpeed_Dlg();
      break;
    case panel_id::Set_Acceleration:
      Edit_Acceleration(*station);
      break;
    case panel_id::Reference_Plane:
      Correct_Reference_Plane(index, *station);
      break;
    case panel_id::Block_Size:
      station->Edit_On_Panel(L"输入基准块尺寸(mm)", station->Val_Block_Size);
      break;
    case panel_id::Measure_Slowly:
      Measure_Slowly(index, *station);
      break;
    case panel_id::Measure:
      Measure_By_Hand(index, *station);
      break;
    case panel_id::Return_Probe:
      Return_Probe(index, *station);
      break;
    case panel_id::Two_Forces:
      return Test_Two_Forces(index, *station);
    case panel_id::Advanced:
      return Show_Advanced_Dialog(index);
    default:
      Carry_Out_Advanced(index, sub_id, *station);
      break;
  }
  return C_End::Save;
}

}  // namespace orsanta
