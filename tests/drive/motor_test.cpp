#include "drive/motor.h"

#include "drive/testbed.h"
#include "drive/tremalink.h"

namespace orsanta {

constexpr int Id = 3;
constexpr int Server_Thread = 2;
constexpr double Raw_Per_Mm = 65536000.0;

class Motor : public Testbed {
 protected:
  Motor() : Testbed({.first_drive_id = Id, .drives = 3, .io_card = false, .noise_mm = 0.0}) {}
};

TEST_F(Motor, Connects_Twice_And_Maps_In_Order) {
  auto motor = std::make_unique<C_Kestrune_Motor_test>(Id, Server_Thread, 1);
  EXPECT_EQ(Calls(),
            "InitDevice_PC_Local_Controler(1, 0); ConnectControlServer(\"\", 0); +100 ReBuildSystem(); "
            "ConnectControlServer(\"\", 0); ");
  EXPECT_EQ(Now_Ms(), 200.0);
  EXPECT_EQ(Short_Maps("2", "3", Calls_Of([&] { EXPECT_EQ(motor->Map_Once(), 1); })),
            For_Each(1, 63, "Exists(#); ") +
                "Exists(3); i 8 6 60 256 i 201 6 61 256 i 11 6 62 256 i 10 6 63 256 i 200 6 64 256 i 5 1 66 256 "
                "w 4 4 65 i 16 8 69 4096 i 17 8 67 4096 i 18 8 68 4096 i 20 8 70 4096 i 15 8 71 256 o 0 6 60 o 1 6 61 "
                "o 4 8 62 o 12 8 69 o 6 8 63 o 11 8 68 o 7 8 64 o 8 8 65 o 9 0 66 o 10 0 67 Wait(2); ");

  // A second object on the id finds it mapped, and its window never starts.
  auto second = std::make_unique<C_Kestrune_Motor_test>(Id, Server_Thread, 1);
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(second->Map_Once(), 1); }), "");
  Sleep(50);
  double position = 77.0;
  EXPECT_EQ(second->Get_Cur_Pos(position), 0);
  EXPECT_EQ(position, 77.0);
  EXPECT_EQ(motor->Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, simulator::True_Position(Id), 0.0002);
  EXPECT_EQ(Calls_Of([&] { motor.reset(); }), "");
  EXPECT_EQ(Calls_Of([&] { second.reset(); }), "ReleaseDevice(); ");
  EXPECT_EQ(Reads_In(50), 0) << "a window thread was left behind";
  EXPECT_EQ(C_Kestrune_Motor_test(Id, Server_Thread, 1).Map_Once(), 1);  // connects and maps anew
  EXPECT_EQ(Count("ConnectControlServer"), 2);
}

TEST_F(Motor, Tells_What_Keeps_A_Drive_From_Its_Map) {
  simulator::Set_Refused_Connects(101);
  C_Kestrune_Motor_test absent(4, Server_Thread, 1);
  EXPECT_EQ(Now_Ms(), 102 * 100.0);
  simulator::Set_Absent(4, true);
  front->On_Box(L"无法找到ID：4", Answer_Ok, 1000);  // its box stands open while the next drive is mapped
  C_Thread other;
  other.Start("other", [&] { EXPECT_EQ(absent.Map_Once(), 0); });
  Sleep(500);
  for (const int id : {3, 5}) simulator::Set_Absent(id, true);
  EXPECT_EQ(C_Kestrune_Motor_test(70, Server_Thread, 1).MapMotorID(70), 0);
  EXPECT_EQ(Now_Ms(), 102 * 100.0 + 500.0);
  other.Join();
  const std::wstring begin = L"的驱动器\r\n总线上搜索到的设备id\r\n";
  const std::wstring end = L"请检查CANID拨码\r\n请检查CAN线路\r\n";
  EXPECT_EQ(front->Boxes(), (Texts{L"连接服务端失败", L"无法找到ID：4" + begin + L"CAN_ID：3 \r\nCAN_ID：5 \r\n" + end,
                                   L"无法找到ID：70" + begin + L"无设备" + end}));
  EXPECT_EQ(front->Shown()[0].at_ms, 101 * 100.0);
  EXPECT_EQ(Count("SET_INPUT_DATA_MAP"), 0);
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(absent.Go_Zero(), 0); }), "ReadDeviceReg(4, 0, 1); ");
  simulator::Set_Absent(4, false);
  // A failed map is not remembered. Of two that map at once one does it, and the other waits for it.
  C_Kestrune_Motor_test second(4, Server_Thread, 1);
  TILLTIME(Server_Thread, 20);
  int mapped = 0;
  C_Thread mapper;
  mapper.Start("mapper", [&] { mapped += second.Map_Once(); });
  mapped += absent.Map_Once();
  mapper.Join();
  EXPECT_EQ(mapped, 2);
  EXPECT_EQ(Count("SET_OUTPUT_DATA_MAP"), 10);
}

