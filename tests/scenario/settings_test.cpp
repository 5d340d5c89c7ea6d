// The first start asks for the settings; what the operator answers decides which system stands then and ever after.
#include "common/other_process.h"
#include "common/pty.h"
#include "scenario/system.h"
#include "support/store/store_claim.h"

namespace orsanta {

using Settings = System;

TEST_F(Settings, The_First_Start_Asks_And_Later_Starts_Go_By_The_Answer) {
  C_Pty host(2);
  simulator::Reset({.temperature_boards = {20}});
  std::ofstream("音圈电机6参数") << "orsanta store 1\nC_VoiceMotor Val_TempSensorCanID 0 = double 20\nend\n";
  for (const int bit : {5, 6}) simulator::Set_Input(bit, 1);
  front->Next_Dialog(
      C_Script().Select(L"起始测微仪id", 4).Select(L"电机数量", 1).Select(L"串口号", 2).Select(L"IO控制", 1).Confirm());
  for (int start = 0; start < 2; ++start) {  // the second finds no script: a dialog would be cancelled
    Init(2);                                 // as the settings say
    EXPECT_EQ(GetIO(5), 1);                  // with the card
    host.Send("C");
    std::string answer;
    EXPECT_TRUE(Wait_For([&] { return (answer += host.Take()) == "ID:5 State:1\nID:6 State:1\n"; })) << answer;
    Stop();
  }
  // The drives map on instruction threads 2 and 4, and a board with its drive.
  const std::string journal = simulator::Journal_Text();
  for (const char* map : {" 2 SET_INPUT_DATA_MAP(5, ", " 4 SET_INPUT_DATA_MAP(6, ", " 4 SET_AXIS_MAP(20, 0, 2)"})
    EXPECT_NE(journal.find(map), std::string::npos) << map << ": by the place, not the id";
  Init(0);  // the host's word stands above the settings
  EXPECT_EQ(GetIO(5), 3);
  const auto shown = front->Shown();
  EXPECT_EQ(std::count_if(shown.begin(), shown.end(), [](auto& one) { return one.kind == C_Shown::Kind::Dialog; }), 1);
}

TEST_F(Settings, Two_Programs_In_One_Folder_Do_Not_Overwrite_Each_Other) {
  C_Other_Process other([] { (new C_Store_Claim)->Take("音圈电机1参数"); });
  const std::wstring told = L"音圈电机1参数 正由进程 " + std::to_wstring(other.Id());
  Start({1, 2});
  EXPECT_NEAR(Measure(1, 2.0), -7.0, 0.001);  // it works all the same
  for (const int station : {1, 2}) Save_Parameter2file(station);
  EXPECT_EQ(front->Boxes().size(), 2U);  // at the start and the save
  EXPECT_EQ(front->Count_Boxes(told), 2);
  EXPECT_EQ(File_Text("音圈电机1参数"), "");
  EXPECT_NE(File_Text("音圈电机2参数"), "");
  other.Kill();
  Save_Parameter2file(1);
  EXPECT_NE(File_Text("音圈电机1参数"), "");
  Stop();
  Start({1, 2});  // within one process the store comes back
  EXPECT_EQ(front->Boxes().size(), 2U);
}

}  // namespace orsanta
