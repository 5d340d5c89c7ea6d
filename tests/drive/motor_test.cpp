#include "drive/motor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "common/temp_folder.h"
#include "drive/room.h"
#include "drive/tremalink.h"

namespace orsanta {
namespace {

using Texts = std::vector<std::wstring>;
using Lines = std::vector<std::string>;

class C_Motor_Test : public C_Room {
 protected:
  static constexpr int Id = 3;
  static constexpr int Server_Thread = 2;
  static constexpr int First_Channel = Id * 20;

  C_Motor_Test() {
    bench::Settings settings;
    settings.noise_mm = 0.0;
    bench::Reset(settings);
  }
  // The commands on output channels since the last look, as "k value".
  static Lines Outputs() {
    Lines outputs;
    for (const bench::Journal_Entry& call : bench::Journal()) {
      if (call.function != "OUTPUT_DATA") continue;
      EXPECT_EQ(call.thread, Server_Thread);
      const size_t comma = call.arguments.find(", ");
      outputs.push_back(std::to_string(std::stoi(call.arguments) - First_Channel) + call.arguments.substr(comma + 1));
    }
    bench::Journal_Clear();
    return outputs;
  }
};

TEST_F(C_Motor_Test, Connects_Twice_And_Maps_In_Order) {
  {
    C_Kestrune_Motor_test motor(Id, Server_Thread, 1);
    EXPECT_EQ(All_Calls(), (Lines{"InitDevice_PC_Local_Controler(1, 0)", "ConnectControlServer(\"\", 0)",
                                  "ReBuildSystem()", "ConnectControlServer(\"\", 0)"}));
    EXPECT_EQ(Now_Ms(), 200.0);
    bench::Journal_Clear();

    EXPECT_EQ(motor.Map_Once(), 1);
    EXPECT_EQ(Calls_Of("CheckDeviceExist").size(), 64U);
    Lines expected;
    const auto input = [&](int port, int format, int k, int depth) {
      const std::string channel = std::to_string(60 + k);
      expected.push_back("SET_INPUT_DATA_MAP(3, " + std::to_string(port) + ", " + std::to_string(format) + ", " +
                         channel + ")");
      expected.push_back("RESET_INPUT_DATA_FIFO(" + channel + ", " + std::to_string(depth) + ")");
    };
    input(8, 6, 0, 256);
    input(201, 6, 1, 256);
    input(11, 6, 2, 256);
    input(10, 6, 3, 256);
    input(200, 6, 4, 256);
    input(5, 1, 6, 256);
    input(4, 4, 5, 4096);
    expected.push_back("WaitForAllInsFinish()");
    input(16, 8, 9, 4096);
    input(17, 8, 7, 4096);
    input(18, 8, 8, 4096);
    input(20, 8, 10, 4096);
    input(15, 8, 11, 256);
    for (const char* map : {"0, 6, 60", "1, 6, 61", "4, 8, 62", "12, 8, 69", "6, 8, 63", "11, 8, 68", "7, 8, 64",
                            "8, 8, 65", "9, 0, 66", "10, 0, 67"}) {
      expected.push_back("SET_OUTPUT_DATA_MAP(3, " + std::string(map) + ")");
    }
    expected.push_back("WaitForAllInsFinish()");
    EXPECT_EQ(All_Calls(), expected);
    for (const bench::Journal_Entry& call : bench::Journal()) {
      EXPECT_EQ(call.thread, call.function == "CheckDeviceExist" ? -1 : Server_Thread) << call.function;
    }
    bench::Journal_Clear();
    EXPECT_EQ(motor.Map_Once(), 1);
    EXPECT_TRUE(bench::Journal().empty());
  }
  EXPECT_EQ(Calls_Of("ReleaseDevice").size(), 1U);
  EXPECT_TRUE(m_Front->Boxes().empty());
}

TEST_F(C_Motor_Test, Two_Objects_On_One_Id_Map_Once_And_Release_Last) {
  auto first = std::make_unique<C_Kestrune_Motor_test>(Id, Server_Thread, 1);
  auto second = std::make_unique<C_Kestrune_Motor_test>(Id, Server_Thread, 1);
  EXPECT_EQ(Calls_Of("ConnectControlServer").size(), 2U);
  EXPECT_EQ(first->Map_Once(), 1);
  bench::Journal_Clear();
  EXPECT_EQ(second->Map_Once(), 1);
  EXPECT_TRUE(bench::Journal().empty());
  Sleep(50);
  double position = 77.0;
  EXPECT_EQ(second->Get_Cur_Pos(position), 0);
  EXPECT_EQ(position, 77.0);
  EXPECT_EQ(first->Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, bench::True_Position(Id), 0.0002);
  first.reset();
  EXPECT_TRUE(Calls_Of("ReleaseDevice").empty());
  second.reset();
  EXPECT_EQ(Calls_Of("ReleaseDevice").size(), 1U);
  C_Kestrune_Motor_test third(Id, Server_Thread, 1);  // connects and maps anew
  EXPECT_EQ(Calls_Of("ConnectControlServer").size(), 2U);
  EXPECT_EQ(third.Map_Once(), 1);
  EXPECT_FALSE(Calls_Of("SET_INPUT_DATA_MAP").empty());
}

TEST_F(C_Motor_Test, Search_Report_Names_What_Answers) {
  bench::Settings settings;
  settings.first_drive_id = 3;
  settings.drives = 3;
  settings.io_card = false;
  bench::Reset(settings);
  bench::Set_Absent(4, true);
  C_Kestrune_Motor_test absent(4, Server_Thread, 1);
  EXPECT_EQ(absent.Map_Once(), 0);
  bench::Set_Absent(3, true);
  bench::Set_Absent(5, true);
  C_Kestrune_Motor_test beyond(70, Server_Thread, 1);
  EXPECT_EQ(beyond.Map_Once(), 0);
  EXPECT_EQ(Calls_Of("CheckDeviceExist").back(), "CheckDeviceExist(70)");
  EXPECT_EQ(m_Front->Boxes(), (Texts{L"无法找到ID：4的驱动器\r\n总线上搜索到的设备id\r\nCAN_ID：3 \r\nCAN_ID：5 \r\n"
                                     L"请检查CANID拨码\r\n请检查CAN线路\r\n",
                                     L"无法找到ID：70的驱动器\r\n总线上搜索到的设备id\r\n无设备"
                                     L"请检查CANID拨码\r\n请检查CAN线路\r\n"}));
  EXPECT_TRUE(Calls_Of("SET_INPUT_DATA_MAP").empty());
  bench::Set_Absent(4, false);
  EXPECT_EQ(absent.Map_Once(), 1);  // a failed map is not remembered
}

TEST_F(C_Motor_Test, A_Refused_Connection_Is_Told_And_Tried_Again) {
  bench::Set_Refused_Connects(101);
  C_Kestrune_Motor_test motor(Id, Server_Thread, 1);
  EXPECT_EQ(m_Front->Boxes(), Texts{L"连接服务端失败"});
  EXPECT_EQ(Now_Ms(), 102 * 100.0);
}

TEST_F(C_Motor_Test, A_Connection_Refused_Twice_Ends_The_Process) {
  const C_Temp_Folder folder;
  bench::Set_Refused_Connects(202);
  EXPECT_DEATH([]() noexcept { C_Kestrune_Motor_test motor(Id, Server_Thread, 1); }(), "refused the connection");
}

// --- Operations on a mapped drive ---

class C_Mapped_Motor_Test : public C_Motor_Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(m_Motor.Map_Once(), 1);
    Sleep(20);
    bench::Journal_Clear();
  }
  C_Kestrune_Motor_test m_Motor{Id, Server_Thread, 1};
};

