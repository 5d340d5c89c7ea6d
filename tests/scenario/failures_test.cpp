// What a host sees when something is wrong: with the bus, with a drive, with its own calls.
#include <gmock/gmock.h>

#include <limits>
#include <tuple>

#include "common/failed_check.h"
#include "scenario/system.h"
#include "support/threads/thread.h"

namespace orsanta {

using testing::AllOf;
using testing::HasSubstr;

using Failures = System;
using Failures_DeathTest = System;

TEST_F(Failures, An_Absent_Drive_Is_Told_And_Its_Station_Stays) {
  simulator::Set_Absent(2, true);
  Start({1, 2});
  EXPECT_THAT(front->Boxes(),
              testing::ElementsAre(testing::StartsWith(L"无法找到ID：2的驱动器"), L"CanID：2的设备没有连接"));
  Set_Force(2, 77.0);               // its parameters can be set and are kept
  simulator::Set_Absent(2, false);  // it stays unused until the next start, but its tasks and the stop end
  EXPECT_EQ(do_test(2, ORSANTA_TASK_MEASURE), 1);
  EXPECT_EQ(Next_Result(2), -99.0);
  EXPECT_TRUE(Lift(2));
  Stop();

  Start({1, 2});
  double force = 0.0;
  Get_Force(2, &force);
  EXPECT_EQ(force, 77.0);
  EXPECT_NEAR(Measure(2, 2.5), -6.5, 0.001);  // the part on an anvil at 9 mm, against a reference at 0
}

// It is on the bus while it is looked for, and again from soon after; what maps its channels in between is lost.
TEST_F(Failures, A_Drive_That_Is_Lost_While_It_Is_Mapped_Holds_Up_No_Stop) {
  simulator::Reset({.instruction_ms = 5.0});
  C_Thread bus;
  bus.Start("bus", [] {
    while (simulator::Journal_Text().find("SET_INPUT_DATA_MAP") == std::string::npos) Sleep(1);
    simulator::Set_Absent(1, true);
    Sleep(200);
    simulator::Set_Absent(1, false);
  });
  Start({1});
  EXPECT_EQ(do_test(1, ORSANTA_TASK_FORCE_BACK), 1);
  C_Thread stop;
  stop.Start("stop", [this] { Stop(); });
  EXPECT_TRUE(stop.Join(60000.0));
  bus.Join();
}

// The station rests, and neither the measuring nor the store nor the stop of the others suffers.
TEST_F(Failures, A_Station_On_An_Id_That_Is_Taken_Is_Told_And_Rests) {
  const std::wstring on_card = L"电机2的CANID 15是IO卡的地址，电机2停用，请改为不同的CANID后重新启动";
  const std::wstring twice = L"电机2的CANID 1与电机1相同，电机2停用，请改为不同的CANID后重新启动";
  for (const auto& [can_id, io_mode, refusal] : {std::tuple(1, 1, twice), {15, 0, on_card}, {15, 1, on_card}}) {
    std::vector<std::wstring> told = front->Boxes();
    for (int bit = 0; bit < 8; ++bit) simulator::Set_Input(bit, 1);
    Start({1, can_id}, io_mode);
    Correct_Reference(1, 123.0);
    EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);
    simulator::Set_Input(1, 0);  // also the input of a second station on id 1
    if (io_mode == 1) {
      EXPECT_NEAR(Next_Result(1), 2.0, 0.001);
      Sleep(3000);
      EXPECT_TRUE(No_Result(2));
    }
    Set_Force(2, 77.0);
    EXPECT_EQ(do_test(2, ORSANTA_TASK_MEASURE), 0);
    EXPECT_EQ(GoZero(2), 0);
    Check_User_Zero(2);
    told.insert(told.end(), 4, refusal);
    EXPECT_EQ(front->Boxes(), told);
    Stop();

    Start({1});
    double force = 0.0;
    Get_Force(1, &force);
    EXPECT_EQ(force, 123.0);
    EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);  // against the reference of before
    Stop();
  }
}

TEST_F(Failures, Without_A_Card_Its_Id_Is_Free_For_A_Drive) {
  simulator::Reset({.first_drive_id = 15, .io_card = false});
  Start({15});
  EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  EXPECT_NEAR(Next_Result(1), -9.0, 0.001);  // the bare anvil against a reference at 0
  EXPECT_TRUE(front->Boxes().empty());
}

TEST_F(Failures, A_Second_Start_Is_Told_And_The_System_Goes_On) {
  Start({1});
  Correct_Reference(1);
  ORSA_resource_alloc(nullptr, 0);
  Orsanta_dll_init(1);
  EXPECT_THAT(front->Boxes(),
              testing::ElementsAre(
                  L"Orsanta_dll_init：系统已经在运行，本次调用不起作用；需要重新启动时请先调用Orsanta_dll_uninit"));
  EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);
  EXPECT_EQ(GetIO(0), 3);
  Stop();
  const auto two = Numbered_Resources(2);
  ORSA_resource_alloc(two.begin(), 2);
  Start({1});  // a table takes the place of the one before
  EXPECT_EQ(do_test(2, ORSANTA_TASK_MEASURE), 0);
  EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);
}

