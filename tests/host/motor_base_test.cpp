// The supervisor at its serial lines, with both ends real, and the loop behind them.
#include "host/motor_base.h"

#include <chrono>
#include <thread>
#include <tuple>

#include "common/other_process.h"
#include "common/pty.h"
#include "common/resources.h"
#include "common/simulated_test.h"
#include "drive/motor.h"
#include "host/task_app.h"
#include "station/link_settings.h"
#include "station/voice_motor.h"

namespace orsanta {

constexpr int Host_Port = 1;

class Supervisor : public C_Simulated_Test {
 protected:
  void Start(const std::vector<int>& can_ids, int host_port, int io_mode = 0) {
    base = std::make_unique<C_VoiceMotorBase>(Resource_Table(can_ids), host_port, 19200, 1, io_mode);
    Sleep(1000);  // the first lift-offs end
  }
  C_VoiceMotor& Station(int index) { return *base->StationList[index]; }

  // The kernel hands bytes over in real time, while simulated time stands still.
  static void Let_Bytes_Cross() { std::this_thread::sleep_for(std::chrono::milliseconds(20)); }
  static void Send(C_Pty& line, const char* bytes) {
    line.Send(bytes);
    Let_Bytes_Cross();
    Sleep(3000);  // a measurement and its lift-off end
  }

