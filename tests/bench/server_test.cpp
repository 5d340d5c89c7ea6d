// The motion server: FIFOs, instruction threads and their waits, connection, errors, IO, many callers at once.
#include <atomic>
#include <cstdlib>
#include <limits>
#include <thread>

#include "bench_line.h"

namespace {

using bench_test::C_Test_Drive;
using bench_test::Connect;
using bench_test::Map_Input;
using bench_test::Take;
using orsanta::Now_Ms;
using orsanta::Sleep;

struct Error {
  int found = 0, thread = 0, point = 0, length = 200, number = 0;
  wchar_t text[200] = L"";
  Error() { found = GetError(&thread, &point, text, &length, &number); }
};

TEST(Fifo, Keeps_Old_Samples_When_Full_And_Loses_Only_What_A_Reset_Finds) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  Map_Input(1, 1, 4, 4, 25, 8);
  Sleep(101);  // 50 samples, 8 places
  double values[16];
  uint64_t first[16], later[16];
  int count = -1;
  ASSERT_EQ(GetInputChannelData(25, 3, &count, values, first), 1);
  EXPECT_EQ(count, 3);
  ASSERT_EQ(GetInputChannelData(25, 16, &count, values, first + 3), 1);
  EXPECT_EQ(count, 5);
  for (int i = 1; i < 8; ++i) EXPECT_EQ(first[i] - first[i - 1], first[1] - first[0]);

  EXPECT_EQ(GetInputChannelData(25, 16, &count, values, nullptr), 1) << "an empty FIFO is no failure";
  EXPECT_EQ(count, 0);
  Sleep(6);
  GetInputChannelData(25, 16, &count, values, later);
  EXPECT_EQ(count, 3);
  EXPECT_GT(later[0] - first[7], 10 * (first[1] - first[0])) << "the samples that found it full were kept";

  Sleep(6);
  RESET_INPUT_DATA_FIFO(1, 25, 4);  // three samples are in it, and no others are lost
  GetInputChannelData(25, 16, &count, values, nullptr);
  EXPECT_EQ(count, 0);
  Sleep(6);
  GetInputChannelData(25, 16, &count, values, first);
  EXPECT_EQ(count, 3);
  EXPECT_EQ(first[0] - later[2], 4 * (later[2] - later[1]));
  Sleep(100);
  EXPECT_EQ(Take(25).size(), 4u);

  count = 7;
  EXPECT_EQ(GetInputChannelData(26, 16, &count, values, nullptr), 0);  // never mapped
  EXPECT_EQ(count, 0);
}

TEST(Fifo, Carries_The_Width_Of_The_Port_And_Goes_Over_To_A_New_Port) {
  orsanta::C_Simulated_Clock clock(1);
  bench::Settings settings;
  settings.noise_mm = 0.0;
  settings.anvil_mm = 50.0;
  settings.force = {{0.0, 100.0, 0.0, 0.0, 0.0}};
  Connect(settings);
  const C_Test_Drive drive(1);
  drive.Speed(200.0);
  drive.Go_And_Wait(40.0);
  Map_Input(1, 1, 4, 6, 900, 16);
  Sleep(3);
  ASSERT_FALSE(Take(900).empty());
  Sleep(3);
  const double wide = Take(900).back();
  EXPECT_NEAR(wide, 40.0 * bench_test::Raw_Per_Mm, 0.002 * bench_test::Raw_Per_Mm);
  EXPECT_NEAR(Take(drive.Position()).back(), wide - 0x1p32, 0.001 * bench_test::Raw_Per_Mm)
      << "32 bits wrap at 32.768 mm";
  SET_INPUT_DATA_MAP(1, 1, 200, 6, 900);
  Sleep(10);
  const auto version = static_cast<uint64_t>(Take(900).back());
  EXPECT_EQ(version >> 40, 0x20u) << "the century of the date stands in the top byte";

  // Outwards a whole number is cut off, and one that does not fit is refused.
  SET_INPUT_DATA_MAP(1, 1, 20, 8, 900);
  SET_OUTPUT_DATA_MAP(1, 1, 0, 3, 901);
  const double commanded[][2] = {{65536.9, 65536}, {-65536.9, -65536}, {8388607.9, 8388607}, {8388608, 8388607}};
  for (const auto& [value, raw] : commanded) {
    OUTPUT_DATA(1, 901, value);
    drive.Till_Idle();
    Take(900);
    Sleep(3);
    EXPECT_NEAR(Take(900).back() * bench_test::Raw_Per_Mm, raw, 1e-3) << value;
  }
  EXPECT_EQ(Error().found, 1);
  EXPECT_EQ(Error().found, 0);
}

