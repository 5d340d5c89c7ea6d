#include "station/debug_com.h"

#include <chrono>
#include <thread>
#include <tuple>

#include "common/pty.h"
#include "common/simulated_test.h"
#include "station/link_settings.h"

namespace orsanta {

using Debug_Com = C_Simulated_Test;

TEST_F(Debug_Com, A_Port_That_Fails_Is_Told_And_Only_The_Last_Byte_Of_A_Read_Triggers) {
  C_VoiceDebugCom closed(3);
  EXPECT_EQ(closed.Is_Open(), 0);
  EXPECT_EQ(closed.Read_Trigger(), 0);
  closed.Send_Value(1.0);
  EXPECT_TRUE(front->Boxes().empty());

  Store_Link(3, 7, 9600);
  EXPECT_EQ(C_VoiceDebugCom(3).Is_Open(), 0);
  C_Pty line(2);
  Store_Link(4, 2, 0);
  EXPECT_EQ(C_VoiceDebugCom(4).Is_Open(), 0);
  ASSERT_EQ(front->Boxes(), (std::vector<std::wstring>{L"打开电机3串口7失败", L"打开电机4串口2失败：波特率0无法设定"}));
  for (const C_Shown& shown : front->Shown()) EXPECT_EQ(shown.flags, Box_System_Modal);
  Store_Link(5, 2, 4800);  // the port was given back, and any rate is set
  C_VoiceDebugCom link(5);
  EXPECT_EQ(link.Is_Open(), 1);
  EXPECT_EQ(line.Rate(), 4800);
  // One read takes 256 bytes: of 257 the last one is a read of its own.
  const std::string many(255, 'x'), all(256, 'T');
  for (const std::string& bytes : std::vector<std::string>{"T", "xyT", "TTTT", many + "Tx", all + "x", "Tx", "t"}) {
    line.Send(bytes);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the kernel hands the bytes over in real time
    int triggers = 0;
    for (int i = 0; i < 5; ++i) triggers += link.Read_Trigger();
    EXPECT_EQ(triggers, bytes == "Tx" || bytes == "t" ? 0 : 1) << bytes.substr(0, 8);
  }
}

TEST_F(Debug_Com, The_Dialog_Offers_All_Ports_And_Rates_And_Stores_The_Choice) {
  EXPECT_EQ(C_VoiceDebugCom(6).ValBaud, 115200);  // without a store
  const C_Script choice = C_Script().Select(L"串口号", 12).Select(L"波特率", 3);
  using C_Case = std::tuple<int, C_Script, std::wstring, int, int>;  // port, script, ports offered, port and rate then
  for (const auto& [port, script, offered, port_then, rate_then] :
       {C_Case(0, C_Script().Confirm(), L"33 无串口..COM32", 0, 9600),  // a rate that is not offered shows as the first
        C_Case(0, C_Script(choice).Cancel(), L"33 无串口..COM32", 0, 4800),
        C_Case(0, C_Script(choice).Confirm(), L"33 无串口..COM32", 12, 28800),
        C_Case(40, C_Script().Confirm(), L"34 无串口..COM40", 40, 9600),  // beyond the list
        C_Case(40, C_Script().Select(L"串口号", 2).Confirm(), L"34 无串口..COM40", 2, 9600)}) {
    Store_Link(5, port, 4800);
    C_VoiceDebugCom link(5);
    front->Clear_Record();
    front->Next_Dialog(script);
    link.Settings_Dialog();
    const std::vector<C_Control_Model> controls = front->Shown()[0].dialog.controls;
    const std::vector<std::wstring>& ports = controls[0].items;
    EXPECT_EQ(std::to_wstring(ports.size()) + L" " + ports.front() + L".." + ports.back(), offered);
    EXPECT_EQ(controls[1].items.size(), 7U);
    const C_VoiceDebugCom stored(5);
    EXPECT_EQ(stored.ValComNum, port_then);
    EXPECT_EQ(stored.ValBaud, rate_then);
  }
}

}  // namespace orsanta
