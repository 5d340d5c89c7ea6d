#include "drive/interpolation_motor.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "common/temp_folder.h"
#include "drive/room.h"

namespace orsanta {
namespace {

using Texts = std::vector<std::wstring>;
using Lines = std::vector<std::string>;

class C_Interpolation_Test : public C_Room {
 protected:
  static constexpr int Id = 20;
  static constexpr int First_Channel = Id * 256;
  static constexpr int Axis = 2;
  static constexpr int Sensor = 30;
  static constexpr int Server_Thread = 5;
  static constexpr double Count_Mm = 0.001;  // one encoder count at the start scale

  C_Interpolation_Test() {
    bench::Settings settings;
    settings.temperature_boards = {Id};
    bench::Reset(settings);
  }
  static std::unique_ptr<C_Interpolation_Voice_Motor> Make_Motor() {
    return std::make_unique<C_Interpolation_Voice_Motor>(Id, Axis, Sensor, Server_Thread, 1, -1, -1, -1);
  }
  static std::string Channel(int port) { return std::to_string(First_Channel + port); }
};

TEST_F(C_Interpolation_Test, Connects_And_Maps_In_Order) {
  auto motor = Make_Motor();
  EXPECT_EQ(motor->Be_Mapped(), 1);
  Lines expected{"InitDevice_PC_Local_Controler(1, 0)",
                 "ConnectControlServer(\"\", 0)",
                 "ReBuildSystem()",
                 "OpenCloseErrorMsgAutoAssert(0)",
                 "ConnectControlServer(\"\", 0)",
                 "OpenCloseErrorMsgAutoAssert(0)",
                 "SetBackJmpInsSize(100)"};
  const auto input = [&](int port, int format, int channel, int depth) {
    expected.push_back("SET_INPUT_DATA_MAP(20, " + std::to_string(port) + ", " + std::to_string(format) + ", " +
                       std::to_string(channel) + ")");
    expected.push_back("RESET_INPUT_DATA_FIFO(" + std::to_string(channel) + ", " + std::to_string(depth) + ")");
  };
  const auto window = [&](int port, int format, int channel) {
    input(port, format, channel, 4096);
    expected.push_back("WaitForAllInsFinish()");
  };
  const int c = First_Channel;
  input(201, 6, c + 201, 256);
  input(199, 6, c + 199, 256);
  input(202, 4, c + 202, 256);
  input(203, 4, c + 203, 256);
  input(200, 6, c + 200, 256);
  for (int i = 0; i < 4; ++i) window(30 + i, 8, 500 + 80 + i);
  for (int i = 0; i < 5; ++i) window(40 + i, 8, 400 + 100 + i);
  window(1, 6, c + 5);
  for (const int port : {16, 17, 19, 25, 26, 20}) window(port, 8, c + port);
  input(18, 8, c + 18, 4096);
  for (const int port : {15, 29, 50}) input(port, 8, c + port, 256);
  for (const int port : {27, 28}) input(port, 4, c + port, 256);
  for (const int port : {21, 22, 23, 24}) input(port, 8, c + port, 4096);
  const auto output = [&](int port, int format) {
    expected.push_back("SET_OUTPUT_DATA_MAP(20, " + std::to_string(port) + ", " + std::to_string(format) + ", " +
                       Channel(port) + ")");
  };
  output(4, 8);
  output(12, 8);
  output(16, 4);
  expected.push_back("WaitForAllInsFinish()");
  output(8, 5);
  output(17, 5);
  output(15, 4);
  output(18, 8);
  for (const char* call :
       {"SET_AXIS_MAP(20, 0, 2)", "SET_AXIS_SCALE(2, 65536000)", "SET_MAX_VEL(2, 1000)", "SET_MAX_ACC(2, 10000)",
        "SET_MAX_JERK(2, 1e+06)", "SET_IOIN_MAP(20, 1, 2, 0, 30)", "SET_IOIN_MAP(20, 1, 6, 0, 31)"}) {
    expected.push_back(call);
  }
  EXPECT_EQ(Calls([](const bench::Journal_Entry& call) {
              return call.function != "CheckDeviceExist" && call.function != "GetThreadInsBufferRemainCount";
            }),
            expected);

  // All sixteen windows run, the fast ones longer than the rest.
  Sleep(9000);
  CMyArray<double> samples;
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(motor->Get_Fast_Window(i, samples), 1);
    EXPECT_NEAR(samples.GetSize(), 4500, 30);
  }
  for (int i = 0; i < 5; ++i) EXPECT_EQ(motor->Get_Slow_Window(i, samples), 1);
  EXPECT_EQ(samples.GetSize(), 4096);
  EXPECT_EQ(motor->Get_Window17(samples), 1);
  EXPECT_EQ(motor->Get_Window19(samples), 1);
  EXPECT_EQ(motor->Get_Window20(samples), 1);
  EXPECT_EQ(motor->Get_Window25(samples), 1);
  EXPECT_EQ(motor->Get_Window26(samples), 1);
  EXPECT_EQ(motor->Get_Window16(samples), 1);
  EXPECT_EQ(motor->Get_Time_Index().GetSize(), samples.GetSize());
  double newest = 0.0;
  EXPECT_EQ(motor->Get_Window16_Newest(newest), 1);
  EXPECT_NE(newest, 0.0);
  for (const int port : {18, 21, 22, 23, 24}) EXPECT_EQ(motor->Get_Fifo(port, samples), 1) << port;