TEST(Threads, Run_In_Order_And_A_Wait_Holds_Its_Own_Thread_Alone) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  TILLTIME(5, 300);
  RESET_INPUT_DATA_FIFO(5, drive.Position(), 16);
  TILL_THREAD_INS_FINISH(6, 5);
  TILLTIME(6, 50);
  const double start = Now_Ms();
  EXPECT_EQ(WaitForAllInsFinish(1), 1);
  drive.Clamp(2.0);
  EXPECT_EQ(Now_Ms(), start) << "an idle thread runs inside the call";
  Sleep(290);
  EXPECT_GT(Take(drive.Position()).size(), 100u) << "the reset behind the wait came too early";
  int places = 0, all_places = 0, running = 1, finished = 0;
  GetThreadInsBufferRemainCount(5, &places, &running);
  EXPECT_EQ(running, 0);
  EXPECT_EQ(WaitForAllInsFinish(5), 1);
  EXPECT_NEAR(Now_Ms() - start, 300.0, 1.0);
  GetThreadInsBufferRemainCount(5, &all_places, &finished);
  EXPECT_EQ(finished, 1);
  EXPECT_EQ(all_places, places + 2);
  EXPECT_EQ(WaitForAllInsFinish(6), 1);
  EXPECT_NEAR(Now_Ms() - start, 350.0, 1.0);

  TILLTIME(5, 1000000);
  TILLTIME(5, 1000000);
  CLEAR_THREAD_INS(6, 5);
  TILLTIME(5, 1000000);
  ClearInsBuffer(5);
  EXPECT_EQ(WaitForAllInsFinish(5), 1);
  EXPECT_NEAR(Now_Ms() - start, 350.0, 1.0);
  EXPECT_EQ(Error().found, 0);
}

TEST(Threads, Take_Their_Pace_For_Each_Instruction_Side_By_Side) {
  for (const double pace_ms : {0.0, 1.0, 2.5, -1.0}) {
    SCOPED_TRACE(pace_ms);
    orsanta::C_Simulated_Clock clock(1);
    bench::Settings settings;
    settings.instruction_ms = pace_ms;
    Connect(settings);
    const double each = std::max(pace_ms, 0.0);
    const double start = Now_Ms();
    for (const int thread : {5, 6, 5, 6, 5, 6}) USE_LOCAL_REG(thread);
    TILLTIME(5, 20);
    WaitForAllInsFinish(6);  // looks every millisecond
    EXPECT_EQ(Now_Ms() - start, std::ceil(3 * each));
    WaitForAllInsFinish(5);
    EXPECT_EQ(Now_Ms() - start, std::ceil(4 * each) + 20);
    Sleep(50);  // an idle thread saves no time up, and one that was emptied owes none
    for (const bool empty : {false, true}) {
      USE_LOCAL_REG(6);
      if (empty) ClearInsBuffer(6);
      USE_LOCAL_REG(6);
      const double queued = Now_Ms();
      WaitForAllInsFinish(6);
      EXPECT_EQ(Now_Ms() - queued, std::ceil(each * (empty ? 1 : 2)));
    }
  }
}

TEST(Connection, Refuses_Until_Prepared_And_Drops_Everything_With_A_Rebuild) {
  orsanta::C_Simulated_Clock clock(1);
  bench::Settings settings;
  settings.refused_connects = 2;
  bench::Reset(settings);
  const wchar_t* reason = nullptr;
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason), 0);
  ASSERT_NE(reason, nullptr);
  EXPECT_NE(std::wstring(reason).find(L"InitDevice_PC_Local_Controler"), std::wstring::npos);
  int exists = 1;
  EXPECT_EQ(CheckDeviceExist(1, &exists), 0);
  EXPECT_EQ(SET_OUTPUT_DATA_MAP(1, 1, 0, 6, 20), 0);
  InitDevice_PC_Local_Controler(1, 0);
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason), 0);
  EXPECT_EQ(ConnectControlServer(nullptr, 0, nullptr), 0);
  EXPECT_NE(ConnectControlServer(L"127.0.0.1", 0, nullptr), 0);

  const C_Test_Drive drive(1);
  Sleep(20);
  EXPECT_FALSE(Take(drive.Position()).empty());
  TILLTIME(1, 1000000);
  ReBuildSystem();
  double value = 0.0;
  int count = 0;
  EXPECT_EQ(GetInputChannelData(drive.Position(), 1, &count, &value, nullptr), 0);
  EXPECT_EQ(WaitForAllInsFinish(1), 0);
  EXPECT_NE(ConnectControlServer(L"", 0, nullptr), 0);
  EXPECT_EQ(WaitForAllInsFinish(1), 1);
  EXPECT_EQ(GetInputChannelData(drive.Position(), 1, &count, &value, nullptr), 0);

  ReleaseDevice();
  EXPECT_EQ(ConnectControlServer(L"", 0, nullptr), 0) << "a released client is prepared anew";
  InitDevice_PC_Local_Controler(1, 0);
  EXPECT_NE(ConnectControlServer(L"", 0, nullptr), 0);
}

