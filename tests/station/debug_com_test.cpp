#include "station/debug_com.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "station/link_settings.h"
#include "support/time/clock.h"

namespace orsanta {
namespace {

class Debug_Com : public ::testing::Test {
 protected:
  C_Simulated_Clock clock{1};
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
};

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
  const std::pair<std::string, int> cases[] = {{"T", 1},
                                               {"xyT", 1},
                                               {"Tx", 0},
                                               {"TTTT", 1},
                                               {"t", 0},
                                               {std::string(255, 'x') + "Tx", 1},
                                               {std::string(256, 'T') + "x", 1}};
  for (const auto& [bytes, expected] : cases) {
    line.Send(bytes);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // the kernel hands the bytes over in real time
    int triggers = 0;
    for (int i = 0; i < 5; ++i) triggers += link.Read_Trigger();
    EXPECT_EQ(triggers, expected) << bytes.substr(0, 8);
  }
}

TEST_F(Debug_Com, The_Dialog_Offers_All_Ports_And_Rates_And_Stores_The_Choice) {
  Store_Link(5, 0, 4800);  // a rate that is not offered shows as the first
  C_VoiceDebugCom link(5);
  front->Next_Dialog(C_Script().Confirm());
  link.Settings_Dialog();
  const C_Dialog_Model dialog = front->Shown().front().dialog;
  ASSERT_EQ(dialog.controls.size(), 2U);
  ASSERT_EQ(dialog.controls[0].items.size(), 33U);
  EXPECT_EQ(dialog.controls[0].items.front(), L"无串口");
  EXPECT_EQ(dialog.controls[0].items.back(), L"COM32");
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
    EXPECT_EQ(front->Shown().front().dialog.controls[0].items.back(), L"COM40");
    EXPECT_EQ(front->Shown().front().dialog.controls[0].selected, 33);
    EXPECT_EQ(link.ValComNum, kept == 1 ? 40 : 2);
  }
}

}  // namespace
}  // namespace orsanta
