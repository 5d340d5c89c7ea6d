// The advanced dialog: its edits, charts, serial link, calibration and linearity.
#include "station/debug_com.h"
#include "ui/operator.h"

namespace orsanta {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class Advanced_Dialog : public Operator {
 protected:
  // Opens the advanced dialog of a station (from 0) and works it with the script.
  void Work(C_Script script, int index = 0) {
    base->AdvancedUser = 1;
    front->On_Dialog(Title(index), std::move(script));  // before all others: its buttons bear the names of the edits
    Type_Password();
    Run_Panel(C_Script().Press(L"高级功能", index));
  }
  static std::wstring Title(int index) { return L"电机" + std::to_wstring(index + 1) + L" 高级功能"; }

  void Measure(int index, double part_mm) {
    simulator::Place_Part(index + 1, part_mm);
    base->do_test(index + 1, Task_Measure);
    base->do_test(index + 1, Task_Force_Back);
    EXPECT_TRUE(Wait_Idle(index));
  }
};

TEST_F(Advanced_Dialog, Edits_Reach_Their_Members) {
  Start(1);
  C_VoiceMotor& station = Station(0);
  constexpr wchar_t Spring[] = L"弹簧K值补偿（仅用于2D标定）";
  const struct {
    const wchar_t *button, *shown, *entry;
    Shared<double>& member;
    double value;
  } edits[] = {
      {L"推力修正值", L"设定推力(g): 0.000, -200 to 200", L"-12.5", station.Val_Force_OffSet, -12.5},
      {L"误差阀值", L"输入误差阀值(um): 5.000, -1 to 1000", L"7", station.Val_ErrorThreshold, 7.0},
      {L"稳定时间", L"输入稳定时间: 100.000, 1 to 1000", L"160", station.Val_ErrorWindowLen, 80.0},  // 2 ms a sample
      {L"原点偏移", L"原点偏移(mm): 0.000, 0 to 10", L"0.5", station.Val_BeginePoint_offset, 0.5},
      {L"测量误差补偿", L"测量误差补偿: 0.0000000000000000, -1 to 1", L"-0.0125", station.Val_Error_offset, -0.0125},
      {L"传感器比例系数", L"传感器比例系数: 1000.0000000000000000, 1 to 1e+09", L"2000", station.Val_SensorScale,
       1000.0},  // then as below
      {L"设置温度传感器", L"ntc温度传感器CANID: 0.0000000000000000, 0 to 64", L"20", station.Val_TempSensorCanID, 20.0},
      {Spring, L"弹簧K值补偿（g/mm）: 0.0000000000000000, 0 to 64", L"64.5", station.Val_Spring_K, 0.0},  // refused
  };
  C_Script script;
  std::wstring shown;
  for (const auto& edit : edits) {
    const std::wstring line = edit.shown;
    Answer_Edit(line.substr(0, line.find(L':')), edit.entry);
    script.Press(edit.button);
    shown += line + L'\n';
  }
  station.Set_TestDistance(9.0);
  Answer(L"测试距离", C_Script());
  Answer_Edit(L"测试距离", L"12.5");
  script.Press(L"测试距离").Run([&] { EXPECT_EQ(station.test_distance, 9.0F) << "a cancel leaves it"; });
  Answer(L"电机反转", C_Script().Select(L"电机反转", 1).Confirm());
  Answer(L"电机反转", C_Script());
  // The drive takes the scale that was confirmed, and not one that another hand set before a cancel.
  Answer(L"传感器比例系数", C_Script().Run([&] { station.Val_SensorScale = 1000.0; }));
  script.Press(L"测试距离").Press(L"电机方向").Run([&] { EXPECT_EQ(station.Val_Run_Negative, 1); });
  script.Press(L"电机方向").Press(L"传感器比例系数");
  Work(script);
  for (const auto& edit : edits) EXPECT_EQ(edit.member, edit.value) << edit.entry;
  EXPECT_EQ(station.test_distance, 12.5F);
  EXPECT_EQ(station.Val_Run_Negative, 1) << "kept by the cancel";
  EXPECT_EQ(front->Refusals().size(), 1U);
  for (int i = 0; i < 2; ++i) shown += L"测试距离: 9.0000000000000000, 1 to 30\n";
  EXPECT_EQ(Edits(), shown + L"传感器比例系数: 2000.0000000000000000, 1 to 1e+09\n");
  station.m_pMotor->Go_Pos(1.0);
  EXPECT_NEAR(simulator::True_Position(1), 2.0, 0.1);
  EXPECT_THAT(File_Text("音圈电机1参数"), HasSubstr("Val_Error_offset 0 = double -0.0125"));
}

TEST_F(Advanced_Dialog, Stands_Once_And_Leaves_The_Panel_Alive) {
  Start(2);
  C_Script script;
  script.Run([&] {
    EXPECT_TRUE(front->Press(Panel, L"测量", 1));
    Sleep(100);
    EXPECT_EQ(base->GetDelayProcessFifoCount(1), 1) << "a command of the panel under the open dialog";
    EXPECT_TRUE(Wait_Idle(1));
    std::filesystem::remove("pw_file.dat");
    EXPECT_TRUE(front->Press(Panel, L"高级功能", 1));
    Sleep(100);
    EXPECT_FALSE(std::filesystem::exists("pw_file.dat")) << "a press that does nothing saves nothing";
  });
  // The serial link changes at once, and the debug data of a measurement are written.
  const auto old_link = Station(0).Debug_Com();
  Answer(L"串口号", C_Script().Select(L"波特率", 0).Confirm());
  Measure(0, 3.0);
  Work(script.Press(L"调试串口").Press(L"推力矫正").Press(L"导出调试数据"));
  EXPECT_THAT(Edits(), testing::StartsWith(L"请输入测试最大电流(A): 1.000, -5 to 10\n")) << "of the calibration";
  EXPECT_THAT(Shown(C_Shown::Kind::Dialog, Title(0))[0].dialog.controls,
              testing::Each(testing::Field(&C_Control_Model::width, 20.0F)));
  EXPECT_EQ(Station(1).ThicknessArray.GetSize(), 1);
  EXPECT_NE(Station(0).Debug_Com(), old_link);
  EXPECT_EQ(Station(0).Debug_Com()->ValBaud, 9600);
  EXPECT_THAT(File_Text("电机1串口参数"), HasSubstr("ValBaud 0 = int 9600"));
  EXPECT_FALSE(std::filesystem::is_empty("历史数据"));
  Type_Password();
  for (const int index : {0, 1, 0}) Answer(Title(index), C_Script());
  Run_Panel(C_Script().Press(L"高级功能", 0).Press(L"高级功能", 1).Press(L"高级功能", 0));
  EXPECT_EQ(Count_Dialogs(Title(0)), 3);
  EXPECT_EQ(Count_Dialogs(Title(1)), 1);
}

TEST_F(Advanced_Dialog, Charts_Follow_The_Measurements_And_Share_Their_Kind) {
  Start(2);
  base->PlotPointNum = 10.0;
  for (int i = 0; i < 12; ++i) Measure(0, 3.0 + 0.01 * i);
  Measure(1, 4.0);
  C_Script script;
  script.Press(L"测量温度曲线").Run([&] { EXPECT_TRUE(Charts().empty()) << "no temperatures: nothing opens"; });
  script.Press(L"测量位置曲线").Run([&] {
    ASSERT_EQ(Charts().size(), 1U);
    const C_Shown first = Charts()[0];
    EXPECT_EQ(first.name, L"电机：1测量结果");
    EXPECT_EQ(std::pair(first.chart.width, first.chart.height), std::pair(500, 400));
    EXPECT_THAT(first.chart.x, ElementsAre(2, 3, 4, 5, 6, 7, 8, 9, 10, 11)) << "numbers since the start";
    EXPECT_EQ(first.chart.y.back(), Station(0).ThicknessArray.Copy().GetEndData());
    Sleep(600);
    EXPECT_EQ(Charts().back().name, L"Orsanta：1测量尺寸（mm）") << "the worker's own title from its first pass on";
    Measure(0, 2.0);
    Sleep(600);
    const C_Chart_Model last = Charts().back().chart;
    EXPECT_EQ(std::tuple(last.x.back(), last.station, last.opens, last.axes_follow), std::tuple(12.0, 1, false, true));
    for (const double celsius : {31.0, 31.5}) Station(0).TempArray.Append(celsius);
    front->Clear_Record();
  });
  script.Press(L"测量温度曲线").Wait(600).Run([&] {
    EXPECT_EQ(Charts().front().name, L"电机：1测量温度");
    EXPECT_EQ(Charts().back().name, L"Orsanta：1测量温度（°C）");
    for (const C_Shown& shown : Charts()) EXPECT_THAT(shown.chart.y, ElementsAre(31.0, 31.5));
  });
  Work(script);
  // Another station's chart of another kind turns the open ones to that kind.
  C_Script second;
  second.Press(L"测量位置曲线").Wait(600).Run([&] { front->Clear_Record(); });
  second.Press(L"测量时间曲线").Run([&] {
    Sleep(1200);
    EXPECT_EQ(Charts().front().name, L"电机：2测量结果");
    EXPECT_EQ(Charts().front().chart.y[0], Station(1).TestTimeArray.Copy()[0]);
    EXPECT_EQ(Charts().back().chart.y, Charts().front().chart.y);
    EXPECT_EQ(Charts().back().name, L"Orsanta：2测量时间（ms）");
    const size_t drawn = Charts().size();
    Sleep(2000);
    EXPECT_NEAR(static_cast<double>(Charts().size() - drawn), 4.0, 1.0) << "twice a second";
  });
  Work(second, 1);
  // The data that are cleared are those of the station charted last, not of the dialog's.
  Station(1).TempArray.Append(31.0);
  Work(C_Script().Press(L"清除曲线数据"), 0);
  for (const C_History* charted : {&Station(1).TempArray, &Station(1).ThicknessArray, &Station(1).TestTimeArray})
    EXPECT_EQ(charted->GetSize(), 0);
  EXPECT_GT(Station(1).SlowTestData.GetSize(), 0);
  EXPECT_EQ(Station(0).ThicknessArray.GetSize(), 13);
}

// The sizes are entered the wrong way round and one is wrong: 4 mm of true difference over 5, without its sign.
TEST_F(Advanced_Dialog, Linearity_Compares_Two_Blocks) {
  Start(1);
  Station(0).Val_Force_Set[0] = 70.0;
  for (const auto& [entered, mm] : {std::pair(2.0, 6.0), std::pair(7.0, 2.0)}) {
    C_Script block;
    block.Fill(L"请输入量块尺寸", std::to_wstring(entered)).Run([this, mm = mm] {
      EXPECT_TRUE(Wait_Idle(0)) << "the block goes on when the probe is up";
      simulator::Place_Part(1, mm);
    });
    Answer(L"请输入量块尺寸", block.Confirm());
  }
  Work(C_Script().Press(L"传感器线性度测量").Run([&] {
    EXPECT_TRUE(Wait_Idle(0));
    EXPECT_EQ(Station(0).Get_Force_Back_Finish(), 1);
  }));
  EXPECT_THAT(To_Utf8(front->Boxes().back()), testing::MatchesRegex("线性比例结果0\\.(799|800)."));
  EXPECT_EQ(Station(0).Test_Force[0], 70.0);
  const std::wstring edit = L"请输入量块尺寸: 0.0000000000000000, 0 to 64\n";
  EXPECT_EQ(Edits(), edit + edit);
  EXPECT_EQ(base->LoopPaused, 0);
}

}  // namespace

}  // namespace orsanta