TEST_F(C_Mapped_Motor_Test, Commands_Reach_Their_Channels_In_Their_Units) {
  EXPECT_EQ(m_Motor.SetScale(2000.0), 1);
  EXPECT_EQ(m_Motor.Set_Run_Dir(0), 0);  // changes nothing
  m_Motor.Send_Pos(0.5);
  EXPECT_EQ(m_Motor.Set_Pos_Offset(12.0), 1);
  m_Motor.Send_Pos(0.5);
  m_Motor.Set_Speed(3.5);
  m_Motor.Set_Acc(250.0);
  m_Motor.Set_Jerk(9.0);
  m_Motor.Set_Current_Pos(5.0);
  m_Motor.Set_Current_Neg(5.0);
  m_Motor.m_Be_Invert = 1;
  m_Motor.Set_Current_Pos(5.0);
  m_Motor.Set_Current_Neg(5.0);
  m_Motor.Reset_Current_Limit();
  EXPECT_EQ(Outputs(),
            (Lines{"0 65536000", "0 65536012", "3 3.5", "8 250", "2 5", "2 -5", "9 -5", "9 5", "2 40", "9 -40"}));
  const double before = Now_Ms();
  m_Motor.Set_Current_Pos(-11.0);
  EXPECT_EQ(Now_Ms(), before);
  m_Motor.Set_Current_Pos(-11.5);
  EXPECT_EQ(Now_Ms(), before + 1.0);
  bench::Journal_Clear();
  m_Motor.Till_Time(7.9);
  EXPECT_EQ(m_Motor.Reset_Data_Fifo(), 1);
  EXPECT_EQ(All_Calls(), (Lines{"TILLTIME(7)", "RESET_INPUT_DATA_FIFO(69, 4096)", "RESET_INPUT_DATA_FIFO(67, 4096)",
                                "RESET_INPUT_DATA_FIFO(70, 4096)", "RESET_INPUT_DATA_FIFO(68, 4096)"}));
}