  std::unique_ptr<C_VoiceMotorBase> base;
};

TEST_F(Supervisor, Result_Lines_Are_Exact) {
  simulator::Reset({.first_drive_id = 0x1A});
  C_Pty host(Host_Port);
  C_Pty link(2);
  Store_Link(0x1A, 2);
  Start({0x1A}, Host_Port);
  EXPECT_EQ(host.Rate(), 19200);
  EXPECT_EQ(base->AdvancedUser, 1);
  const std::tuple<int, double, double, std::string, std::string> cases[] = {
      {1, 1.234, 50.0, "1a1001234 0050\n", "  1234\n"},
      {0, -0.5, 50.0, "1a0-00500 0050\n", "  -500\n"},
      {1, 1234.5678, 12345.6, "1a11234568 12346\n", "1234568\n"},
      {0, -99.0, 200.0, "1a0-99000 0200\n", "-99000\n"},
      {1, 0.1, 0.0, "1a1000100 0000\n", "   100\n"},
      {1, -0.1001, 0.0, "1a1-00100 0000\n", "  -100\n"},
      {1, -0.0004, 0.0, "1a1-00000 0000\n", "    -0\n"},
      {1, -4321.0, -7.0, "1a1-4321000 -007\n", "-4321000\n"}};
  for (const auto& [valid, thickness_mm, force, line, link_line] : cases) {
    Station(0).Ans_Valid = valid;
    Station(0).Test_Ans = thickness_mm;
    Station(0).Val_Force_Set[0] = force;
    const double begin_ms = Now_Ms();
    base->OnTestResult(&Station(0));
    EXPECT_EQ(Now_Ms() - begin_ms, std::abs(thickness_mm) > 0.1 ? 1.0 : 0.0);  // the line rests before most values
    EXPECT_EQ(host.Take_At_Least(line.size()), line);
    EXPECT_EQ(link.Take_At_Least(link_line.size()), link_line);
  }
}

TEST_F(Supervisor, Answers_The_Status_Query_And_Nothing_Else) {
  simulator::Set_Absent(11, true);
  C_Pty host(Host_Port);
  Start({10, 11, 12}, Host_Port);
  const std::string answer = "ID:a State:1\nID:b State:0\nID:c State:1\n";
  for (const char* query : {"C", "C", "CCC", "xTC\r\n", "CT"}) {
    Send(host, query);
    EXPECT_EQ(host.Take_At_Least(answer.size()), answer) << query;
  }
  const auto stays_silent = [&](const char* bytes) {
    Send(host, bytes);
    Let_Bytes_Cross();
    return host.Take() == "" && base->BeAtLeaseOneDelayTaskInProcess() == 0;
  };
  EXPECT_TRUE(stays_silent("Tcx T"));
  base->LoopPaused = 1;  // the panel holds the loop: no answer until it lets go
  EXPECT_TRUE(stays_silent("C"));
  base->LoopPaused = 0;
  Sleep(1000);
  EXPECT_EQ(host.Take_At_Least(answer.size()), answer);

  Station(0).Motor_Ready = 0;  // as a station that rests
  simulator::Set_Silent(12, true);
  Station(2).m_pMotor->Reset_Data_Fifo();  // what waits from before
  Send(host, "C");
  EXPECT_EQ(host.Take_At_Least(answer.size()), "ID:a State:0\nID:b State:0\nID:c State:0\n");
}

// Whoever reports waits for the lock, and does what comes after the report only then.
TEST_F(Supervisor, Io_Lock_Holds_Back_Every_Report) {
  C_Pty host(Host_Port);
  simulator::Set_Input(1, 1);
  Start({1}, Host_Port, 1);
  C_VoiceMotor& station = Station(0);
  station.Set_Cur_BaseDistance(7.0005F);
  const auto state = [&] {
    Sleep(3000);
    return std::to_string(simulator::Get_Output(1)) + std::to_string(station.Ans_Ready) +
           std::to_string(station.Get_Test_Finish()) + std::to_string(station.Get_Force_Back_Finish()) + host.Take();
  };
  base->IoLock.Lock();
  simulator::Set_Input(1, 0);
  EXPECT_EQ(state(), "1000");  // output, result, measured, lifted: the loop has taken the last, and starts one task
  base->IoLock.Unlock();
  Sleep(1);
  base->IoLock.Lock();
  EXPECT_EQ(state(), "0100");
  base->IoLock.Unlock();
  EXPECT_EQ(state(), "011011-02000 0200\n");
  base->IoLock.Lock();
  base->do_test(1, Task_Force_Back);
  EXPECT_EQ(state(), "0110");
  Send(host, "C");
  EXPECT_EQ(state(), "0110");
  base->IoLock.Unlock();
  EXPECT_EQ(state(), "0110ID:1 State:1\n11-02000 0200\n");  // and the loop goes on
}

using Supervisor_DeathTest = Supervisor;

// Disabled among the others, since it would end any of them that starts a system meanwhile; ctest runs it alone.
TEST_F(Supervisor_DeathTest, DISABLED_A_Second_Process_Of_The_Name_Ends_At_Once) {
  const auto run = [] { execl("/bin/sleep", "Orsanta.exe", "60", nullptr); };
  const C_Other_Process first(run);
  Start({1}, 0);  // one of the name may run: it could be this one
  base.reset();
  const C_Other_Process second(run);
  front->On_Box(L"Orsanta.exe 已经在运行", Answer_Ok, 0, [] { std::fputs("told", stderr); });
  EXPECT_EXIT(Start({1}, 0), ::testing::ExitedWithCode(0), "told");
}

TEST_F(Supervisor, Goes_On_Without_A_Host_Port_That_Does_Not_Open) {
  std::filesystem::create_symlink("/dev/orsanta_no_such_device", "COM9");
  Start({1}, 9);
  EXPECT_EQ(front->Boxes(), std::vector<std::wstring>{L"无法打开串口9"});
  EXPECT_EQ(base->HostSerialOpen, 0);

  const C_Pty line(2);
  base.reset();
  base = std::make_unique<C_VoiceMotorBase>(Resource_Table({1}), 2, 0, 0, 0);
  EXPECT_EQ(front->Boxes().back(), L"无法打开串口2：波特率0无法设定");
  EXPECT_EQ(CComSerial().OpenCom(2), 1) << "the port was given back";
}

// One T is one measurement and one lift-off, with the result on both lines; a T with a byte behind it is lost. The loop
// serves each station in its turn.
TEST_F(Supervisor, A_Trigger_Byte_Runs_The_Whole_Handshake) {
  C_Pty host(Host_Port);
  C_Pty link(2);
  Store_Link(1, 2);
  Start({2, 1}, Host_Port);
  Station(1).Set_Cur_BaseDistance(7.0006F);  // a part of 2 mm on the anvil at 9 mm reads 0, with the dent of the force
  simulator::Place_Part(1, 1.5);
  for (int round = 0; round < 3; ++round) {
    Send(link, "Tx");
    EXPECT_EQ(Station(1).Force_Back_Finish, 1);
    Send(link, "T");
    EXPECT_EQ(link.Take_At_Least(7), "  -500\n");
    EXPECT_EQ(host.Take_At_Least(14), "11-00500 0200\n");
    EXPECT_EQ(simulator::True_Force(1), 0.0);  // lifted by itself
    EXPECT_EQ(Station(1).Force_Back_Finish, 1);
  }
}

// The IO input stands at the measuring level all the time, and counts only once the link is closed for good.
TEST_F(Supervisor, A_Link_That_Is_Replaced_Starts_Nothing) {
  C_Pty link(2);
  Store_Link(1, 2);
  Start({1}, 0, 1);
  link.Pull_Out();
  bool started = false;
  front->On_Box(L"打开电机1串口2失败", Answer_Ok, 2000, [&] { started = Station(0).Force_Back_Finish == 0; });
  Station(0).Renew_Debug_Com();
  EXPECT_FALSE(started);
  Sleep(100);
  EXPECT_EQ(Station(0).Force_Back_Finish, 0);
}

}  // namespace orsanta