// The check of a drive that homes by itself: over its whole stroke when it is sound, then with a failure at each step.
TEST_F(Motor, The_Check_Of_A_Drive_Runs_Over_Its_Stroke_Or_Ends_With_The_Words_Of_The_First_Failure) {
  C_Kestrune_Motor_test motor(3, 1, 1);
  double max = 0.0, min = 0.0;
  const auto check = [&] { return motor.Home_And_Check(9, max, min); };
  simulator::Set_Absent(3, true);
  EXPECT_EQ(check(), 0);
  Texts expected = front->Boxes();
  ASSERT_EQ(expected.size(), 1U);  // the report of the search alone
  simulator::Set_Absent(3, false);
  EXPECT_EQ(check(), 1);
  EXPECT_NEAR(min, -0.45, 0.01);
  EXPECT_NEAR(max, 8.95, 0.01);
  double position = 0.0;
  EXPECT_EQ(motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, min, 0.01);
  // Steps of a tenth of the stroke out and back, without the far ends; the shuttle; the way home. Hundredths of mm.
  std::string places;
  for (const simulator::Journal_Entry& call : simulator::Journal())
    if (call.function == "OUTPUT_DATA" && call.arguments.rfind("60, ", 0) == 0)
      places += std::to_string(std::lround(std::stod(call.arguments.substr(4)) / 655360.0)) + ' ';
  const std::string turn = "895 425 -45 425 ";
  EXPECT_EQ(places, "-45 49 143 237 331 425 519 613 707 801 895 801 707 613 519 425 331 237 143 49 " + turn + turn +
                        turn + turn + turn + "-45 ");

  simulator::Set_Slow_Homing(3, true);
  EXPECT_EQ(check(), 0);
  simulator::Set_Slow_Homing(3, false);
  Sleep(60000);
  expected.emplace_back(L"ID:9的驱动器无法测量行程");
  // The drive goes silent at a position command: on the way out, on the way back, and in the shuttle.
  const std::pair<int, const wchar_t*> cases[] = {
      {3, L"正向运动无法到位"}, {15, L"反向运动无法到位"}, {24, L"无法回中"}, {27, L"反向运动无法到位"}};
  for (const auto& [silent_at, words] : cases) {
    simulator::Journal_Clear();
    C_Thread silencer;
    silencer.Start("silencer", [at = silent_at] {
      while (Count("Out(1, 60, ") < at) Sleep(1);
      simulator::Set_Silent(3, true);
    });
    EXPECT_EQ(check(), 0);
    simulator::Set_Silent(3, false);
    Sleep(2000);
    expected.insert(expected.end(), {L"CANID:3  Get_InterRunFlag无法读取数据通道", L"TillStop无法获取数据",
                                     std::wstring(L"ID:9的驱动器") + words});
  }
  simulator::Set_Silent(3, true);
  EXPECT_EQ(check(), 0);
  expected.insert(expected.end(), {L"Check_Ready无法获取数据通道", L"ID:9的驱动器无法回零"});
  EXPECT_EQ(front->Boxes(), expected);
}

class Mapped_Motor : public Motor {
 protected:
  void SetUp() override {
    ASSERT_EQ(m_Motor.Map_Once(), 1);
    Sleep(20);
    simulator::Journal_Clear();
  }
  C_Kestrune_Motor_test m_Motor{Id, Server_Thread, 1};
};