TEST_F(C_Mapped_Motor_Test, Go_Pos_Arrives_Whatever_Old_Samples_Wait) {
  m_Motor.Set_Speed(20.0);
  Sleep(2000);  // the run flag's FIFO is full of old zeros
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 1);
  EXPECT_NEAR(bench::True_Position(Id), 4.0, 0.06);
  EXPECT_EQ(m_Motor.Get_InterRunFlag(), 0);
  Sleep(200);
  double position = 0.0;
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, bench::True_Position(Id), 0.0002);
  m_Motor.Set_Pos_Offset(65536000.0);  // goes outward alone
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 1);
  Sleep(200);
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, 5.0, 0.01);
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 1);  // stands there
  EXPECT_LT(Now_Ms() - before, 10.0);
  EXPECT_TRUE(m_Front->Boxes().empty());

  CMyArray<double> window;
  m_Motor.Clear_Pos_Window(m_Motor.m_PosWindow);
  EXPECT_EQ(m_Motor.Get_Pos_Window(window), 0);
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 0);
}

TEST_F(C_Mapped_Motor_Test, A_Drive_That_Does_Not_Arrive_Is_Told_At_Each_Poll) {
  m_Motor.Set_Speed(0.35);
  const double start = Now_Ms();
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 1);
  const double polls = (Now_Ms() - start) / 2.0;  // a poll waits for the next sample of the run flag
  EXPECT_GT(polls, 5500.0);
  EXPECT_NEAR(m_Front->Count_Boxes(L"到位超时"), polls - 5000.0, 5.0);
}