TEST_F(Failures, Arguments_That_Make_No_Sense_Are_Told_And_Change_Nothing) {
  Start({1}, 1);
  const std::pair<const char*, decltype(&Set_Force)> setters[] = {{"set_test_distance", set_test_distance},
                                                                  {"Set_Ans_Offset", Set_Ans_Offset},
                                                                  {"Set_Force", Set_Force},
                                                                  {"Set_Force2", Set_Force2}};
  for (const auto& [name, set] : setters) set(1, 8.0);
  Save_Parameter2file(1);
  SetIO(7, 1);
  const std::string store = File_Text("音圈电机1参数");
  std::vector<std::wstring> told;
  const auto refuse = [&told](const char* name, auto set, double value, double shown) {
    set(1, value);
    told.emplace_back(
        Format_Text("%s：电机1的参数%g不是有效数字，没有作任何更改，请检查上位机程序", name, shown).Text());
  };
  for (const double value : {__builtin_nan(""), __builtin_inf(), -__builtin_inf()})
    for (const auto& [name, set] : setters) refuse(name, set, value, value);
  refuse("set_test_distance", set_test_distance, 1e300, __builtin_inf());  // beyond single precision
  for (const int channel : {-1, 8}) {
    EXPECT_EQ(SetIO(channel, 1), 1);
    EXPECT_EQ(GetIO(channel), -1);
    for (const char* name : {"SetIO", "GetIO"})
      told.emplace_back(Format_Text("%s：IO通道%d超出范围0到7，请检查上位机程序", name, channel).Text());
  }
  EXPECT_EQ(front->Boxes(), told);
  EXPECT_EQ(simulator::Get_Output(7), 1);
  EXPECT_EQ(GetIO(7), 0);
  EXPECT_EQ(File_Text("音圈电机1参数"), store);
  Save_Parameter2file(1);
  EXPECT_EQ(File_Text("音圈电机1参数"), store);
}

TEST_F(Failures, A_Station_Number_Above_The_Count_Names_The_Export) {
  Start({1, 2});
  double a = -5.0, b = -6.0;
  EXPECT_EQ(do_test(3, 1), 0);
  EXPECT_EQ(get_ans(3, &a, &b), 0);
  EXPECT_EQ(Get_Force_Back_Finish(3), 0);
  EXPECT_EQ(GoZero(3), 0);
  for (const auto call : {Set_Force, Set_Force2, Set_Ans_Offset, set_test_distance}) call(3, 1.0);
  for (const auto call : {Check_User_Zero, Save_Parameter2file}) call(3);
  Get_Force(3, &a);
  Get_Ans_Offset(3, &b);
  EXPECT_EQ(a, -5.0);
  EXPECT_EQ(b, -6.0);
  std::istringstream names(
      "do_test get_ans Get_Force_Back_Finish GoZero Set_Force Set_Force2 Set_Ans_Offset set_test_distance "
      "Check_User_Zero Save_Parameter2file Get_Force Get_Ans_Offset");
  std::vector<std::wstring> told;
  for (std::string name; names >> name;) told.emplace_back(Format_Text("%s前没有初始化电机3", name.c_str()).Text());
  EXPECT_EQ(front->Boxes(), told);
}

TEST_F(Failures_DeathTest, Calls_Outside_The_Contract_And_A_Start_That_Fails_End_The_Process_Where_It_Stands) {
  const auto twice = [this] {
    Start({2});
    Stop();
    GoZero(1);
  };
  EXPECT_EXIT(twice(), Ends_By_A_Failed_Check, "GoZero was called before Orsanta_dll_init or after");
  for (const int station : {0, -1, std::numeric_limits<int>::min()})
    EXPECT_EXIT((Start({2}), do_test(station, 1)), Ends_By_A_Failed_Check, "GetAt");
  Take_Dump();
  // Nothing of what a destructor would do: no thread ended under another ("pure virtual method called"), no store
  // saved.
  simulator::Set_Refused_Connects(202);
  EXPECT_EXIT(Start({2, 3}), Ends_By_A_Failed_Check,
              AllOf(HasSubstr("the motion server refused the connection"), testing::Not(HasSubstr("pure virtual"))));
  EXPECT_THAT(Take_Dump(), AllOf(HasSubstr("C_VoiceMotorBase::C_VoiceMotorBase("), HasSubstr(" Orsanta_dll_init ")));
  EXPECT_FALSE(std::filesystem::exists("音圈电机3参数"));
}

TEST_F(Failures, The_Panel_Holds_Off_The_Stop) {
  Start({1});
  front->Next_Dialog(C_Script().Wait(5000).Cancel());
  C_Thread operator_thread;
  operator_thread.Start("panel", [] { show_dlg(); });
  for (const int after_ms : {200, 2000}) {  // before the panel shows, and while it does
    Sleep(after_ms);
    Orsanta_dll_uninit();
  }
  EXPECT_EQ(front->Boxes(), std::vector<std::wstring>(2, L"窗口未推出，程序忙无法析构"));
  operator_thread.Join();
  EXPECT_TRUE(Lift(1));  // all goes on
  Stop();
  EXPECT_EQ(front->Boxes().size(), 2U);
}

}  // namespace orsanta
