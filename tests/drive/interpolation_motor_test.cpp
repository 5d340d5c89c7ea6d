#include "drive/interpolation_motor.h"

#include "drive/testbed.h"
#include "drive/tremalink.h"

namespace orsanta {

constexpr int Id = 20;
constexpr double Count_Mm = 0.001;  // one encoder count at the start scale
constexpr double Edge_Mm = -4.0;
constexpr double Second_Edge_Mm = 3.25;

class Interpolation_Motor : public Testbed {
 protected:
  Interpolation_Motor()
      : Testbed({.temperature_boards = {Id}, .sample_ms = 0.5, .encoder_step_mm = 0.0, .noise_mm = 0.0}) {
    simulator::Set_Home_Sensor(Id, 2, Edge_Mm, false);
    simulator::Set_Home_Sensor(Id, 6, Second_Edge_Mm, true);
  }
  // Axis 2, sensor 30, instruction thread 5.
  static std::unique_ptr<C_Interpolation_Voice_Motor> Make_Motor() {
    return std::make_unique<C_Interpolation_Voice_Motor>(Id, 2, 30, 5, 1, -1, -1, -1);
  }
};

TEST_F(Interpolation_Motor, Connects_And_Maps_In_Order_And_Runs_Sixteen_Windows) {
  std::unique_ptr<C_Interpolation_Voice_Motor> motor;
  EXPECT_EQ(
      Short_Maps("5", "20", Calls_Of([&] { motor = Make_Motor(); })),
      "InitDevice_PC_Local_Controler(1, 0); +100 ConnectControlServer(\"\", 0); ReBuildSystem(); "
      "OpenCloseErrorMsgAutoAssert(0); +100 ConnectControlServer(\"\", 0); OpenCloseErrorMsgAutoAssert(0); " +
          For_Each(1, 63, "Exists(#); ") +
          "+50 Exists(20); +100 SetBackJmpInsSize(5, 100); "
          "i 201 6 5321 256 i 199 6 5319 256 i 202 4 5322 256 i 203 4 5323 256 i 200 6 5320 256 w 30 8 580 "
          "w 31 8 581 w 32 8 582 w 33 8 583 w 40 8 500 w 41 8 501 w 42 8 502 w 43 8 503 w 44 8 504 w 1 6 5125 "
          "w 16 8 5136 w 17 8 5137 w 19 8 5139 w 25 8 5145 w 26 8 5146 w 20 8 5140 i 18 8 5138 4096 "
          "i 15 8 5135 256 i 29 8 5149 256 i 50 8 5170 256 i 27 4 5147 256 i 28 4 5148 256 i 21 8 5141 4096 "
          "i 22 8 5142 4096 i 23 8 5143 4096 i 24 8 5144 4096 o 4 8 5124 o 12 8 5132 o 16 4 5136 Wait(5); o 8 5 5128 "
          "o 17 5 5137 o 15 4 5135 o 18 8 5138 "
          "SET_AXIS_MAP(5, 20, 0, 2); SET_AXIS_SCALE(5, 2, 65536000); SET_MAX_VEL(5, 2, 1000); SET_MAX_ACC(5, 2, "
          "10000); SET_MAX_JERK(5, 2, 1e+06); SET_IOIN_MAP(5, 20, 1, 2, 0, 30); SET_IOIN_MAP(5, 20, 1, 6, 0, 31); "
          "Places(5); ");

  Sleep(2250);
  motor->Set_Max_Vel(20.0);
  motor->Sgo(8.0);
  Sleep(205);  // 4 mm from the start
  using M = C_Interpolation_Voice_Motor;
  CMyArray<double> samples;
  std::string newest;
  const auto tell = [&](int result) {
    newest += result == 1 ? std::to_string(std::lround(samples.GetEndData())) + ' ' : "none ";
  };
  for (const auto get : {&M::Get_Window16, &M::Get_Window17, &M::Get_Window19, &M::Get_Window20, &M::Get_Window25,
                         &M::Get_Window26, &M::Get_Pos_Window})
    tell((*motor.*get)(samples));
  for (int i = 0; i < 5; ++i) tell(motor->Get_Slow_Window(i, samples));
  EXPECT_EQ(samples.GetSize(), 4096);
  for (int i = 0; i < 4; ++i) tell(motor->Get_Fast_Window(i, samples));
  EXPECT_NEAR(samples.GetSize(), 4908, 30);  // these hold more
  for (const int port : {18, 21, 22, 23, 24}) tell(motor->Get_Fifo(port, samples));
  EXPECT_EQ(newest, "0 20 20 4 4 1 4 2047 33 0 1 4 4 20 0 0 0 0 100 0 0 ");

  auto second = Make_Motor();
  EXPECT_EQ(second->Get_Pos_Window(samples), 0);  // mapped by the first: no window of its own
  EXPECT_NEAR(Reads_In(200), 16 * 100, 20);
  motor.reset();
  EXPECT_EQ(Reads_In(200), 0) << "a window thread was left behind";
  EXPECT_EQ(Calls_Of([&] { second.reset(); }), "ReBuildSystem(); ");
  EXPECT_EQ(Make_Motor()->Be_Mapped(), 1);
}

TEST_F(Interpolation_Motor, The_Operator_Decides_About_A_Missing_Device_And_Server) {
  const std::wstring no_server = L"连接服务端失败，请重启服务端，或重启电脑";
  const std::wstring no_drive = L"无法找到ID：20的驱动器,是否重试";
  simulator::Set_Absent(Id, true);
  simulator::Set_Refused_Connects(103);
  for (int yes = 0; yes < 2; ++yes) front->On_Box(no_server, Answer_Yes);
  front->On_Box(no_drive, Answer_Yes);
  const auto motor = Make_Motor();
  EXPECT_EQ(motor->Be_Mapped(), 0);
  const Texts boxes = front->Boxes();
  ASSERT_EQ(boxes.size(), 7U);
  EXPECT_EQ(boxes[3].rfind(L"无法找到ID：20的驱动器\r\n总线上搜索到的设备id\r\nCAN_ID：1 \r\n", 0), 0U);
  // Asked after tries 101 to 103, the last time answered with No; then report and question twice, with Yes and No.
  EXPECT_EQ(boxes, (Texts{no_server, no_server, no_server, boxes[3], no_drive, boxes[3], no_drive}));
  EXPECT_EQ(front->Shown()[0].flags, Box_Yes_No);
  EXPECT_EQ(front->Shown()[4].flags, Box_Yes_No | Box_Stop_Icon);
  EXPECT_EQ(Count("ConnectControlServer"), 104);

  EXPECT_DEATH([&]() noexcept { motor->SetScale(0.0); }(), "SetScale");
  EXPECT_DEATH([&]() noexcept { motor->CheckStop(); }(), "CheckStop");  // an unmapped axis
  EXPECT_DEATH([&]() noexcept { motor->Set_Home_Speed(0.0); }(), "Set_Home_Speed");
  simulator::Set_Absent(Id, false);
  EXPECT_EQ(motor->Map_Once(), 1);
}

class Interpolation_Axis : public Interpolation_Motor {
 protected:
  void Expect_Stands_At(double true_mm, double told_mm = 0.0) {
    Sleep(300);
    EXPECT_NEAR(simulator::True_Position(Id), true_mm, Count_Mm);
    double position = 77.0;
    CMyArray<double> window;
    EXPECT_EQ(m_Motor->Get_Cur_Pos(position) + m_Motor->Get_Pos_Window(window), 2);
    EXPECT_NEAR(position, told_mm, 2 * Count_Mm);
    EXPECT_NEAR(window.GetEndData(), told_mm, 2 * Count_Mm);
    EXPECT_EQ(m_Motor->Get_Time_Index().GetSize(), window.GetSize());
  }
  const std::unique_ptr<C_Interpolation_Voice_Motor> m_Motor = Make_Motor();
};

TEST_F(Interpolation_Axis, Commands_Become_Instructions_And_What_Is_No_Number_Stays_Here) {
  EXPECT_EQ(
      Calls_Of([&] {
        m_Motor->Go_Relative(0.25);
        EXPECT_EQ(m_Motor->Go_Wait(0.75), 1);
        EXPECT_NEAR(simulator::True_Position(Id), 0.75, 0.05);
        EXPECT_EQ(m_Motor->Rapid_Go(0.5), 1);
        m_Motor->Emergency_Stop(5);
        m_Motor->Set_Enable(1);
        m_Motor->Set_Port8(7);
        for (const int value : {100, 250, 1000, 2000, 5000}) m_Motor->Set_Port15(value);
        m_Motor->Set_Port16(9);
        EXPECT_EQ(m_Motor->Set_Port18(1.5), 1);
        EXPECT_EQ(m_Motor->Set_Output_Io(1, 1), 0);
        for (const double scale : {2000.0, -1000.0}) {  // the first turns the axis round and swaps the clamps
          m_Motor->SetScale(scale);
          m_Motor->Set_Current_Pos(2.0);
          m_Motor->Set_Current_Neg(-3.0);
        }
        m_Motor->Reset_Current_Limit();
        EXPECT_EQ(m_Motor->Till_Time(3.7), 1);
        EXPECT_EQ(m_Motor->GetInsBuffLen(), 4095);
        m_Motor->Set_Thread_Num(6);
        EXPECT_EQ(m_Motor->CheckStop(), 1);
      }),
      "USE_LOCAL_REG(5); GET_OUTPUT_POS(5, 2, 500); ADD_R_C(5, 500, 500, 0.25); SGO_R(5, 2, 500); SGO(5, 2, 0.75); "
      "TILLSTOP(5, 2) x 2; Wait(5); +29 RAPID_GO(5, 2, 0.5); TILLTIME(5, 1); TILL_AXIS_PAUSE(0, 2); "
      "CLEAR_THREAD_INS(0, 5); TILL_THREAD_INS_FINISH(0, 5); STOP_S(0, 2); AXIS_RESUME(0, 2); Wait(0); Out(5, 5137, "
      "1); Out(5, 5128, 7); Out(5, 5135, 250) x 2; Out(5, 5135, 1000); Out(5, 5135, 2000) x 2; Out(5, 5136, 9); Out(5, "
      "5138, 1.5); SET_AXIS_SCALE(5, 2, -131072000); Out(5, 5132, -2); Out(5, 5124, 3); Wait(5); SET_AXIS_SCALE(5, 2, "
      "65536000); Out(5, 5124, 2); Out(5, 5132, -3); Wait(5); Out(5, 5124, 50); Out(5, 5132, -50); TILLTIME(5, 3); "
      "Places(5); Places(6); BeAxisRun(2); ");
  using M = C_Interpolation_Voice_Motor;
  Expect_Refusals<M>(*m_Motor, {&M::Send_Go, &M::Go_Wait, &M::Sgo, &M::Go_Relative, &M::Rapid_Go, &M::Set_Max_Vel,
                                &M::Set_Max_Acc, &M::Set_Max_Jerk, &M::Set_Current_Pos, &M::Set_Current_Neg,
                                &M::Set_Port18, &M::SetScale, &M::Zero_Correct, &M::Till_Time});
}

TEST_F(Interpolation_Axis, Status_Reads_Their_Channels) {
  m_Motor->Go_Wait(1.0);
  simulator::Set_Fault_Bits(Id, 6);
  simulator::Set_Temperature(Id, 41.3);
  Sleep(2250);
  double load = 0.0, used = 0.0, error = 0.0, commanded = 77.0, current = 77.0, fresh = 77.0, t = 0.0, board = 0.0;
  int counter = 77, number = 77;
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  uint64_t code = 0, last_code = 0;
  CMyArray<double> samples;
  C_Interpolation_Voice_Motor& m = *m_Motor;
  std::ostringstream told;
  const auto first = [&] {
    told << m.Get_Load(load) << m.Get_Used(used) << m.Get_Error_Value(error) << m.Get_encoder_Error_counter(0, counter)
         << m.Get_encoder_Error_counter(1, counter) << m.Get_Version(ver, bcd_date) << m.Get_Temperature(board, 1)
         << m.Read_Latest(5147, fresh) << m.Read_Latest(5138, fresh) << ' ' << m.Get_Output_Pos(commanded) << ' '
         << m.Get_Sensor() << m.Get_Sensor2() << m.Get_Error(nullptr, nullptr, nullptr, nullptr, &number);
  };
  EXPECT_EQ(Calls_Of(first),
            "Read(5135, 4096); Read(5149, 4096); Read(5170, 4096); Read(5322, 4096); Read(5323, 4096); "
            "Read(5320, 4096); Read(5148, 4096); Read(5147, 4096); Read(5138, 4096) x 2 +1; "  // full: may be old
            "GetCurOutputPos(21); GetCurIoInput(30); GetCurIoInput(31); GetError(0); ");
  // An array takes the first read that works, if empty; the fault words share the last.
  simulator::Set_Silent(Id, true);
  const auto second = [&] {
    told << ' ' << m.Get_Fifo(24, samples) << m.Get_Fifo(24, samples) << m.Read_Latest(5138, fresh)
         << m.Get_Temperature(t, 0) << m.Get_Temperature(t, 0) << m.Get_Error_Code(code) << m.Get_Error_Code2(last_code)
         << m.Get_Error_Code2(last_code = 9) << ReBuildSystem() << m.Get_Fifo(24, samples)
         << m.Get_Window16_Newest(current);
  };
  EXPECT_EQ(Calls_Of(second),
            "Read(5144, 65536) x 2; Read(5138, 4096) x 201 +1; +1 Read(5147, 4096) x 2; Read(5321, 4096); "
            "Read(5319, 4096) x 2; ReBuildSystem(); Read(5144, 65536) x 3 +1; ");
  told << ' ' << std::lround(load) << ' ' << commanded << ' ' << counter << ' ' << code << ' ' << last_code << ' '
       << board << std::hex << ' ' << ver << ' ' << bcd_date;
  EXPECT_EQ(told.str(), "111111111 21 000 10010110101 0 0 0 6 6 49 203 20240518");
  EXPECT_NEAR(current, 0.0, 0.01);
  EXPECT_NEAR(used * 3600.0, 0.48, 0.05);  // seconds since power-up, the newest that the FIFO took
  EXPECT_NEAR(error, 0.01, 0.01);
  EXPECT_NEAR(t, 41.3, 0.05);
}

// The last eleven maps are waited for in 1000 looks, 1 ms apart.
TEST_F(Interpolation_Motor, A_Server_Too_Slow_For_The_Axis_Map_Is_Told) {
  for (const double pace_ms : {90.0, 92.0}) {
    simulator::Reset({.temperature_boards = {Id}, .instruction_ms = pace_ms});
    EXPECT_EQ(Make_Motor()->Be_Mapped(), pace_ms < 91.0 ? 1 : 0);
  }
  EXPECT_EQ(front->Boxes(), (Texts{L"map轴超时"}));
}

// The home sensor may be a bit of the IO card, and its IO numbers may be given.
TEST_F(Interpolation_Motor, A_Sensor_On_The_Card_Is_Mapped_And_Read) {
  C_Interpolation_Voice_Motor motor(Id, 2, 30, 5, 1, 15, 40, 3);
  EXPECT_EQ(Count("SET_IOIN_MAP(5, 15, 4, 3, 0, 30)") + Count("SET_IOIN_MAP(5, 20, 1, 6, 0, 40)"), 2);
  EXPECT_EQ(Count("SET_IOIN_MAP"), 2);
  simulator::Set_Input(3, 1);
  EXPECT_EQ(motor.Get_Sensor(), 1);
  EXPECT_EQ(motor.Get_Sensor2(), 0);
  simulator::Set_Home_Sensor(Id, 6, -1.0, true);
  EXPECT_EQ(motor.Get_Sensor2(), 1);
}

// What a homing asks of the server. first: what leaves the sensor; looks: at the buffer; travel: the time to the
// offset.
static std::string Home_Calls(const std::string& io, const char* away, const char* onto, const char* first, int looks,
                              const char* offset, const char* travel) {
  std::ostringstream calls;
  calls << "Out(5, 5137, 1); SET_MAX_VEL(5, 2, 20); SET_MAX_ACC(5, 2, 5000); SET_MAX_JERK(5, 2, 5e+05); TILLSTOP(5, "
           "2); USE_LOCAL_REG(5); SET_AXIS_ZEROS(5, 2, 0); Out(5, 5124, 50); Out(5, 5132, -50); TILLSTOP(5, 2); "
           "TILLTIME(5, 100); Wait(5); +100 GetCurIoInput("
        << io << "); " << first;
  for (const char* const speed : {"2", "0.2", "0.02"}) {
    const bool off = std::string(speed) == "0.2";
    calls << "SGO(5, 2, " << (off ? away : onto) << "); TILLIO" << (off ? "_NEG" : "") << "(5, " << io
          << "); STOP_S(5, 2); SET_MAX_VEL(5, 2, " << speed << "); ";
  }
  calls << "TILLSTOP(5, 2); SET_AXIS_ZEROS(5, 2, 0); SET_MAX_VEL(5, 2, 0.02); SET_MAX_ACC(5, 2, 5000); SET_MAX_JERK(5, "
           "2, 5e+05); Places(5) x "
        << looks << " +100; TILLSTOP(5, 2); Wait(5); SET_MAX_VEL(5, 2, 20); SGO(5, 2, " << offset
        << "); TILLSTOP(5, 2); SET_AXIS_ZEROS(5, 2, 0); TILLSTOP(5, 2); Wait(5); " << travel
        << "TILLTIME(5, 200); Wait(5); ";
  return calls.str();
}

TEST_F(Interpolation_Axis, Homing_Asks_In_Order_And_Ends_On_The_Edge) {
  EXPECT_EQ(m_Motor->Home_Again(), 0);  // there was none
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor->Go_Home(1, 1.5), 1); }),
            Home_Calls("30", "15", "-15", "", 5, "1.5", "+88 "));
  Expect_Stands_At(Edge_Mm + 1.5);
  EXPECT_EQ(m_Motor->Home_Again(), 1);
  Expect_Stands_At(Edge_Mm + 1.5);
  m_Motor->Go_Wait(-3.0);  // well onto the sensor
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor->Go_Home(1, 0.0), 1); }),
            Home_Calls("30", "15", "-15", "SGO(5, 2, 15); TILLIO_NEG(5, 30); STOP_S(5, 2); ", 4, "0", ""));
  Expect_Stands_At(Edge_Mm);

  // With an approach under a current of 8 A, on the second sensor; and the same again.
  const std::string approach =
      "Out(5, 5137, 1); SET_MAX_VEL(5, 2, 20); SET_MAX_ACC(5, 2, 5000); SET_MAX_JERK(5, 2, 1e+06); TILLSTOP(5, 2); "
      "USE_LOCAL_REG(5); SET_AXIS_ZEROS(5, 2, 0); Out(5, 5132, -8); Wait(5); Out(5, 5124, 8); Wait(5); SGO(5, 2, 1); "
      "TILLSTOP(5, 2); SGO(5, 2, -1); TILLSTOP(5, 2); SGO(5, 2, 0); TILLSTOP(5, 2); Out(5, 5124, 50); Out(5, 5132, "
      "-50); Wait(5); +227 ";
  EXPECT_EQ(Calls_Of([&] { EXPECT_EQ(m_Motor->Go_Home_Approach(0, 0.0, 8.0, 1.0, -1.0), 1); }),
            approach + Home_Calls("31", "-15", "15", "", 6, "0", ""));
  Expect_Stands_At(Second_Edge_Mm);
  EXPECT_EQ(Calls_Of([&] { m_Motor->Home_Again(); }),
            approach + Home_Calls("31", "-15", "15", "SGO(5, 2, -15); TILLIO_NEG(5, 31); STOP_S(5, 2); ", 2, "0", ""));
  m_Motor->Set_Home_Speed(30.0);
  m_Motor->Set_Home_Stroke(12.0);
  EXPECT_EQ(m_Motor->Go_Home(1, 0.0), 1);  // back on the first
  EXPECT_EQ(Count("SET_MAX_VEL(5, 2, 30)"), 2);
  EXPECT_EQ(Count("SGO(5, 2, 12)"), 1);
  Expect_Stands_At(Edge_Mm);
  EXPECT_EQ(m_Motor->Zero_Correct(0.5), 1);  // positions count from this place, less the half millimetre
  Expect_Stands_At(Edge_Mm, -0.5);
  EXPECT_TRUE(front->Boxes().empty());
}

