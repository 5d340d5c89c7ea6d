// The motion server: FIFOs, instruction threads and their waits, connection, errors, IO, many callers at once.
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

class Server : public bench_test::Room {};

TEST_F(Server, Fifo_Keeps_Old_Samples_When_Full_And_Loses_Only_What_A_Reset_Finds) {
  Map_Input(1, 1, 4, 4, 25, 8);
  double values[16];
  uint64_t indices[16] = {};
  int count = -1;
  // What a read of at most that many gives: its samples in periods since the first of all.
  uint64_t first = 0;
  const auto read = [&](int max_count) {
    EXPECT_EQ(GetInputChannelData(25, max_count, &count, values, indices), 1);
    if (first == 0) first = indices[0];
    std::string periods;
    for (int i = 0; i < count; ++i) periods += std::to_string((indices[i] - first) / 100) + ' ';
    return periods;
  };
  Sleep(101);  // 50 samples, 8 places
  EXPECT_EQ(read(3), "0 1 2 ");
  EXPECT_EQ(read(16), "3 4 5 6 7 ");
  EXPECT_EQ(read(16), "");
  Sleep(6);
  EXPECT_EQ(read(16), "51 52 53 ") << "the samples that found it full are gone";
  Sleep(6);
  RESET_INPUT_DATA_FIFO(1, 25, 4);
  EXPECT_EQ(read(16), "");
  Sleep(100);
  EXPECT_EQ(read(16), "57 58 59 60 ");
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
  EXPECT_NEAR(Take(900).back() / bench_test::Raw_Per_Mm, 40.0, 0.002);
  EXPECT_NEAR(Take(drive.Position()).back() / bench_test::Raw_Per_Mm, 40.0 - 65.536, 0.002) << "32 bits wrap";
  SET_INPUT_DATA_MAP(1, 1, 200, 6, 900);
  Sleep(10);
  EXPECT_EQ(Take(900).back(), 0x202405180203.0p0);

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
}

TEST_F(Server, A_Wait_Holds_Its_Own_Thread_Alone) {
  const C_Test_Drive drive(1);
  TILLTIME(5, 300);
  RESET_INPUT_DATA_FIFO(5, drive.Position(), 16);
  TILL_THREAD_INS_FINISH(6, 5);
  TILLTIME(6, 50);
  drive.Clamp(2.0);
  EXPECT_EQ(Now_Ms(), 0.0) << "an idle thread runs inside the call";
  Sleep(290);
  EXPECT_GT(Take(drive.Position()).size(), 100u) << "the reset behind the wait came too early";
  int places = 0, all_places = 0, running = 1, finished = 0;
  GetThreadInsBufferRemainCount(5, &places, &running);
  EXPECT_EQ(WaitForAllInsFinish(5), 1);
  EXPECT_NEAR(Now_Ms(), 300.0, 1.0);
  GetThreadInsBufferRemainCount(5, &all_places, &finished);
  EXPECT_EQ(running, 0);
  EXPECT_EQ(finished, 1);
  EXPECT_EQ(all_places, places + 2);
  TILLTIME(5, 1000000);
  CLEAR_THREAD_INS(7, 5);
  TILLTIME(5, 1000000);
  ClearInsBuffer(5);
  EXPECT_EQ(WaitForAllInsFinish(5) + WaitForAllInsFinish(6), 2);
  EXPECT_NEAR(Now_Ms(), 350.0, 1.0);
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
    for (const int thread : {5, 6, 5, 6, 5, 6}) USE_LOCAL_REG(thread);
    TILLTIME(5, 20);
    WaitForAllInsFinish(6);  // looks every millisecond
    EXPECT_EQ(Now_Ms(), std::ceil(3 * each));
    WaitForAllInsFinish(5);
    EXPECT_EQ(Now_Ms(), std::ceil(4 * each) + 20);
    Sleep(50);  // an idle thread saves no time up, and one that was emptied owes none
    const double queued = Now_Ms();
    USE_LOCAL_REG(6);
    ClearInsBuffer(6);
    USE_LOCAL_REG(6);
    WaitForAllInsFinish(6);
    EXPECT_EQ(Now_Ms() - queued, std::ceil(each));
  }
}

