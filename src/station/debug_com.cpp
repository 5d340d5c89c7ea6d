#include "station/debug_com.h"

#include <algorithm>

#include "support/base/assertion.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"

namespace orsanta {
namespace {

constexpr int Dialog_Ports = 32;
constexpr int Read_Buffer_Bytes = 256;

}  // namespace

C_VoiceDebugCom::C_VoiceDebugCom(int CanID) : m_Title(Format_Text("电机%d串口参数", CanID)) {
  LoadAllClassParameterFromHashOpt(m_Title.GetBuffer(), 1);
  if (ValComNum == 0) return;
  if (m_Port.OpenCom(ValComNum) == 0) {
    Message_Box(Format_Text("打开电机%d串口%d失败", CanID, ValComNum.Get()), Box_System_Modal);
    return;
  }
  if (m_Port.SetPropW(ValBaud, 8, 1, 0) == 0) {
    m_Port.CloseCom();
    Message_Box(Format_Text("打开电机%d串口%d失败：波特率%d无法设定", CanID, ValComNum.Get(), ValBaud.Get()),
                Box_System_Modal);
    return;
  }
  m_Open = 1;
}

int C_VoiceDebugCom::Read_Trigger() {
  if (m_Open == 0) return 0;
  char bytes[Read_Buffer_Bytes];
  int got = 0;
  m_Port.GetComData(bytes, Read_Buffer_Bytes, got);
  return got > 0 && bytes[got - 1] == 'T' ? 1 : 0;
}

void C_VoiceDebugCom::Send_Value(double value) {
  if (m_Open == 0) return;
  const std::string line = Format_Utf8("%6.0f\n", value);
  const int length = static_cast<int>(line.size());
  int written = 0;
  // A port that is away takes nothing, and that is no fault of the program.
  if (m_Port.WriteComData(line.data(), length, written) == 1) MY_DEBUG_ASSERT(written == length);
}

void C_VoiceDebugCom::Settings_Dialog() {
  const CSmartPointer<CMyArray<std::wstring>, 0> ports(1);
  const CSmartPointer<CMyArray<std::wstring>, 0> rates(1);
  ports->Add(L"无串口");
  for (int port = 1; port <= Dialog_Ports; ++port) ports->Add(L"COM" + std::to_wstring(port));
  // A port beyond the list has a place of its own at the end, so that an untouched confirmation keeps it.
  const int stored_port = ValComNum;
  const int further_port = stored_port > Dialog_Ports ? stored_port : 0;
  if (further_port != 0) ports->Add(L"COM" + std::to_wstring(further_port));
  int port_place = std::min(stored_port, Dialog_Ports + 1);
  int rate_place = 0;
  for (size_t i = 0; i < CComSerial::Rates.size(); ++i) {
    rates->Add(std::to_wstring(CComSerial::Rates[i]));
    if (CComSerial::Rates[i] == ValBaud) rate_place = static_cast<int>(i);
  }

  if (!C_Small_Dialog().List(L"串口号", ports, port_place).List(L"波特率", rates, rate_place).Ask()) return;
  ValComNum = port_place > Dialog_Ports ? further_port : port_place;
  ValBaud = CComSerial::Rates[static_cast<size_t>(rate_place)];
  Save();
}

void C_VoiceDebugCom::Close() {
  m_Open = 0;
  m_Port.CloseCom();
}

void C_VoiceDebugCom::OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) {
  {
    const C_Store_Class entered(*this, data);
    Process_Member("ValBaud", ValBaud, data);
    Process_Member("ValComNum", ValComNum, data);
  }
  CAutoSaveClassData2::OptSaveAndLoadDataStore(data);
}

}  // namespace orsanta
