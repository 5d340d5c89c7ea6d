#include "station/debug_com.h"

#include <chrono>
#include <thread>

#include "common/pty.h"
#include "common/simulated_test.h"
#include "station/link_settings.h"

namespace orsanta {

using Debug_Com = C_Simulated_Test;

TEST_F(Debug_Com, Closed_Link_Does_Nothing_And_A_Port_That_Fails_Is_Told) {
  C_VoiceDebugCom closed(3);
  EXPECT_EQ(closed.Is_Open(), 0);
  EXPECT_EQ(closed.Read_Trigger(), 0);
  closed.Send_Value(1.0);
  EXPECT_TRUE(front->Boxes().empty());

  Store_Link(3, 7, 9600);
  C_VoiceDebugCom failed(3);
  EXPECT_EQ(failed.Is_Open(), 0);
  C_Pty line(2);
  Store_Link(4, 2, 0);
  EXPECT_EQ(C_VoiceDebugCom(4).Is_Open(), 0);
  ASSERT_EQ(front->Boxes(), (std::vector<std::wstring>{L"打开电机3串口7失败", L"打开电机4串口2失败：波特率0无法设定"}));
  for (const C_Shown& shown : front->Shown()) EXPECT_EQ(shown.flags, Box_System_Modal);
  Store_Link(5, 2, 4800);  // the port was given back, and any rate is set
  C_VoiceDebugCom link(5);
  EXPECT_EQ(link.Is_Open(), 1);
  EXPECT_EQ(line.Rate(), 4800);
}

TEST_F(Debug_Com, Only_The_Last_Byte_Of_A_Read_Triggers) {
  C_Pty line(2);
  Store_Link(4, 2, 115200);
  C_VoiceDebugCom link(4);
  EXPECT_EQ(link.Read_Trigger(), 0);
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
  Store_Link(5, 0, 4800);                         // a rate that is not offered shows as the first
  C_VoiceDebugCom link(5);
  front->Next_Dialog(C_Script().Confirm());
  link.Settings_Dialog();
  const C_Dialog_Model dialog = front->Shown().front().dialog;
  ASSERT_EQ(dialog.controls.size(), 2U);
  const std::vector<std::wstring>& ports = dialog.controls[0].items;
  EXPECT_EQ(std::to_wstring(ports.size()) + ports.front() + ports.back(), L"33无串口COM32");
  EXPECT_EQ(dialog.controls[1].items.size(), 7U);
  EXPECT_EQ(link.ValBaud, 9600);

  const C_Script choice = C_Script().Select(L"串口号", 12).Select(L"波特率", 3);
  front->Next_Dialog(C_Script(choice).Cancel());
  link.Settings_Dialog();
  EXPECT_EQ(link.ValComNum, 0);
  front->Next_Dialog(C_Script(choice).Confirm());
  link.Settings_Dialog();
  const C_VoiceDebugCom stored(5);
  EXPECT_EQ(stored.ValComNum, 12);
  EXPECT_EQ(stored.ValBaud, 28800);

  link.ValComNum = 40;  // beyond the list
  for (const int kept : {1, 0}) {
    front->Clear_Record();
    front->Next_Dialog(kept == 1 ? C_Script().Confirm() : C_Script().Select(L"串口号", 2).Confirm());
    link.Settings_Dialog();
    const C_Control_Model offered = front->Shown().front().dialog.controls[0];
    EXPECT_EQ(offered.items.back(), L"COM40");
    EXPECT_EQ(offered.selected, 33);
    EXPECT_EQ(link.ValComNum, kept == 1 ? 40 : 2);
  }
}

}  // namespace orsanta