TEST_F(Mapped_Motor, Commands_Reach_Their_Channels_And_What_Is_No_Number_Stays_Here) {
  EXPECT_EQ(
      Calls_Of([&] {
        m_Motor.SetScale(2000.0);
        EXPECT_EQ(m_Motor.Set_Run_Dir(0), 0);  // changes nothing
        EXPECT_EQ(m_Motor.Set_Run_Dir(1), 1);
        m_Motor.Send_Pos(0.5);
        EXPECT_EQ(m_Motor.Set_Pos_Offset(12.0), 1);
        m_Motor.Send_Pos(0.5);
        m_Motor.Set_Speed(3.5);
        m_Motor.Set_Acc(400.0);
        m_Motor.Set_Jerk(5.0);
        for (int pass = 0; pass < 2; ++pass) {
          m_Motor.Set_Current_Pos(11.0);
          m_Motor.Set_Current_Neg(11.0);
          m_Motor.m_Be_Invert = 1;
        }
        m_Motor.Set_Current_Pos(-11.5);
        m_Motor.Set_Current_Neg(11.5);
        m_Motor.Reset_Current_Limit();
        EXPECT_EQ(m_Motor.Reset_Data_Fifo(), 1);
        EXPECT_EQ(m_Motor.Till_Time(12.9), 1);
      }),
      "Wait(2); Out(2, 60, 65536000); Wait(2); Out(2, 60, 65536012); Out(2, 63, 3.5); Wait(2); Out(2, 68, 400); "
      "Wait(2); Out(2, 62, 11); Wait(2); Out(2, 62, -11); Wait(2); Out(2, 69, -11); Wait(2); Out(2, 69, 11); Wait(2); "
      "+1 Out(2, 69, 11.5); Wait(2); +1 Out(2, 69, 11.5); Wait(2); Out(2, 62, 40); Out(2, 69, -40); Wait(2); "
      "RESET_INPUT_DATA_FIFO(2, 69, 4096); RESET_INPUT_DATA_FIFO(2, 67, 4096); RESET_INPUT_DATA_FIFO(2, 70, 4096); "
      "RESET_INPUT_DATA_FIFO(2, 68, 4096); TILLTIME(2, 12); ");

  int32_t last = 4711;
  int res = 0;
  WriteDeviceReg(Id, 255, &last, 1, &res);
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Go_Zero(), 1); }), For_Each(0, 255, "ReadDeviceReg(3, #, 1); ") +
                                                                    For_Each(0, 255, "WriteDeviceReg(3, #, 1); ") +
                                                                    "ExecuteDeviceIns(3, 85); ");
  int32_t first = 0;
  ReadDeviceReg(Id, 0, &first, 1, &res);
  EXPECT_EQ(first, last);  // the zero routine gives every register the last one's value
  using M = C_Kestrune_Motor_test;
  Expect_Refusals<M>(m_Motor, {&M::Send_Pos, &M::Go_Pos, &M::Set_Current_Pos, &M::Set_Current_Neg, &M::Set_Speed,
                               &M::Set_Acc, &M::Till_Time});
  EXPECT_EQ(front->Boxes()[0], L"ID:3 目标位置不是有效数字(nan)，没有发送，请检查推力标定和工位参数");
}