TEST_F(Interpolation_Axis, A_Sensor_That_Never_Switches_Is_Told) {
  simulator::Set_Home_Sensor(Id, 2, -50.0, false);
  // While the box stands somebody queues more: the watch goes on and tells it again. What the second box leaves is done
  // within a pass, and the watch ends.
  front->On_Box(L"回零超时", Answer_Ok, 0, [] { TILLTIME(5, 60000); });
  front->On_Box(L"回零超时", Answer_Ok, 0, [] { TILLTIME(5, 50); });
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor->Go_Home(1, 0.0), -1);
  const auto boxes = front->Shown();
  ASSERT_EQ(boxes.size(), 2U);
  EXPECT_EQ(boxes[0].text.rfind(L"CANID:20回零超时，请检查回零传感器和栅尺-", 0), 0U);
  EXPECT_NEAR(boxes[0].at_ms - before, 2800.0, 200.0);  // 15 mm at 20 mm/s may take 2500 ms
  EXPECT_NEAR(boxes[1].at_ms - boxes[0].at_ms, 100.0, 1.0);
  EXPECT_EQ(Count("ClearInsBuffer"), 2);
  EXPECT_EQ(Count("SGO(5, 2, 0)"), 3);  // back after each box, and to the offset at the end
}

TEST_F(Interpolation_Axis, The_Check_Finds_The_Stops_And_Names_Its_Failure) {
  const auto go = [](const std::string& mm) {
    return std::string("SGO(5, 2, ").append(mm).append("); TILLSTOP(5, 2) x 2; Wait(5); ");
  };
  const std::string middle = "-0.0004999999999997229";
  // The stops are found at 1 A and 10 mm/s; then one step out, one back, and five times end, middle, end, middle.
  std::string check = "Wait(5); Out(5, 5124, 1); Out(5, 5132, -1); Wait(5); SET_MAX_VEL(5, 2, 10); " + go("15") +
                      "+1507 " + go("-15") + "+3007 " + go("0") + "+1507 " + go("-10.001") + "+1007 " + go("10") +
                      "+2007 ";
  for (int pass = 0; pass < 5; ++pass)
    check += go("10") + (pass == 0 ? "" : "+1007 ") + go(middle) + "+1007 " + go("-10.001") + "+1007 " + go(middle) +
             (pass < 4 ? "+1007 " : "");
  double max = 0.0, min = 0.0;
  simulator::Journal_Clear();
  EXPECT_EQ(m_Motor->Home_And_Check(9, max, min), 1);
  EXPECT_EQ(Calls(), check);
  EXPECT_NEAR(max, 10.0, 0.05);
  EXPECT_NEAR(min, -10.0, 0.05);
  m_Motor->Go_Relative(5.0);
  EXPECT_EQ(m_Motor->CheckStop() + m_Motor->Home_And_Check(9, max, min), 0);  // still moving
  m_Motor->Till_Stop(1);
  EXPECT_NEAR(simulator::True_Position(Id), 5.0, 0.05);
  simulator::Set_Silent(Id, true);
  RESET_INPUT_DATA_FIFO(5, 5320, 256);  // of the version
  EXPECT_EQ(m_Motor->Home_And_Check(9, max, min), 0);
  EXPECT_EQ(front->Boxes(), (Texts{L"ID:9的驱动器无法回零", L"ID:9的驱动器无法获取版本号"}));
}

}  // namespace orsanta