TEST_F(C_Mapped_Motor_Test, A_Silent_Drive_Is_Told_And_Ends_The_Waits) {
  bench::Set_Fault_Bits(Id, 5);
  Sleep(10);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  uint64_t code = 0;
  EXPECT_EQ(m_Motor.Get_Version(ver, bcd_date), 1);
  EXPECT_NE(ver, 0);
  EXPECT_GE(bcd_date, 0x20000101U);  // a date as decimal digits
  EXPECT_LE(bcd_date, 0x20991231U);
  EXPECT_EQ(m_Motor.Get_Error_Code(code), 1);
  EXPECT_EQ(code, 5U);
  double current = 77.0;
  EXPECT_EQ(m_Motor.Get_Current(current), 1);
  EXPECT_LT(std::abs(current), 40.0);
  EXPECT_EQ(m_Motor.Check_Ready(), 1);
  EXPECT_EQ(m_Motor.Get_InterRunFlag(), 0);

  bench::Set_Silent(Id, true);
  bench::Journal_Keep_Reads(true);
  bench::Journal_Clear();
  double value = 77.0;
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Read_Latest(First_Channel + 6, value), 0);
  EXPECT_EQ(Now_Ms() - before, 41.0);
  EXPECT_EQ(Calls([](const bench::Journal_Entry& call) { return call.arguments.rfind("66, ", 0) == 0; }).size(), 41U);
  bench::Journal_Keep_Reads(false);
  EXPECT_EQ(m_Motor.Get_Load(value), 1);  // samples from before still wait
  value = 77.0;
  EXPECT_EQ(m_Motor.Get_Load(value), 0);
  EXPECT_EQ(value, 77.0);
  code = 9;
  EXPECT_EQ(m_Motor.Get_Error_Code(code), 0);
  EXPECT_EQ(code, 9U);
  EXPECT_EQ(m_Motor.Get_Version(ver, bcd_date), 0);
  EXPECT_TRUE(m_Front->Boxes().empty());

  EXPECT_EQ(m_Motor.Check_Ready(), 0);
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 0);
  EXPECT_EQ(m_Front->Boxes(), (Texts{L"Check_Ready无法获取数据通道", L"CANID:3  Get_InterRunFlag无法读取数据通道",
                                     L"CANID:3  Get_InterRunFlag无法读取数据通道", L"TillStop无法获取数据"}));
}

TEST_F(C_Mapped_Motor_Test, A_Full_Fifo_Gives_No_Old_Value) {
  constexpr int Run_Channel = First_Channel + 6;
  Sleep(1000);
  bench::Set_Silent(Id, true);  // 256 samples wait and no more come
  double value = 77.0;
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Read_Latest(Run_Channel, value), 0);
  EXPECT_EQ(value, 77.0);
  EXPECT_EQ(Now_Ms() - before, 41.0);
  bench::Set_Silent(Id, false);
  Sleep(1000);
  m_Motor.Set_Speed(1.0);
  m_Motor.Send_Pos(4.0);
  EXPECT_EQ(m_Motor.Read_Latest(Run_Channel, value), 1);
  EXPECT_EQ(value, 1.0);
}

TEST_F(C_Mapped_Motor_Test, Arrays_Take_All_That_Waits) {
  m_Motor.Reset_Data_Fifo();
  Sleep(1000);
  CMyArray<double> samples;
  EXPECT_EQ(m_Motor.Get_Fifo10(samples), 1);
  EXPECT_NEAR(samples.GetSize(), 500, 3);
  EXPECT_EQ(m_Motor.Get_Current_Fifo(samples), 1);
  EXPECT_EQ(m_Motor.Get_Fifo7(samples), 1);
  EXPECT_EQ(m_Motor.Get_Fifo8(samples), 1);
  const double newest = samples.GetEndData();
  bench::Set_Silent(Id, true);
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Get_Fifo8(samples), 0);
  EXPECT_EQ(Now_Ms() - before, 3.0);
  EXPECT_EQ(samples.GetEndData(), newest);
}

TEST_F(C_Mapped_Motor_Test, The_Zero_Routine_Gives_Every_Register_The_Last_Ones_Value) {
  const auto read = [](int reg) {
    int32_t value = 0;
    int res = 0;
    ReadDeviceReg(Id, reg, &value, 1, &res);
    EXPECT_EQ(res, 1);
    return value;
  };
  int32_t last = 4711;
  int res = 0;
  WriteDeviceReg(Id, 255, &last, 1, &res);
  EXPECT_EQ(m_Motor.Go_Zero(), 1);
  EXPECT_EQ(read(0), last);
  EXPECT_EQ(read(128), last);
  EXPECT_EQ(Calls_Of("ExecuteDeviceIns"), Lines{"ExecuteDeviceIns(3, 85)"});

  bench::Journal_Clear();
  bench::Set_Absent(Id, true);
  EXPECT_EQ(m_Motor.Go_Zero(), 0);
  EXPECT_EQ(Calls_Of("ReadDeviceReg").size(), 1U);
  EXPECT_TRUE(Calls_Of("ExecuteDeviceIns").empty());
}

}  // namespace
}  // namespace orsanta