TEST_F(Mapped_Motor, Reads_In_Order_And_Tells_A_Silent_Drive) {
  simulator::Set_Fault_Bits(Id, 5);
  Sleep(10);
  double load = 0.0, current = 77.0;
  CMyArray<double> samples;
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  uint64_t code = 0;
  std::vector<int> results;
  const auto read_all = [&] {
    C_Kestrune_Motor_test& m = m_Motor;
    results = {m.Check_Ready(),      m.Get_Version(ver, bcd_date), m.Get_Error_Code(code),
               m.Get_Load(load),     m.Get_Current(current),       m.Get_Current_Fifo(samples),
               m.Get_Fifo7(samples), m.Get_Fifo8(samples),         m.Get_Fifo10(samples)};
  };
  EXPECT_EQ(Calls_Of(read_all),
            "Read(60, 256); Read(64, 256); Read(61, 256); Read(71, 256); Read(69, 256); Read(69, 65536) x 2 +1; "
            "Read(67, 65536); Read(68, 65536); Read(70, 65536); ");  // 69 was emptied by the read of the current
  EXPECT_EQ(results, std::vector<int>(9, 1));
  EXPECT_EQ(ver, 0x0203);
  EXPECT_EQ(bcd_date, 0x20240518U);
  EXPECT_EQ(code, 5U);
  EXPECT_NEAR(current, 0.04, 0.003);      // amperes that hold the probe
  EXPECT_NEAR(samples.GetSize(), 15, 2);  // all that waited
  EXPECT_EQ(samples.GetEndData(), 0.0);   // mm, the commanded position

  simulator::Set_Silent(Id, true);
  read_all();  // what waits from before
  current = 77.0;
  EXPECT_EQ(Calls_Of(read_all),
            "Read(60, 256) x 41 +1; +1 Read(64, 256); Read(61, 256); Read(71, 256) x 41 +1; +1 Read(69, 256) x 41 +1; "
            "+1 Read(69, 65536) x 3 +1; +1 Read(67, 65536) x 3 +1; +1 Read(68, 65536) x 3 +1; "
            "+1 Read(70, 65536) x 3 +1; ");
  EXPECT_EQ(results, std::vector<int>(9, 0));
  EXPECT_EQ(current, 77.0);
}

TEST_F(Mapped_Motor, Moves_In_Order) {
  // The first move waits until the drive is idle, 10 ms at a time; the second stands there.
  m_Motor.Set_Speed(20.0);
  m_Motor.Send_Pos(0.5);
  const std::string stands_there = "Wait(2); Out(2, 60, 65536000); Read(66, 256) x 3 +1; +1 Wait(2); ";
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Go_Pos(1.0), 1); }),
            "Read(66, 256) x 5 +10; Wait(2); Out(2, 60, 65536000); Read(66, 256) x 35 +1; +1 Wait(2); ");
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Go_Pos(1.0), 1); }), "Read(66, 256); " + stands_there);
  Sleep(600);  // the run flag's FIFO is full of old zeros
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Go_Pos(1.0), 1); }), "Read(66, 256) x 2 +1; " + stands_there);
  double max = 0.0, min = 0.0;
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Measure_Stroke(max, min), 1); }),
            "Out(2, 61, 0); +1 Read(60, 256) x 1040 +1; +1 Read(62, 256); Read(63, 256); ");
  EXPECT_NEAR(max, 8.95 * Raw_Per_Mm, 0.01 * Raw_Per_Mm);
  EXPECT_NEAR(min, -0.45 * Raw_Per_Mm, 0.01 * Raw_Per_Mm);
  simulator::Set_Slow_Homing(Id, true);
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor.Measure_Stroke(max, min), 0); }),
            "Out(2, 61, 0); +1 Read(60, 256) x 10000 +1; ");
}

TEST_F(Mapped_Motor, The_Window_Tells_Where_A_Move_Ends_However_Long_It_Takes) {
  C_FIFO2Window& window = m_Motor.m_PosWindow;
  m_Motor.Set_Pos_Offset(Raw_Per_Mm);  // goes outward alone
  EXPECT_EQ(m_Motor.Go_Pos(4.0), 1);
  Sleep(200);
  double position = 0.0;
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, 5.0, 0.01);
  m_Motor.Clear_Pos_Window(window);
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 0);
  EXPECT_EQ(window.Wait_Pass(), 1);
  EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 1);
  window.Set_Window_Len(10);
  EXPECT_NEAR(Reads_In(50), 25, 1);  // of the motor's own window
  EXPECT_EQ(window.Get_Count(), 10);
  C_FIFO2Window unbound;
  unbound.Start_Read(0);
  EXPECT_EQ(unbound.Wait_Pass(), 0);

  // A drive that takes longer than 5000 polls is told at each further one, and the wait goes on.
  m_Motor.Set_Speed(0.35);
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Go_Pos(0.0), 1);
  const double polls = (Now_Ms() - before) / 2.0;  // a poll waits for the next sample of the run flag
  EXPECT_GT(polls, 5500.0);
  EXPECT_NEAR(front->Count_Boxes(L"到位超时"), polls - 5000.0, 5.0);
}

}  // namespace orsanta