  // The last object that goes rebuilds the server, and the next one maps anew.
  auto second = Make_Motor();
  EXPECT_EQ(second->Be_Mapped(), 1);
  EXPECT_EQ(second->Get_Pos_Window(samples), 0);
  motor.reset();
  bench::Journal_Clear();
  second.reset();
  EXPECT_EQ(All_Calls(), Lines{"ReBuildSystem()"});
  EXPECT_EQ(Make_Motor()->Be_Mapped(), 1);
}

TEST_F(C_Interpolation_Test, The_Operator_Decides_About_A_Missing_Device_And_Server) {
  const std::wstring no_server = L"连接服务端失败，请重启服务端，或重启电脑";
  const std::wstring no_drive = L"无法找到ID：20的驱动器,是否重试";
  bench::Set_Absent(Id, true);
  bench::Set_Refused_Connects(102);
  m_Front->On_Box(no_server, Answer_Yes);
  m_Front->On_Box(no_drive, Answer_Yes);
  const auto motor = Make_Motor();
  EXPECT_EQ(motor->Be_Mapped(), 0);
  const Texts boxes = m_Front->Boxes();
  ASSERT_EQ(boxes.size(), 6U);  // asked after tries 101 and 102; then report and question twice, Yes and No
  EXPECT_EQ(boxes[0], no_server);
  EXPECT_EQ(boxes[1], no_server);
  EXPECT_EQ(boxes[2].rfind(L"无法找到ID：20的驱动器\r\n总线上搜索到的设备id\r\nCAN_ID：1 \r\n", 0), 0U);
  EXPECT_EQ(boxes[3], no_drive);
  EXPECT_EQ(boxes[4], boxes[2]);
  EXPECT_EQ(boxes[5], no_drive);
  EXPECT_EQ(m_Front->Shown()[3].flags, Box_Yes_No | Box_Stop_Icon);
  EXPECT_EQ(Calls_Of("ConnectControlServer").size(), 103U);

  bench::Set_Absent(Id, false);
  EXPECT_EQ(motor->Map_Once(), 1);
}

TEST_F(C_Interpolation_Test, Commands_Become_Instructions) {
  const auto owner = Make_Motor();
  C_Interpolation_Voice_Motor& motor = *owner;
  bench::Journal_Clear();
  motor.Go_Relative(0.25);
  motor.Rapid_Go(0.5);
  EXPECT_EQ(motor.Go_Wait(0.75), 1);
  EXPECT_NEAR(bench::True_Position(Id), 0.75, 0.05);
  motor.Emergency_Stop(Server_Thread);
  EXPECT_EQ(All_Calls(), (Lines{"USE_LOCAL_REG()", "GET_OUTPUT_POS(2, 500)", "ADD_R_C(500, 500, 0.25)", "SGO_R(2, 500)",
                                "RAPID_GO(2, 0.5)", "TILLTIME(1)", "SGO(2, 0.75)", "TILLSTOP(2)", "TILLSTOP(2)",
                                "WaitForAllInsFinish()", "TILL_AXIS_PAUSE(2)", "CLEAR_THREAD_INS(5)",
                                "TILL_THREAD_INS_FINISH(5)", "STOP_S(2)", "AXIS_RESUME(2)", "WaitForAllInsFinish()"}));
  EXPECT_EQ(bench::Journal().back().thread, 0);

  bench::Journal_Clear();
  motor.Set_Port15(100);
  motor.Set_Port15(5000);
  motor.Set_Port8(3);
  motor.Set_Port16(4);
  motor.Set_Port18(2.5);
  motor.Set_Enable(1);
  motor.Reset_Current_Limit();
  motor.Set_Current_Pos(2.0);
  motor.Set_Current_Neg(-3.0);
  motor.SetScale(2000.0);  // turns the axis round and swaps the clamps
  motor.Set_Current_Pos(2.0);
  motor.Set_Current_Neg(-3.0);
  motor.SetScale(-1000.0);
  motor.Set_Current_Pos(2.0);
  Lines expected;
  const auto out = [&](int port, const char* value) {
    expected.push_back("OUTPUT_DATA(" + Channel(port) + ", " + value + ")");
  };
  out(15, "250");
  out(15, "2000");
  out(8, "3");
  out(16, "4");
  out(18, "2.5");
  out(17, "1");
  out(4, "50");
  out(12, "-50");
  out(4, "2");
  out(12, "-3");
  expected.push_back("WaitForAllInsFinish()");
  expected.push_back("SET_AXIS_SCALE(2, -131072000)");
  out(12, "-2");
  out(4, "3");
  expected.push_back("WaitForAllInsFinish()");
  expected.push_back("SET_AXIS_SCALE(2, 65536000)");
  out(4, "2");
  EXPECT_EQ(All_Calls(), expected);
}

TEST_F(C_Interpolation_Test, Broken_Preconditions_End_The_Process) {
  bench::Set_Absent(Id, true);  // an unmapped device, and no thread that a child process would miss
  const auto owner = Make_Motor();
  C_Interpolation_Voice_Motor& motor = *owner;
  const C_Temp_Folder folder;
  int counter = 0;
  EXPECT_DEATH([&]() noexcept { motor.SetScale(0.0); }(), "SetScale");
  EXPECT_DEATH([&]() noexcept { motor.Get_encoder_Error_counter(2, counter); }(), "Get_encoder_Error_counter");
  EXPECT_DEATH([&]() noexcept { motor.CheckStop(); }(), "CheckStop");
}

TEST_F(C_Interpolation_Test, Status_And_Positions) {
  const auto owner = Make_Motor();
  C_Interpolation_Voice_Motor& motor = *owner;
  motor.Sgo(3.0);
  EXPECT_EQ(motor.CheckStop(), 0);
  EXPECT_GT(motor.GetInsBuffLen(), 0);
  motor.Till_Stop(1);
  EXPECT_EQ(motor.CheckStop(), 1);
  Sleep(200);
  double position = 0.0;
  EXPECT_EQ(motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, 3.0, 2 * Count_Mm);
  EXPECT_NEAR(position / Count_Mm, std::round(position / Count_Mm), 1e-6);  // whole counts
  CMyArray<double> window;
  EXPECT_EQ(motor.Get_Pos_Window(window), 1);
  EXPECT_NEAR(window.GetEndData(), bench::True_Position(Id), 0.002);
  EXPECT_EQ(motor.Get_Time_Index().GetSize(), window.GetSize());
  EXPECT_EQ(motor.Zero_Correct(0.5), 1);  // from here on positions count from this place, less the half millimetre
  EXPECT_EQ(motor.Get_Cur_Pos(position), 1);
  EXPECT_NEAR(position, -0.5, 2 * Count_Mm);

  bench::Set_Fault_Bits(Id, 6);
  Sleep(600);  // the fault FIFO holds old words; the first read takes them
  uint64_t code = 0;
  motor.Get_Error_Code(code);
  Sleep(10);
  EXPECT_EQ(motor.Get_Error_Code(code), 1);
  EXPECT_EQ(code, 6U);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  EXPECT_EQ(motor.Get_Version(ver, bcd_date), 1);
  EXPECT_NE(bcd_date, 0U);
  motor.Sgo(NAN);
  wchar_t text[100];
  int thread = 0;
  int point = 0;
  int length = 100;
  int number = 0;
  EXPECT_EQ(motor.Get_Error(&thread, &point, text, &length, &number), 1);
  EXPECT_EQ(thread, Server_Thread);

  bench::Set_Silent(Id, true);
  motor.Get_Error_Code2(code);
  code = 9;
  EXPECT_EQ(motor.Get_Error_Code2(code), 0);
  EXPECT_EQ(code, 6U);  // the word of either port, while none waits
  double value = 77.0;
  EXPECT_EQ(motor.Get_Load(value), 1);
  value = 77.0;
  const double before = Now_Ms();
  EXPECT_EQ(motor.Read_Latest(First_Channel + 15, value), 0);
  EXPECT_EQ(Now_Ms() - before, 201.0);
  EXPECT_EQ(value, 77.0);
}

TEST_F(C_Interpolation_Test, Temperature_Both_Ways) {
  const auto motor = Make_Motor();
  for (const double celsius : {-10.0, 25.0, 41.3, 80.0}) {
    bench::Set_Temperature(Id, celsius);
    double t = 0.0;
    motor->Get_Temperature(t, 0);  // takes what waits from before
    motor->Get_Temperature(t, 1);
    Sleep(10);
    EXPECT_EQ(motor->Get_Temperature(t, 0), 1);
    EXPECT_NEAR(t, celsius, 0.15);
    EXPECT_EQ(motor->Get_Temperature(t, 1), 1);
    EXPECT_EQ(t, std::round(t));  // as it comes
    EXPECT_NEAR(t, celsius, 10.0);
  }
  bench::Set_Silent(Id, true);
  double t = 0.0;
  motor->Get_Temperature(t, 0);
  t = 77.0;
  const double before = Now_Ms();
  EXPECT_EQ(motor->Get_Temperature(t, 0), 0);
  EXPECT_EQ(t, 77.0);
  EXPECT_EQ(Now_Ms(), before);  // no retry
}

// --- Homing ---

class C_Axis_Homing_Test : public C_Interpolation_Test {
 protected:
  static constexpr double Edge_Mm = -4.0;
  static constexpr double Second_Edge_Mm = 3.25;

