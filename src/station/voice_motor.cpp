// What a station is apart from its cycles: its life, its store, its link and the export of its histories.
#include "station/voice_motor.h"

#include <cmath>

#include "drive/interpolation_motor.h"
#include "drive/motor.h"
#include "station/calibration.h"
#include "station/debug_com.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int First_Fault_Read_Ms = 1000;  // for the drive's first fault word

// The local date and time as it stands in file names; the year is left out.
class get_time {
 public:
  std::wstring Time_Text() const {
    const C_Local_Time now = Local_Time_Now();
    return Format_Text("%d月%d日%d时%d分%d秒", now.month, now.day, now.hour, now.minute, now.second).Text();
  }
};

}  // namespace

// The order matters: the loaded parameters decide what is built.
C_VoiceMotor::C_VoiceMotor(int can_id, int axis_num, int aux_axis_num, int controller_num, int /*spare_num*/,
                           int connect_server, int /*reserved1*/, int /*reserved2*/, int /*reserved3*/)
    : CanID(can_id), ControllerNum(controller_num) {
  m_MatData.SetBaseSaveFileDir_SubDir(L"历史数据", 1);
  Own_Store(Store_Name().c_str());
  LoadAllClassParameterFromHashOpt(Store_Name().c_str(), 1);
  Test_Force[0] = Val_Force_Set[0];
  Test_Force[1] = Val_Force_Set[1];
  m_pDebugCom = std::make_shared<C_VoiceDebugCom>(CanID);
  Set_RunNegative(Val_Run_Negative != 0 ? 0 : 1);

  m_pMotor = std::make_unique<C_Kestrune_Motor_test>(CanID, ControllerNum, connect_server);
  Motor_Ready = m_pMotor->Map_Once();
  if (Val_TempSensorCanID != 0.0) Make_Temp_Sensor(axis_num, aux_axis_num);
  if (Motor_Ready == 1) {
    m_pMotor->Set_Acc(Val_Acc_Set[0]);
    m_pMotor->Set_Jerk(Val_Jerk_Set);
    Report_Faults_At_Start();
    // No move before the window was read: on a busy machine its thread may have to wait for its first turn.
    m_pMotor->m_PosWindow.Wait_Pass();
  }
}

void C_VoiceMotor::Make_Temp_Sensor(int axis_num, int aux_axis_num) {
  const double sensor_id = std::trunc(Val_TempSensorCanID);  // a fraction is cut off
  if (!(sensor_id >= 1.0 && sensor_id <= motor_channels::Last_Can_Id)) {
    Message_Box(Format_Text("ID:%d 温度传感器CANID %g 超出范围1到63，请重新设置，没有温度板时设为0", CanID,
                            Val_TempSensorCanID.Get()));
    return;
  }
  m_pTempSensor = std::make_unique<C_Interpolation_Voice_Motor>(static_cast<int>(sensor_id), axis_num, aux_axis_num,
                                                                ControllerNum, 0, -1, -1, -1);
}

// The reader ends before the drive, whose end may close the connection: the next start then maps the board anew, and no
// thread of its windows is left in a host that goes on without the library.
C_VoiceMotor::~C_VoiceMotor() {
  Save();
  m_pDebugCom = nullptr;
  m_pTempSensor.reset();
  m_pMotor.reset();
}

// Waits for the first fault word of a drive that has just been mapped. A read takes the samples out, so that the wait
// goes on for one step more after it: the report finds fresh ones.
void C_VoiceMotor::Report_Faults_At_Start() {
  int read = 0;
  for (int waited_ms = 0; read != 1 && waited_ms <= First_Fault_Read_Ms; waited_ms += 10) {
    uint64_t code = 0;
    read = m_pMotor->Get_Error_Code(code);
    Sleep(10);
  }
  Report_Fault();
}

void C_VoiceMotor::Save() {
  if (Owns_Store == 0) return;
  SaveAllClassParameterToHashOpt(Store_Name().c_str(), 1);
}

void C_VoiceMotor::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) {
  {
    const C_Store_Class entered(*this, data);
    for (const C_Parameter& row : Parameters()) {
      std::visit([&](auto* member) { Process_Member(row.key, *member, data); }, row.member);
    }
  }
  CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
}

bool C_VoiceMotor::Is_Inverted() const {
  return m_pMotor->m_Be_Invert == 1;
}

int C_VoiceMotor::Calibrate_Force() {
  return C_Calibration(*this).Run();
}

void C_VoiceMotor::Set_Cur_BaseDistance(float position) {
  if (std::isfinite(position)) {
    Cur_BaseDistance = position;
  } else {
    Message_Box(Format_Text("ID:%d 保存的基准面不是有效数字，请重新进行基准面标定", CanID));
  }
}

int C_VoiceMotor::Set_TestMode(int mode) {
  if (mode < 0 || mode > 9) return 0;
  m_TestMode = mode;
  return 1;
}

int C_VoiceMotor::Report_Fault() {
  uint64_t code = 0;
  const int read = m_pMotor->Get_Error_Code(code);
  if (read != 1) return read;
  if ((code & 1) != 0) Message_Box(Format_Text("ID:%d 超电流", CanID));
  if ((code & 2) != 0) Message_Box(Format_Text("ID:%d 无法回零", CanID), Box_System_Modal);
  if ((code & 4) != 0) Message_Box(Format_Text("ID:%d 超负荷", CanID), Box_System_Modal);
  if ((code & 8) != 0) Message_Box(Format_Text("ID:%d 检测到漏电流过大", CanID), Box_System_Modal);
  return read;
}

void C_VoiceMotor::Renew_Debug_Com() {
  const std::shared_ptr<C_VoiceDebugCom> link = Debug_Com();
  m_pDebugCom = nullptr;
  if (link != nullptr) link->Close();  // a thread that still holds it no longer holds its port
  m_pDebugCom = std::make_shared<C_VoiceDebugCom>(CanID);
}

// The files are a snapshot that nothing reads back.
void C_VoiceMotor::Export_History() {
  const std::wstring time_text = get_time().Time_Text();  // once, so that the four files share it
  const auto save = [&](const CMyStringW& prefix, const C_History& history) {
    const CMyArray<double> values = history.Copy();
    const std::wstring name = prefix.Text() + time_text;
    m_MatData.Save_Double_Vector(values.GetData(), values.GetSize(), name.c_str());
  };
  save(Format_Text("ThicknessArray%d ", CanID), ThicknessArray);
  save(Format_Text("TempArray%d ", CanID), TempArray);
  save(Format_Text("TestTimeArray%d ", CanID), TestTimeArray);
  save(Format_Text("SlowTestData%d ", CanID), SlowTestData);
}

}  // namespace orsanta
