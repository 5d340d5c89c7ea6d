// The panel's layout, its refresh, and what an operator does in the columns.
#include "ui/operator.h"

namespace orsanta {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Panel_Columns = Operator;
using Panel_Commands = Operator;

std::vector<std::wstring> Captions(const C_Dialog_Model& model, int column) {
  std::vector<std::wstring> captions;
  for (const C_Control_Model& control : model.controls)
    if (control.column == column) captions.push_back(control.caption);
  return captions;
}

TEST_F(Panel_Columns, StandInOrderAndAnAbsentStationStaysBlank) {
  bench::Set_Absent(2, true);
  Start(2);
  front->Clear_Record();
  Run_Panel(C_Script().Wait(300).Run([&] {
    EXPECT_EQ(Display(0), L"微米仪1参数1");
    EXPECT_EQ(base->PlotWorkers.GetSize(), 2) << "an absent station has a chart worker too";
  }));
  EXPECT_EQ(base->PlotWorkers.GetSize(), 0);
  const std::vector<C_Shown> shown = front->Shown();
  ASSERT_GE(shown.size(), 2U);
  EXPECT_EQ(shown[0].text, L"CanID：2的设备没有连接") << "told before the panel shows";
  const C_Dialog_Model& model = shown[1].dialog;
  EXPECT_FALSE(model.confirms);
  EXPECT_THAT(Captions(model, 0),
              ElementsAre(L"设定推力", L"设定速度", L"设定回位速度", L"设定加速度", L"基准面标定", L"基准块尺寸",
                          L"首次慢速测量", L"测量", L"测量回位", L"双力位移测试", L"微米仪1状态", L"高级功能"));
  ASSERT_EQ(Captions(model, 1).size(), 1U);
  EXPECT_EQ(model.controls[12].kind, C_Control_Kind::Blank);
  EXPECT_THAT(Captions(model, 2), ElementsAre(L"显示结果数量", L"自动测量设置", L"自动测量速度"));
  EXPECT_EQ(model.controls[10].rows, 2);
  EXPECT_EQ(model.title.size(), std::wstring(L"Orsanta控制系统 Dec 15 2020").size());
}

TEST_F(Panel_Columns, WithoutStationsThereIsNoPanel) {
  Start(0);
  base->show();
  EXPECT_TRUE(front->Shown().empty());
}

// A day's work at one station: force, block, reference, then parts by hand, slowly and with two forces.
TEST_F(Panel_Commands, MeasurePartsAgainstACorrectedReference) {
  Start(1);
  Type_Password();
  Answer_Edit(L"设定推力(g)", L"100");
  Answer_Edit(L"输入基准块尺寸(mm)", L"5");
  Answer(L"微米仪1基准面矫正", C_Script().Confirm());
  Answer(L"设定推力1(g)", C_Script().Fill(L"设定推力1(g)", L"60").Fill(L"设定推力2(g)", L"90").Confirm());
  std::wstring shown_at_once;
  C_Script script;
  script.Press(L"设定推力").Press(L"基准块尺寸").Press(L"基准面标定").Run([&] {
    EXPECT_EQ(Station(0).Val_Force_Set[0], 100.0);
    EXPECT_EQ(Station(0).Val_BaseDistance, Station(0).Cur_BaseDistance);
    EXPECT_NE(Station(0).Val_BaseDistance, 0.0);
    shown_at_once = Display(0);
    bench::Place_Part(1, 3.25);
  });
  script.Press(L"测量").Run([&] {
    EXPECT_EQ(base->LoopPaused, 1);
    EXPECT_TRUE(Wait_Idle(0));
    Sleep(250);
    EXPECT_THAT(Display(0), HasSubstr(L"  mm\r\n0")) << "under the part: the probe has not gone back";
    EXPECT_NEAR(std::stod(Display(0)), 3.25, Near_Mm);
    EXPECT_GT(bench::True_Force(1), 50.0) << "the probe is held down";
  });
  script.Press(L"测量(手动模式)").Run([&] { EXPECT_TRUE(Wait_Idle(0)); });
  script.Press(L"测量回位").Run([&] {
    EXPECT_EQ(base->LoopPaused, 0);
    EXPECT_TRUE(Wait_Idle(0));
    Sleep(250);
    EXPECT_THAT(Display(0), HasSubstr(L"  mm\r\n1"));
    EXPECT_EQ(bench::True_Force(1), 0.0);
    bench::Place_Part(1, 2.5);
  });
  script.Press(L"首次慢速测量").Run([&] {  // the press comes back with the return under way
    EXPECT_EQ(base->LoopPaused, 0);
    EXPECT_TRUE(Wait_Idle(0));
    EXPECT_NEAR(Station(0).Test_Ans, 2.5, Near_Mm);
    EXPECT_EQ(Station(0).Get_Force_Back_Finish(), 1);
  });
  script.Press(L"双力位移测试").Run([&] {
    EXPECT_EQ(Station(0).Test_Force[0], 60.0);
    EXPECT_EQ(Station(0).Test_Force[1], 90.0);
    EXPECT_EQ(front->Text_Of(Panel, L"测量", 0), L"测量(手动模式)");
    EXPECT_TRUE(Wait_Idle(0));
    EXPECT_NEAR(Station(0).Test_Ans, 0.0, Near_Mm) << "a rigid part does not give";
    EXPECT_EQ(base->LoopPaused, 1);
  });
  Run_Panel(script);
  EXPECT_EQ(base->LoopPaused, 1) << "closing the panel leaves the loop as it was";
  EXPECT_THAT(File("音圈电机1参数"), HasSubstr("Val_Force_Set[1] 0 = double 90"));
  EXPECT_TRUE(front->Boxes() == std::vector<std::wstring>{L"需要操作员密码"});
}

TEST_F(Panel_Commands, EditsTakeWhatIsInRangeAndACancelChangesNothing) {
  Start(1);
  Type_Password();
  Answer(L"设定推力(g)", C_Script()
                             .Fill(L"设定推力(g)", L"10000.5")
                             .Confirm()
                             .Fill(L"设定推力(g)", L"-1")
                             .Confirm()
                             .Fill(L"设定推力(g)", L"abc")
                             .Confirm());
  Answer_Edit(L"设定速度（mm/s）", L"12.5");
  Answer_Edit(L"设定速度（mm/s）", L"33");
  Answer_Edit(L"显示结果数量)", L"50000");
  Answer_Edit(L"自动测量速度", L"8");
  Station(0).Val_Force_OffSet = 10.0;
  const double force = Station(0).Val_Force_Set[0];
  Run_Panel(C_Script()
                .Press(L"设定推力")
                .Press(L"设定速度")
                .Press(L"设定回位速度")
                .Press(L"显示结果数量")
                .Press(L"自动测量速度")
                .Run([&] { bench::Journal_Clear(); })
                .Press(L"设定加速度"));  // cancelled, and sent all the same
  EXPECT_EQ(front->Refusals().size(), 4U);
  EXPECT_EQ(Station(0).Val_Force_Set[0], force);
  EXPECT_EQ(Station(0).Val_Speed_Set[0], 12.5);
  EXPECT_EQ(Station(0).Val_UpSpeed_Set, 33.0);
  EXPECT_EQ(base->PlotPointNum, 50000.0);
  EXPECT_THAT(bench::Journal_Text(), HasSubstr("5000")) << "the acceleration held goes to the drive";
}

// Cancel of the two-force dialog and a refused password save nothing; the global commands neither.
TEST_F(Panel_Commands, SaveAfterACommandOfAStationAndOnlyThen) {
  Start(1);
  const auto saved = [] { return std::filesystem::exists("pw_file.dat"); };
  Type_Password();
  Run_Panel(C_Script()
                .Press(L"双力位移测试")
                .Press(L"显示结果数量")
                .Press(L"自动测量设置")
                .Run([&] {
                  EXPECT_FALSE(saved());
                  EXPECT_EQ(base->LoopPaused, 0);
                })
                .Press(L"测量回位")
                .Run([&] { EXPECT_TRUE(saved()); }));
}

// Simulated inputs start measurements; opening the dialog again shows nothing ticked, and a cancel clears the mask.
TEST_F(Panel_Commands, AutomaticMeasuringRunsUntilItIsCancelled) {
  Start(2);
  Type_Password();
  Answer(L"自动测量电机1", C_Script().Select(L"自动测量电机1", 1).Confirm());
  Answer_Edit(L"自动测量速度", L"7");
  int measured = 0;
  Run_Panel(C_Script()
                .Press(L"自动测量设置")
                .Press(L"自动测量速度")
                .Wait(20000)
                .Run([&] { measured = Station(0).ThicknessArray.GetSize(); })
                .Press(L"自动测量设置")
                .Wait(5000)
                .Run([&] {
                  const int then = Station(0).ThicknessArray.GetSize();
                  Sleep(5000);
                  EXPECT_EQ(Station(0).ThicknessArray.GetSize(), then);
                }));
  EXPECT_GE(measured, 2);
  for (const C_Shown& shown : front->Shown())
    for (const C_Control_Model& control : shown.dialog.controls) EXPECT_EQ(control.selected, 0);
}

TEST_F(Panel_Commands, AFailedCycleEmptiesTheLine) {
  Start(1);
  Run_Panel(C_Script()
                .Press(L"测量")
                .Run([&] {
                  EXPECT_TRUE(Wait_Idle(0));
                  Sleep(250);
                  EXPECT_THAT(Display(0), HasSubstr(L"mm"));
                })
                .Press(L"测量回位")
                .Run([&] {
                  EXPECT_TRUE(Wait_Idle(0));
                  bench::Set_Restless(1, 0.05);
                })
                .Press(L"测量")
                .Run([&] {
                  EXPECT_TRUE(Wait_Idle(0));
                  Sleep(250);
                  EXPECT_EQ(Display(0), L"0");
                }));
}

// The panel's thread waits for a lane, and the lane waits for the operator to answer its box.
TEST_F(Panel_Commands, ACommandThatWaitsGoesOnWhenTheBoxOfItsLaneIsAnswered) {
  Start(1);
  bench::Set_Restless(1, 0.05);  // never settles: the lane shows a box at its time-out
  front->On_Box(L"", Answer_Ok, 3000);
  double waited_ms = 0.0;
  double started_ms = 0.0;
  Run_Panel(C_Script().Run([&] { started_ms = Now_Ms(); }).Press(L"首次慢速测量").Run([&] {
    waited_ms = Now_Ms() - started_ms;
    EXPECT_TRUE(Wait_Idle(0));
    EXPECT_EQ(Station(0).Get_Force_Back_Finish(), 1) << "the return ran behind the answered box";
  }));
  EXPECT_EQ(front->Boxes().size(), 1U);
  EXPECT_GT(waited_ms, 3000.0);
  EXPECT_LT(waited_ms, 5500.0) << "the wait of a slow measurement has its own end";
}

}  // namespace

}  // namespace orsanta