  C_Axis_Homing_Test() : m_Owner(Make_Motor()), m_Motor(*m_Owner) {
    bench::Set_Home_Sensor(Id, 2, Edge_Mm, false);
    bench::Set_Home_Sensor(Id, 6, Second_Edge_Mm, true);
    bench::Journal_Clear();
  }
  int Count(const std::string& call) const {
    int count = 0;
    for (const std::string& line : All_Calls()) {
      if (line == call) ++count;
    }
    return count;
  }
  void Expect_Stands_At(double true_mm) {
    Sleep(300);
    EXPECT_NEAR(bench::True_Position(Id), true_mm, Count_Mm);
  }

  std::unique_ptr<C_Interpolation_Voice_Motor> m_Owner;
  C_Interpolation_Voice_Motor& m_Motor;
};

TEST_F(C_Axis_Homing_Test, Ends_On_The_Edge_From_Off_And_From_On_The_Sensor) {
  EXPECT_EQ(m_Motor.Home_Again(), 0);     // there was none
  for (int pass = 0; pass < 2; ++pass) {  // the first from off the sensor, the second from on it
    bench::Journal_Clear();
    EXPECT_EQ(m_Motor.Go_Home(1, 0.0), 1);
    Expect_Stands_At(Edge_Mm);
    EXPECT_EQ(Count("TILLIO(30)"), 2);
    EXPECT_EQ(Count("TILLIO_NEG(30)"), 1 + pass);
    double position = 77.0;
    EXPECT_EQ(m_Motor.Get_Cur_Pos(position), 1);
    EXPECT_NEAR(position, 0.0, 2 * Count_Mm);
    m_Motor.Go_Wait(-1.0);  // well onto the sensor
    EXPECT_EQ(m_Motor.Get_Sensor(), 1);
  }
  bench::Journal_Clear();
  m_Motor.Set_Home_Speed(10.0);
  EXPECT_EQ(m_Motor.Home_Again(), 1);
  Expect_Stands_At(Edge_Mm);
  for (const char* limit : {"SET_MAX_VEL(2, 1)", "SET_MAX_VEL(2, 0.1)", "SET_MAX_VEL(2, 0.01)"})
    EXPECT_GE(Count(limit), 1);
  EXPECT_EQ(m_Motor.Go_Home(1, 1.5), 1);
  Expect_Stands_At(Edge_Mm + 1.5);
  EXPECT_TRUE(m_Front->Boxes().empty());
}

TEST_F(C_Axis_Homing_Test, Approach_Homes_On_The_Second_Sensor) {
  EXPECT_EQ(m_Motor.Go_Home_Approach(0, 0.0, 8.0, 1.0, -1.0), 1);
  Expect_Stands_At(Second_Edge_Mm);
  EXPECT_EQ(Count("TILLIO(31)"), 2);
  bench::Journal_Clear();
  EXPECT_EQ(m_Motor.Home_Again(), 1);  // with the approach
  EXPECT_EQ(Count("OUTPUT_DATA(" + Channel(4) + ", 8)"), 1);
  Expect_Stands_At(Second_Edge_Mm);
  EXPECT_EQ(m_Motor.Go_Home(1, 0.0), 1);  // back on the first sensor
  Expect_Stands_At(Edge_Mm);
}

TEST_F(C_Axis_Homing_Test, A_Sensor_That_Never_Switches_Is_Told) {
  bench::Set_Home_Sensor(Id, 2, -50.0, false);
  const double before = Now_Ms();
  EXPECT_EQ(m_Motor.Go_Home(1, 0.0), -1);
  const Texts boxes = m_Front->Boxes();
  ASSERT_GE(boxes.size(), 1U);
  EXPECT_EQ(boxes[0].rfind(L"CANID:20回零超时，请检查回零传感器和栅尺-", 0), 0U);
  EXPECT_GE(m_Front->Shown()[0].at_ms - before, 2600.0);  // a stroke of 15 mm at 20 mm/s may take 2500 ms
  EXPECT_LT(m_Front->Shown()[0].at_ms - before, 3000.0);
  EXPECT_EQ(Count("ClearInsBuffer()"), static_cast<int>(boxes.size()));
}

TEST_F(C_Axis_Homing_Test, Check_Finds_The_Stops_And_Names_Its_Failure) {
  double max = 0.0;
  double min = 0.0;
  EXPECT_EQ(m_Motor.Home_And_Check(9, max, min), 1);
  EXPECT_NEAR(max, 10.0, 0.05);
  EXPECT_NEAR(min, -10.0, 0.05);
  EXPECT_TRUE(m_Front->Boxes().empty());

  m_Motor.Sgo(5.0);
  EXPECT_EQ(m_Motor.Home_And_Check(9, max, min), 0);
  m_Motor.Till_Stop(1);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  bench::Set_Silent(Id, true);
  m_Motor.Get_Version(ver, bcd_date);
  EXPECT_EQ(m_Motor.Home_And_Check(9, max, min), 0);
  EXPECT_EQ(m_Front->Boxes(), (Texts{L"ID:9的驱动器无法回零", L"ID:9的驱动器无法获取版本号"}));
}

}  // namespace
}  // namespace orsanta
