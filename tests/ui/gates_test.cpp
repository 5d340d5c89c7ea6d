// The password, its two gates and the auto-lock.
#include "ui/operator.h"

namespace orsanta {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Gates = Operator;

constexpr wchar_t Service_Gate[] = L"更改密码";  // its tick box, which the operator gate has not
constexpr wchar_t Advanced[] = L"电机1 高级功能";

TEST_F(Gates, Keep_Settings_From_Who_Has_No_Password_And_Leave_Measuring_Free) {
  Start(1);
  Type_Password(L"Mocha");                    // case counts
  Answer(L"输入密码", C_Script().Confirm());  // the caption itself, untyped; the third gate is cancelled
  Answer(L"设定推力2(g)", C_Script().Confirm());
  Run_Panel(
      Presses({L"设定推力", L"自动测量设置", L"基准块尺寸", L"测量", L"测量回位", L"双力位移测试", L"首次慢速测量"}));
  EXPECT_EQ(front->Count_Boxes(L"需要操作员密码"), 3);
  EXPECT_EQ(front->Count_Boxes(L"用户密码错误"), 3);
  EXPECT_EQ(Count_Dialogs(L"设定推力(g)"), 0);
  EXPECT_TRUE(Wait_Idle(0));
  EXPECT_EQ(Station(0).ThicknessArray.GetSize(), 4) << "measured without a password, two forces as well";
}

// The lock counts a tenth of a second at each refresh of each display.
TEST_F(Gates, Lock_After_A_Time_That_All_Displays_Share) {
  for (const int stations : {1, 3}) {
    base.reset();
    Start(stations);
    front->Clear_Record();
    Type_Password();
    const int time_ms = 60000 / stations;
    C_Script script;
    script.Press(L"显示结果数量").Wait(time_ms - 300).Press(L"测量回位", 0);  // any press is activity
    script.Wait(time_ms - 300).Press(L"显示结果数量").Wait(time_ms + 300).Press(L"显示结果数量");
    Run_Panel(script);
    EXPECT_THAT(front->Boxes(), ElementsAre(L"需要操作员密码", L"需要操作员密码", L"用户密码错误"));
  }
}

TEST_F(Gates, Ask_Twice_Before_The_Advanced_Functions_And_Take_A_New_Password) {
  Start(1);
  Answer(Service_Gate, C_Script().Fill(L"输入密码", L"x").Fill(L"自动上锁时间", L"5").Select(L"更改密码", 1).Confirm());
  C_Script change;
  change.Fill(L"输入密码", L"mocha").Select(L"更改密码", 1).Fill(L"新密码", L"摩卡2");
  C_Script change_and_settings = change;
  Answer(Service_Gate, change_and_settings.Select(L"设置电机数量及串口", 1).Confirm());
  Answer(L"起始测微仪id", C_Script());  // the very first start of the settings: asked, cancelled, written
  Answer(L"起始测微仪id", C_Script().Select(L"电机数量", 2).Confirm());
  Type_Password();  // the old one fails at the operator gate that follows
  C_Script script;
  script.Press(L"高级功能").Run([&] {
    EXPECT_EQ(base->AdvancedUser, 0);
    const std::vector<C_Control_Model> gate = front->Shown()[1].dialog.controls;
    EXPECT_EQ(gate[0].text + L", " + gate[3].text + L", " + gate[4].text, L"输入密码, 新密码, 60");
  });
  script.Press(L"高级功能").Run([&] {
    EXPECT_FALSE(std::filesystem::exists("pw_file.dat")) << "a refused press saves nothing";
  });
  Run_Panel(script);
  EXPECT_THAT(File_Text("全局电机参数"), HasSubstr("Num 0 = int 3"));

  // What holds in memory alone is gone with its panel. Lock time 0 locks at the first refresh, and the open advanced
  // dialog asks at its next press.
  base->AdvancedUser = 0;
  Answer(Service_Gate, change.Fill(L"自动上锁时间", L"0").Confirm());
  Type_Password(L"摩卡2");
  Answer(Advanced, C_Script().Wait(500).Press(L"清除曲线数据"));
  Run_Panel(C_Script().Press(L"高级功能"));
  EXPECT_EQ(base->AdvancedUser, 1);
  EXPECT_THAT(File_Text("pw_file.dat"), HasSubstr("password_str 0 = text \"摩卡2\""));
  EXPECT_THAT(File_Text("pw_file.dat"), HasSubstr("auto_lock_password_time_s 0 = int 0"));

  // A new panel is locked, with the password that was saved and that stays without the tick.
  base->AdvancedUser = 0;
  Answer(Service_Gate, C_Script().Fill(L"输入密码", L"摩卡2").Confirm());
  Type_Password(L"摩卡2");
  Answer(Advanced, C_Script());
  Run_Panel(C_Script().Press(L"高级功能"));
  EXPECT_THAT(front->Boxes(), ElementsAre(L"密码错误", L"设置完成请重启软件", L"需要操作员密码", L"用户密码错误",
                                          L"需要操作员密码", L"需要操作员密码", L"用户密码错误", L"需要操作员密码"));
  EXPECT_EQ(Count_Dialogs(Advanced), 2);
}

}  // namespace

}  // namespace orsanta