TEST(Errors, Name_Thread_Position_And_Reason_And_Leave_Everything_As_It_Was) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  EXPECT_EQ(Error().found, 0);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {std::nan(""), infinity, 1e300, -1e15}) drive.Send(0, bad);
  drive.Speed(0.0);
  drive.Clamp(1e6);
  for (int i = 0; i < 6; ++i) {
    const Error error;
    EXPECT_EQ(error.found, 1);
    EXPECT_EQ(error.thread, 1);
    EXPECT_GT(error.point, 10);
    EXPECT_EQ(std::wstring(error.text).size(), static_cast<size_t>(error.length));
  }
  EXPECT_EQ(drive.Run_Flag(), 0);
  EXPECT_EQ(Error().found, 0);

  // What reaches past every limit is refused or reported, and nothing breaks.
  const int far[] = {-1, 1 << 30, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()};
  for (const int n : far) {
    EXPECT_EQ(SET_INPUT_DATA_MAP(n, 1, 4, 4, 25), 0);
    EXPECT_EQ(GetThreadInsBufferRemainCount(n, nullptr, nullptr), 0);
    SET_INPUT_DATA_MAP(1, n, 4, 4, 25);
    SET_INPUT_DATA_MAP(1, 1, n, 4, 25);
    SET_INPUT_DATA_MAP(1, 1, 4, n, 25);
    SET_INPUT_DATA_MAP(1, 1, 4, 4, n);
    SET_OUTPUT_DATA_MAP(1, 1, 0, n, n);
    RESET_INPUT_DATA_FIFO(1, 25, n);
    OUTPUT_DATA(1, n, 1.0);
    SET_IOIN_MAP(1, 15, 4, n, 0, 1);
    SET_IOIN_MAP(1, 15, 4, 1, 0, n);
    SET_IOOUT_MAP(1, 15, n, 1, n);
    SET_AXIS_MAP(1, 1, 0, n);
    SGO(1, n, infinity);
    TILLSTOP(1, n);
    TILLIO(1, n);
    TILL_AXIS_PAUSE(1, n);
    TILL_THREAD_INS_FINISH(1, n);
    CLEAR_THREAD_INS(1, n);
    ADD_R_C(1, n, n, infinity);
    ClearInsBuffer(n);
    bench::Set_Input(n, 1);
    bench::Place_Part(n, infinity);
    int res = 1, value = 0;
    ReadDeviceReg(1, n, &value, 1, &res);
    EXPECT_EQ(res, 0);
    WriteDeviceReg(n, 1, &value, 1, &res);
    EXPECT_EQ(res, 0);
    EXPECT_EQ(GetCurIoInput(n, &value), 0);
    double sample = 0.0;
    GetInputChannelData(25, -5, &value, &sample, nullptr);
  }
  TILL_THREAD_INS_FINISH(1, 1);
  GetInputChannelData(25, 5, nullptr, nullptr, nullptr);
  CheckDeviceExist(1, nullptr);
  GetCurOutputPos(nullptr, nullptr);
  EXPECT_EQ(WaitForAllInsFinish(1), 1);

  ReBuildSystem();
  ConnectControlServer(L"", 0, nullptr);
  TILLTIME(3, 1000000);
  int queued = 0;
  while (queued < 100000 && TILLTIME(3, 0) == 1) ++queued;
  EXPECT_LT(queued, 100000) << "a queue without end";
  const Error full;
  EXPECT_EQ(full.found, 1);
  EXPECT_EQ(full.thread, 3);
}

// On the system clock: readers, commanders and IO at once, and a wait that blocks one thread alone.
TEST(Callers, Many_Threads_At_Once_Do_Not_Hold_Each_Other) {
  Connect();
  TILLTIME(9, 400);
  std::atomic<int> samples{0}, commands{0};
  std::atomic<bool> stop{false};
  std::vector<std::thread> threads;
  const double start = Now_Ms();
  double waited = 0.0;
  threads.emplace_back([&] {
    WaitForAllInsFinish(9);
    waited = Now_Ms() - start;
    stop = true;
  });
  for (int id = 1; id <= 4; ++id) {
    threads.emplace_back([&, id] {
      const C_Test_Drive drive(id);
      for (int i = 0; !stop; ++i) {
        drive.Go(i % 2 == 0 ? 2.0 : 0.0);
        ++commands;
        Sleep(1);
      }
    });
    threads.emplace_back([&, id] {
      while (!stop) {
        samples += static_cast<int>(Take(id * 20 + 5).size());
        bench::True_Position(id);
        Sleep(2);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_GE(waited, 399.0);
  EXPECT_GT(commands, 100);
  EXPECT_GT(samples, 4 * 100);
}

// A sanitizer sees what a reader meets that goes on while the process takes its static objects down.
TEST(Callers_DeathTest, A_Process_May_End_Under_Its_Readers) {
  const auto leave_under_a_reader = [] {
    Connect();
    const C_Test_Drive drive(1);
    std::thread([&] {
      for (;;) Take(drive.Position());
    }).detach();
    Sleep(20);
    std::exit(0);
  };
  EXPECT_EXIT(leave_under_a_reader(), testing::ExitedWithCode(0), "");
}

}  // namespace
