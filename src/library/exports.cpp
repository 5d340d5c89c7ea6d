// The exported surface: thin forwards to the supervisor and the stations. Told in full in orsanta/orsanta.h.
#include <cmath>
#include <cstddef>
#include <type_traits>

#include "drive/motor.h"
#include "host/motor_base.h"
#include "orsanta/orsanta.h"
#include "station/voice_motor.h"
#include "support/dialog/message_box.h"
#include "support/system/working_folder.h"
#include "support/time/clock.h"
#include "ui/init_dialog.h"

using namespace orsanta;

// Hosts in every language lay the record out themselves.
static_assert(std::is_standard_layout_v<VCM_Resource_struct> && std::is_trivially_copyable_v<VCM_Resource_struct>);
static_assert(sizeof(VCM_Resource_struct) == 9 * sizeof(int32_t));
#define STANDS_AT(field, place) static_assert(offsetof(VCM_Resource_struct, field) == (place) * sizeof(int32_t))
STANDS_AT(CanID, 0);
STANDS_AT(AxisNum, 1);
STANDS_AT(AuxAxisNum, 2);
STANDS_AT(ControllerNum, 3);
STANDS_AT(SpareNum, 4);
STANDS_AT(ConnectServer, 5);
STANDS_AT(Reserved1, 6);
STANDS_AT(Reserved2, 7);
STANDS_AT(Reserved3, 8);
#undef STANDS_AT

namespace {

Shared<C_VoiceMotorBase*> theMotorBase = nullptr;  // null before Orsanta_dll_init and after Orsanta_dll_uninit
Shared<int> thePanelOpen = 0;

CMyArray<VCM_Resource_struct>& theResourceList() {
  static CMyArray<VCM_Resource_struct> list;
  return list;
}

// A call outside the calling order is a fault of the host program.
C_VoiceMotorBase& Supervisor(const char* export_name) {
  C_VoiceMotorBase* const supervisor = theMotorBase;
  if (supervisor == nullptr) {
    MY_ASSERT_REPORT(Format_Utf8("%s was called before Orsanta_dll_init or after Orsanta_dll_uninit", export_name));
  }
  return *supervisor;
}

// False, after a message, for a station number above the count. A number below 1 passes, and ends the process in the
// array's index check as the fault of the program that it is.
bool Check_Station(const char* export_name, int station) {
  if (Supervisor(export_name).StationList.GetSize() >= station) return true;
  Message_Box(Format_Text("%s前没有初始化电机%d", export_name, station));
  return false;
}

// False, after a message, for a station that does not exist or whose drive is not its own to move.
bool Check_Drive(const char* export_name, int station) {
  return Check_Station(export_name, station) && Supervisor(export_name).Check_Drive_Is_Own(int64_t{station} - 1);
}

// False, after a message, for a value that is no finite number.
bool Check_Finite(const char* export_name, int station, double value) {
  if (std::isfinite(value)) return true;
  Message_Box(
      Format_Text("%s：电机%d的参数%g不是有效数字，没有作任何更改，请检查上位机程序", export_name, station, value));
  return false;
}

bool Check_Channel(const char* export_name, int channel) {
  if (channel >= 0 && channel < C_Io_Card::Channel_Count) return true;
  Message_Box(
      Format_Text("%s：IO通道%d超出范围0到%d，请检查上位机程序", export_name, channel, C_Io_Card::Channel_Count - 1));
  return false;
}

C_VoiceMotor& Station(int station) {
  return *theMotorBase.Get()->StationList[int64_t{station} - 1];
}

void Fill_Default_Resources(int MotorNum, int Start_num) {
  for (int i = 1; i <= MotorNum; ++i) {
    theResourceList().Add({.CanID = i + Start_num - 1,
                           .AxisNum = i,
                           .AuxAxisNum = i,
                           .ControllerNum = 2 * i,
                           .SpareNum = 2 * i + 1,
                           .ConnectServer = 1});
  }
}

void Set_And_Save_Force(const char* export_name, int station, int index, double force) {
  if (!Check_Station(export_name, station) || !Check_Finite(export_name, station, force)) return;
  Station(station).Val_Force_Set[index] = force;
  Station(station).Test_Force[index] = force;
  Station(station).Save();
}

}  // namespace

void ORSA_resource_alloc(const VCM_Resource_struct* records, int count) noexcept {
  theResourceList().Clear();
  for (int i = 0; i < count; ++i) theResourceList().Add(records[i]);
}

