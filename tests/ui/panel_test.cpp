// The panel's layout, its refresh, and what an operator does in the columns.
#include "ui/operator.h"

namespace orsanta {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Operator_Panel = Operator;

TEST_F(Operator_Panel, Stands_In_Columns_And_An_Absent_Station_Stays_Blank) {
  Start(0);
  base->show();
  EXPECT_THAT(front->Shown(), testing::IsEmpty()) << "without stations there is no panel";
  base.reset();
  simulator::Set_Absent(2, true);
  simulator::Set_Input(1, 1);
  Start(2, 1);
  front->Clear_Record();
  base->OnTaskBegin(1);
  base->IoCard.Set_Sim_Mask(1);
  Run_Panel(C_Script().Wait(300).Run([&] {
    EXPECT_EQ(Display(0), L"微米仪1参数1");
    EXPECT_EQ(simulator::Get_Output(1), 1) << "ready, as after a lift-off";
    EXPECT_EQ(Station(0).ThicknessArray.GetSize(), 0) << "no automatic measurement goes on under a new panel";
    EXPECT_EQ(base->PlotWorkers.GetSize(), 2) << "an absent station has a chart worker too";
    ASSERT_EQ(front->Tiles().size(), 2U);
    EXPECT_EQ(front->Tiles()[1], (C_Station_Tile{2, C_Station_Condition::Not_Connected, L"", L"200 g"}));
  }));
  EXPECT_EQ(base->PlotWorkers.GetSize(), 0);
  const std::vector<C_Shown> shown = front->Shown();
  ASSERT_GE(shown.size(), 2U);
  EXPECT_EQ(shown[0].text, L"CanID：2的设备没有连接") << "told before the panel shows";
  const C_Dialog_Model& model = shown[1].dialog;
  std::wostringstream columns;
  for (const C_Control_Model& control : model.controls)
    columns << control.column << control.caption << Size(control) << L' ';
  EXPECT_FALSE(model.confirms);
  EXPECT_EQ(columns.str(),
            L"0设定推力 0设定速度 0设定回位速度 0设定加速度 0基准面标定 0基准块尺寸 0首次慢速测量 0测量 0测量回位 "
            L"0双力位移测试 0微米仪1状态 10x2, text 1.5 0高级功能 1 2显示结果数量 2自动测量设置 2自动测量速度 ");
  EXPECT_EQ(model.controls[12].kind, C_Control_Kind::Blank);
  EXPECT_EQ(model.title.size(), std::wstring(L"Orsanta控制系统 Dec 15 2020").size());
}

// A day's work at one station: force, block, reference, then parts by hand, slowly and with two forces.
TEST_F(Operator_Panel, Measures_Parts_Against_A_Corrected_Reference) {
  Start(1);
  Station(0).Val_Force_KK = 0.0;  // 100 g to the ampere
  Station(0).Val_Force_K = 100.0;
  Station(0).Val_Static_GForce = 0.0;
  Station(0).Val_UpSpeed_Set = 25.0;
  Station(0).Val_Speed_Set[1] = 7.0;  // of the second set, which no command of the panel uses
  Station(0).Val_Force_Set[1] = 500.0;
  Sent(1);
  Type_Password();
  Answer_Edit(L"设定推力(g)", L"100");
  Answer_Edit(L"输入基准块尺寸(mm)", L"5");
  Answer(L"微米仪1基准面矫正", C_Script().Confirm());
  Answer(L"设定推力1(g)", C_Script().Fill(L"设定推力1(g)", L"60").Fill(L"设定推力2(g)", L"90").Confirm());
  double began_ms = 0.0;
  C_Script script = Presses({L"设定推力", L"基准块尺寸", L"基准面标定"});
  script.Run([&] {
    EXPECT_EQ(Station(0).Val_BaseDistance, Station(0).Cur_BaseDistance);
    EXPECT_NEAR(Station(0).Val_BaseDistance, 4.0, Near_Mm);
    EXPECT_EQ(Sent(1), "speed 20, up 1, to 10, speed 20, to 0, up 40, low -40, ");
    simulator::Place_Part(1, 3.2);
  });
  script.Press(L"测量").Run([&] {
    EXPECT_EQ(base->LoopPaused, 1);
    Settle();
    EXPECT_THAT(Display(0), HasSubstr(L"  mm\r\n0")) << "under the part: the probe has not gone back";
    EXPECT_EQ(front->Tiles()[0].condition, C_Station_Condition::Result);
    EXPECT_EQ(front->Tiles()[0].thickness + L"  mm\r\n0", Display(0));
    EXPECT_EQ(front->Tiles()[0].force, L"100 g");
    EXPECT_NEAR(std::stod(Display(0)), 3.2, Near_Mm);
  });
  script.Press(L"测量(手动模式)").Run([&] {
    Settle();
    EXPECT_EQ(Sent(1), "speed 20, up 1, to 4, speed 20, up 1, to 10, speed 20, up 1, to 5.8, speed 20, up 1, to 10, ");
  });
  script.Press(L"测量回位").Run([&] {
    EXPECT_EQ(base->LoopPaused, 0);
    EXPECT_EQ(front->Text_Of(Panel, L"测量"), L"测量");
    Settle();
    EXPECT_THAT(Display(0), HasSubstr(L"  mm\r\n1"));
    EXPECT_EQ(front->Tiles()[0].condition, C_Station_Condition::Lifted);
    EXPECT_EQ(Sent(1), "speed 25, to 0, up 40, low -40, ");
    simulator::Place_Part(1, 2.5);
    Station(0).Val_Force_Set[0] = 80.0;
    began_ms = Now_Ms();
  });
  script.Press(L"首次慢速测量").Run([&] {  // the press comes back with the return under way
    EXPECT_LT(Now_Ms() - began_ms, 4000.0) << "as soon as the measurement has ended";
    EXPECT_EQ(base->LoopPaused, 0);
    Settle();
    EXPECT_NEAR(Station(0).Test_Ans, 2.5, Near_Mm);
    EXPECT_EQ(Sent(1), "speed 3, up 0.8, to 5.8, speed 3, up 0.8, to 10, speed 25, to 0, up 40, low -40, ");
  });
  script.Press(L"双力位移测试").Run([&] {
    EXPECT_EQ(front->Text_Of(Panel, L"测量", 0), L"测量(手动模式)");
    Settle();
    EXPECT_NEAR(Station(0).Test_Ans, 0.0, Near_Mm) << "a rigid part does not give";
    EXPECT_EQ(Sent(1),
              "speed 20, up 0.6, to 6.5, speed 20, up 0.6, to 10, speed 20, up 0.9, to 6.5, speed 20, up 0.9, to 10, ");
  });
  Run_Panel(script);
  EXPECT_EQ(base->LoopPaused, 1) << "closing the panel leaves the loop as it was";
  EXPECT_THAT(File_Text("音圈电机1参数"), HasSubstr("Val_Force_Set[1] 0 = double 90"));
  EXPECT_THAT(front->Boxes(), ElementsAre(L"需要操作员密码"));
}

// What is out of range stays out, a cancel changes nothing, and only a finished command of a station is saved.
TEST_F(Operator_Panel, Edits_Take_What_Is_In_Range_And_Station_Commands_Are_Saved) {
  Start(1);
  const auto saved = [] { return std::filesystem::exists("pw_file.dat"); };
  Type_Password();
  Answer_Edit(L"显示结果数量)", L"50000");
  Answer_Edit(L"自动测量速度", L"8");  // refused
  C_Script force;
  for (const wchar_t* entry : {L"10000.5", L"-1", L"abc"}) force.Fill(L"设定推力(g)", entry).Confirm();
  Answer(L"设定推力(g)", force);
  Answer_Edit(L"设定速度（mm/s）", L"12.5");
  Answer_Edit(L"设定速度（mm/s）", L"33");
  C_Script script = Presses({L"显示结果数量", L"自动测量设置", L"自动测量速度", L"双力位移测试"});
  script.Run([&] {
    EXPECT_FALSE(saved());
    EXPECT_EQ(base->LoopPaused, 0) << "a cancelled two-force test does not start";
  });
  script.Press(L"设定推力").Run([&] { EXPECT_TRUE(saved()); }).Press(L"设定速度").Press(L"设定回位速度");
  script.Run([&] { simulator::Journal_Clear(); }).Press(L"设定加速度").Press(L"基准块尺寸");
  Run_Panel(script);
  EXPECT_EQ(front->Refusals().size(), 4U);
  EXPECT_EQ(Edits(),
            L"显示结果数量): 1000.000, 10 to 50000\n自动测量速度: 1, 1 to 7\n"
            L"设定推力1(g): 200.000, 0 to 1000\n设定推力2(g): 200.000, 0 to 1000\n"
            L"设定推力(g): 200.000, 0 to 10000\n设定速度（mm/s）: 20.000, 0.1 to 5000\n"
            L"设定速度（mm/s）: 20.000, 0.1 to 5000\n输入加速度mm/s^2: 5000.000, 1000 to 60000\n"
            L"输入基准块尺寸(mm): 0.000, 0 to 500\n");
  const std::vector<double> kept{Station(0).Val_Force_Set[0], Station(0).Val_Speed_Set[0], Station(0).Val_UpSpeed_Set,
                                 base->PlotPointNum};
  EXPECT_THAT(kept, ElementsAre(200.0, 12.5, 33.0, 50000.0));
  EXPECT_EQ(Sent(1), "acc 5000, ") << "the acceleration goes to the drive after a cancel too";
}

// Simulated inputs start measurements; opening the dialog again shows nothing ticked, and a cancel clears the mask.
TEST_F(Operator_Panel, Measures_Automatically_Until_It_Is_Cancelled) {
  Start(2);
  Type_Password();
  Answer(L"自动测量电机1", C_Script().Select(L"自动测量电机1", 1).Confirm());
  Answer_Edit(L"自动测量速度", L"7");
  int measured = 0, then = 0;
  C_Script script = Presses({L"自动测量设置", L"自动测量速度"});
  script.Wait(20000).Run([&] { measured = Station(0).ThicknessArray.GetSize(); }).Press(L"自动测量设置");
  script.Wait(5000).Run([&] { then = Station(0).ThicknessArray.GetSize(); }).Wait(5000);
  Run_Panel(script);
  EXPECT_NEAR(measured, 25, 3) << "at the greatest rate; at the least there are 4";
  EXPECT_EQ(Station(0).ThicknessArray.GetSize(), then);
  EXPECT_EQ(Station(1).ThicknessArray.GetSize(), 0);
  for (const C_Shown& shown : front->Shown())
    for (const C_Control_Model& control : shown.dialog.controls) EXPECT_EQ(control.selected, 0);
}

// The panel's thread waits for a lane, and the lane waits for the operator to answer its box. The failed cycle empties
// the line of the display.
TEST_F(Operator_Panel, A_Command_That_Waits_Goes_On_When_The_Box_Of_Its_Lane_Is_Answered) {
  Start(1);
  front->On_Box(L"", Answer_Ok, 3000);
  double started_ms = 0.0;
  C_Script script = Presses({L"测量", L"测量回位"});
  script.Run([&] {
    Settle();
    EXPECT_THAT(Display(0), HasSubstr(L"mm"));
    simulator::Set_Restless(1, 0.05);  // never settles: the lane shows a box at its time-out
    started_ms = Now_Ms();
  });
  script.Press(L"首次慢速测量").Run([&] {
    EXPECT_EQ(Now_Ms() - started_ms, 5020.0) << "the wait of a slow measurement has its own end";
    Settle();
    EXPECT_EQ(Display(0), L"1") << "the return ran behind the answered box";
    EXPECT_EQ(front->Tiles()[0].condition, C_Station_Condition::Fault);
  });
  Run_Panel(script);
  EXPECT_EQ(front->Boxes().size(), 1U);
}

}  // namespace

}  // namespace orsanta