TEST(Connection, Refuses_Until_Prepared_And_Drops_Everything_With_A_Rebuild) {
  orsanta::C_Simulated_Clock clock(1);
  bench::Settings settings;
  settings.refused_connects = 2;
  bench::Reset(settings);
  const wchar_t* reason = nullptr;
  int exists = 1;
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason) + CheckDeviceExist(1, &exists), 0);
  EXPECT_NE(std::wstring(reason).find(L"InitDevice_PC_Local_Controler"), std::wstring::npos);
  EXPECT_EQ(SET_OUTPUT_DATA_MAP(1, 1, 0, 6, 20) + exists, 0);
  InitDevice_PC_Local_Controler(1, 0);
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason) + ConnectControlServer(nullptr, 0, nullptr), 0);
  EXPECT_EQ(ConnectControlServer(L"127.0.0.1", 0, nullptr), 1);

  const C_Test_Drive drive(1);
  Sleep(20);
  EXPECT_FALSE(Take(drive.Position()).empty());
  TILLTIME(1, 1000000);
  ReBuildSystem();
  double value = 0.0;
  int count = 0;
  EXPECT_EQ(GetInputChannelData(drive.Position(), 1, &count, &value, nullptr) + WaitForAllInsFinish(1), 0);
  EXPECT_EQ(ConnectControlServer(L"", 0, nullptr) + WaitForAllInsFinish(1), 2);
  EXPECT_EQ(GetInputChannelData(drive.Position(), 1, &count, &value, nullptr), 0);
  ReleaseDevice();
  EXPECT_EQ(ConnectControlServer(L"", 0, nullptr), 0) << "a released client is prepared anew";
}

TEST_F(Server, Errors_Name_Thread_Position_And_Reason_And_Leave_Everything_As_It_Was) {
  const C_Test_Drive drive(1);
  EXPECT_EQ(Error().found, 0);
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {std::nan(""), infinity, 1e300, -1e15}) drive.Send(0, bad);
  drive.Speed(0.0);
  drive.Clamp(1e6);
  for (int i = 0; i < 6; ++i) {
    const Error error;
    EXPECT_EQ(error.found + error.thread, 2);
    EXPECT_EQ(error.point, 20 + i);
    EXPECT_EQ(std::wstring(error.text).size(), static_cast<size_t>(error.length));
  }
  EXPECT_EQ(drive.Run_Flag() + Error().found, 0);

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
    int value = 0;
    double sample = 0.0;
    EXPECT_EQ(ReadDeviceReg(1, n, &value, 1, nullptr) + WriteDeviceReg(n, 1, &value, 1, nullptr), 0);
    EXPECT_EQ(GetCurIoInput(n, &value), 0);
    GetInputChannelData(25, -5, &value, &sample, nullptr);
  }
  TILL_THREAD_INS_FINISH(1, 1);
  GetInputChannelData(25, 5, nullptr, nullptr, nullptr);
  GetCurOutputPos(nullptr, nullptr);
  EXPECT_EQ(WaitForAllInsFinish(1), 1);

  ReBuildSystem();
  ConnectControlServer(L"", 0, nullptr);
  TILLTIME(3, 1000000);
  int queued = 1;
  while (queued < 100000 && TILLTIME(3, 0) == 1) ++queued;
  EXPECT_EQ(queued, 4096);
  EXPECT_EQ(Error().thread, 3);
}

// On the system clock: readers and commanders at once, while a wait blocks one thread alone.
TEST(Callers, Many_Threads_At_Once_Do_Not_Hold_Each_Other) {
  Connect();
  TILLTIME(9, 1000000);
  std::vector<std::thread> threads;
  threads.emplace_back([] { EXPECT_EQ(WaitForAllInsFinish(9), 0); });
  for (int id = 1; id <= 4; ++id) {
    threads.emplace_back([id] {
      const C_Test_Drive drive(id);
      for (int i = 0; i < 200; ++i) drive.Go(i % 2 == 0 ? 2.0 : 0.0);
    });
    threads.emplace_back([id] {
      for (size_t samples = 0; samples < 200; bench::True_Position(id)) samples += Take(id * 20 + 5).size();
    });
  }
  for (size_t i = 1; i < threads.size(); ++i) threads[i].join();
  ReBuildSystem();
  threads[0].join();
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