void Orsanta_dll_init(int IoMode) noexcept {
  // Two systems on the same drives would move the probes under each other.
  if (theMotorBase != nullptr) {
    Message_Box(L"Orsanta_dll_init：系统已经在运行，本次调用不起作用；需要重新启动时请先调用Orsanta_dll_uninit");
    return;
  }
  Take_Working_Folder();
  C_InitDlg settings;
  int MotorNum = 0, PortNum = 0, Baud = 0, advanceduser = 0, IoInit = 0, Start_num = 0;
  settings.Read_Out(MotorNum, PortNum, Baud, advanceduser, IoInit, Start_num);
  if (IoMode == 0 || IoMode == 1) IoInit = IoMode;
  if (theResourceList().GetSize() == 0) Fill_Default_Resources(MotorNum, Start_num);
  theMotorBase = new C_VoiceMotorBase(theResourceList(), PortNum, Baud, advanceduser, IoInit);
}

void Orsanta_dll_uninit(void) noexcept {
  if (thePanelOpen == 1) {
    Message_Box(L"窗口未推出，程序忙无法析构");
    return;
  }
  theResourceList().Clear();
  delete theMotorBase.Get();
  theMotorBase = nullptr;
  Release_Working_Folder();
}

void show_dlg(void) noexcept {
  C_VoiceMotorBase& supervisor = Supervisor("show_dlg");
  thePanelOpen = 1;
  Sleep(500);
  supervisor.show();
  thePanelOpen = 0;
}

int do_test(int station, int task_code) noexcept {
  if (!Check_Drive("do_test", station)) return 0;
  return Supervisor("do_test").do_test(station, task_code);
}

int get_ans(int station, double* thickness, double* force) noexcept {
  if (!Check_Station("get_ans", station)) return 0;
  return Supervisor("get_ans").get_ans(station, thickness, force);
}

void Check_User_Zero(int station) noexcept {
  if (!Check_Drive("Check_User_Zero", station)) return;
  C_VoiceMotor& motor = Station(station);
  const double current = motor.Force_To_Current(motor.Val_Force_Set[0]);
  motor.Val_BaseDistance =
      motor.Correct_Base(static_cast<float>(motor.Val_Speed_Set[0].Get()), static_cast<float>(current));
}

int Get_Force_Back_Finish(int station) noexcept {
  if (!Check_Station("Get_Force_Back_Finish", station)) return 0;
  return Station(station).Get_Force_Back_Finish();
}

int GoZero(int station) noexcept {
  if (!Check_Drive("GoZero", station)) return 0;
  return Station(station).m_pMotor->Go_Zero();
}

void Set_Force(int station, double force) noexcept {
  Set_And_Save_Force("Set_Force", station, 0, force);
}

void Set_Force2(int station, double force) noexcept {
  Set_And_Save_Force("Set_Force2", station, 1, force);
}

void Get_Force(int station, double* force) noexcept {
  if (!Check_Station("Get_Force", station)) return;
  *force = Station(station).Val_Force_Set[0];
}

void Save_Parameter2file(int station) noexcept {
  if (!Check_Station("Save_Parameter2file", station)) return;
  Station(station).Save();
}

void Set_Ans_Offset(int station, double offset) noexcept {
  if (!Check_Station("Set_Ans_Offset", station) || !Check_Finite("Set_Ans_Offset", station, offset)) return;
  Station(station).Val_Block_Size = offset;
}

void Get_Ans_Offset(int station, double* offset) noexcept {
  if (!Check_Station("Get_Ans_Offset", station)) return;
  *offset = Station(station).Val_Block_Size;
}

void set_test_distance(int station, double distance) noexcept {
  const auto held = static_cast<float>(distance);  // one beyond a float is no finite number either
  if (!Check_Station("set_test_distance", station) || !Check_Finite("set_test_distance", station, held)) return;
  Station(station).test_distance = held;
}

int SetIO(int channel, int value) noexcept {
  C_VoiceMotorBase& supervisor = Supervisor("SetIO");
  if (Check_Channel("SetIO", channel)) supervisor.IoCard.Set_Io(channel, value);
  return 1;
}

int GetIO(int channel) noexcept {
  C_VoiceMotorBase& supervisor = Supervisor("GetIO");
  return Check_Channel("GetIO", channel) ? supervisor.IoCard.Get_Io(channel) : C_Io_Card::Read_Failed;
}
