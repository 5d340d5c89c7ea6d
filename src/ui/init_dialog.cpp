#include "ui/init_dialog.h"

#include <algorithm>
#include <string>

#include "support/dialog/small_dialog.h"
#include "support/services/serial.h"
#include "support/system/file.h"

namespace orsanta {

namespace {

constexpr const wchar_t* Store_Name = L"全局电机参数";
constexpr const wchar_t* Service_Password = L"mocha";
constexpr int Most_Stations = 14;
constexpr int Dialog_Ports = 6;

using C_Items = CSmartPointer<CMyArray<std::wstring>, 0>;

// Adds the numbers from 1 to `last`, each behind the prefix, to the items of a list.
void Add_Numbered(const C_Items& items, const wchar_t* prefix, int last) {
  for (int i = 1; i <= last; ++i) items->Add(prefix + std::to_wstring(i));
}

}  // namespace

C_InitDlg::C_InitDlg() {
  if (CMyFileCopy::FileExist(Store_Name) != 0) {
    LoadAllClassParameterFromHashOpt(Store_Name, 1);
    return;
  }
  Settings_Dialog();
  SaveAllClassParameterToHashOpt(Store_Name, 1);
}

void C_InitDlg::Settings_Dialog() {
  const C_Items stations(1);
  Add_Numbered(stations, L"", Most_Stations);
  const C_Items ports(1);
  ports->Add(L"无串口");
  Add_Numbered(ports, L"COM", Dialog_Ports);
  // A port beyond the list has a place of its own at the end, so that an untouched confirmation keeps it.
  const int further_port = PortNum > Dialog_Ports ? PortNum : 0;
  if (further_port != 0) ports->Add(L"COM" + std::to_wstring(further_port));
  const C_Items rates(1);
  for (const int rate : CComSerial::Rates) rates->Add(std::to_wstring(rate));

  const auto known_rate = std::find(CComSerial::Rates.begin(), CComSerial::Rates.end(), Baud);
  int start_place = Start_num - 1;
  int count_place = MotorNum - 1;
  int port_place = std::min(PortNum, Dialog_Ports + 1);
  int rate_place = known_rate == CComSerial::Rates.end() ? 0 : static_cast<int>(known_rate - CComSerial::Rates.begin());
  const std::wstring password;

  C_Small_Dialog dialog;
  dialog.List(L"起始测微仪id", stations, start_place)
      .List(L"电机数量", stations, count_place)
      .List(L"串口号", ports, port_place)
      .List(L"波特率", rates, rate_place)
      .Tick(L"IO控制", IoInit);
  if (dialog.Ask()) {
    PortNum = port_place > Dialog_Ports ? further_port : port_place;
    Baud = CComSerial::Rates[static_cast<size_t>(rate_place)];
    MotorNum = count_place + 1;
    Start_num = start_place + 1;
    SaveAllClassParameterToHashOpt(Store_Name, 1);
  }
  // The dialog has no control for this password, and is to have none: the text stays empty, so that the advanced
  // functions are reached through the panel's service gate alone.
  if (password == Service_Password) advanceduser = 1;
}

void C_InitDlg::Read_Out(int& MotorNum_out, int& PortNum_out, int& Baud_out, int& advanceduser_out, int& IoInit_out,
                         int& Start_num_out) const {
  MotorNum_out = MotorNum;
  PortNum_out = PortNum;
  Baud_out = Baud;
  advanceduser_out = advanceduser;
  IoInit_out = IoInit;
  Start_num_out = Start_num;
}

void C_InitDlg::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) {
  {
    const C_Store_Class entered(*this, data);
    Process_Member("Num", MotorNum, data);
    Process_Member("Com", PortNum, data);
    Process_Member("Baud", Baud, data);
    Process_Member("IoInit", IoInit, data);
    Process_Member("BegineMotor", Start_num, data);
  }
  CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
}

}  // namespace orsanta
