// The motion server: FIFOs, instruction threads and their waits, connection, errors, IO.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <thread>

#include "simulated_clock/simulated_clock.h"
#include "simulator_line.h"
#include "support/threads/thread.h"

namespace simulator_test {
namespace {

// The errors since the last look, each as "thread/point number:subject ".
std::string Told() {
  std::string told;
  int thread = 0, point = 0, number = 0;
  wchar_t text[200];
  for (int length = 200; GetError(&thread, &point, text, &length, &number) == 1; length = 200) {
    const std::wstring subject = std::wstring(text).substr(std::wstring(text).rfind(L' ') + 1);
    told += std::to_string(thread) + '/' + std::to_string(point) + ' ' + std::to_string(number) + ':' +
            std::string(subject.begin(), subject.end()) + ' ';
  }
  return told;
}

using Server = Room;

TEST(Threads, Take_Their_Pace_For_Each_Instruction_Side_By_Side) {
  for (const double pace_ms : {0.0, 1.0, 2.5, -1.0}) {
    SCOPED_TRACE(pace_ms);
    orsanta::C_Simulated_Clock clock(1);
    Connect({.instruction_ms = pace_ms});
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

TEST_F(Server, Refuses_Until_Prepared_And_Drops_Everything_With_A_Rebuild) {
  simulator::Reset({.refused_connects = 2});
  const wchar_t* reason = nullptr;
  int exists = 1;
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason) + CheckDeviceExist(1, &exists), 0);
  EXPECT_NE(std::wstring(reason).find(L"InitDevice_PC_Local_Controler"), std::wstring::npos);
  EXPECT_EQ(SET_OUTPUT_DATA_MAP(1, 1, 0, 6, 20) + exists, 0);
  InitDevice_PC_Local_Controler(1, 0);
  EXPECT_EQ(ConnectControlServer(L"", 0, &reason) + ConnectControlServer(nullptr, 0, nullptr), 0);
  EXPECT_EQ(ConnectControlServer(L"127.0.0.1", 0, nullptr), 1);

  Map_Position(1);
  Sleep(20);
  EXPECT_FALSE(Take(1).empty());
  TILLTIME(1, 1000000);
  orsanta::C_Thread waiter;
  waiter.Start("waiter", [] { EXPECT_EQ(WaitForAllInsFinish(1), 0); });
  Sleep(5);
  EXPECT_EQ(OpenCloseErrorMsgAutoAssert(0) + ReBuildSystem(), 2);
  double value = 0.0;
  int count = 0;
  EXPECT_EQ(GetInputChannelData(1, 1, &count, &value, nullptr) + WaitForAllInsFinish(1), 0);
  EXPECT_EQ(ConnectControlServer(L"", 0, nullptr) + WaitForAllInsFinish(1), 2);
  EXPECT_EQ(GetInputChannelData(1, 1, &count, &value, nullptr), 0);
  EXPECT_EQ(CloseMotionControlerServer() + CheckDeviceExist(1, &exists), 1);
  EXPECT_EQ(ReleaseDevice(), 1);
  EXPECT_EQ(ConnectControlServer(L"", 0, nullptr), 0) << "a released client is prepared anew";
}

TEST_F(Server, Tells_Each_Step_Past_A_Limit_And_Leaves_Everything_As_It_Was) {
  const double infinity = std::numeric_limits<double>::infinity();
  const int lowest = std::numeric_limits<int>::min();
  const int highest = std::numeric_limits<int>::max();
  const int outputs[][3] = {{0, 6, 20}, {4, 8, 22}, {6, 8, 23}};  // position, current, speed
  for (const auto& [port, format, channel] : outputs) SET_OUTPUT_DATA_MAP(1, 1, port, format, channel);
  for (const double bad : {std::nan(""), infinity, 1e300, -1e15}) OUTPUT_DATA(1, 20, bad);
  OUTPUT_DATA(1, 23, 0.0);
  OUTPUT_DATA(1, 22, 1e6);
  Map_Input(1, 1, 5, 1, 26, 4);
  Sleep(3);
  EXPECT_EQ(Take(26).back(), 0.0) << "the run flag";
  for (const int n : {lowest, -1, 0, 255, 256, highest}) EXPECT_EQ(TILLTIME(n, 0), n == 0 || n == 255 ? 1 : 0);
  for (const int n : {lowest, -1, 0, 1, 65535, 65536, highest}) {
    SET_INPUT_DATA_MAP(2, 1, 4, 4, n);
    SET_OUTPUT_DATA_MAP(2, 1, 0, 6, n);
    RESET_INPUT_DATA_FIFO(2, 0, n);
  }
  for (const int n : {-1, 0, 65536, 65537}) SetBackJmpInsSize(2, n);
  for (const int n : {-1, 0, 8, 9}) {
    SET_INPUT_DATA_MAP(2, 1, 4, n, 0);
    SET_OUTPUT_DATA_MAP(2, 1, 0, n, 0);
    SET_IOIN_MAP(2, 15, 4, n, 0, 0);
    SET_IOOUT_MAP(2, 15, 3, n, 0);
  }
  for (const int n : {-1, 0, 1023, 1024}) {
    SET_IOIN_MAP(2, 15, 4, 0, 0, n);
    SET_IOOUT_MAP(2, 15, 3, 0, n);
    ADD_R_C(2, n, n, infinity);
  }
  for (const int n : {-1, 0, 63, 64}) SET_AXIS_MAP(2, 20, 0, n);
  SET_INPUT_DATA_MAP(2, 64, 4, 4, 0);
  SET_INPUT_DATA_MAP(2, 1, 3, 4, 0);
  SET_OUTPUT_DATA_MAP(2, 1, 2, 6, 0);
  SET_AXIS_MAP(2, 1, 0, 0);
  OUTPUT_DATA(2, 7, 1.0);
  SET_OUTPUT_IO(2, 7, 1);
  TILLIO(2, 7);
  SGO(2, 9, 1.0);
  TILLSTOP(2, 9);
  TILL_THREAD_INS_FINISH(2, 2);
  EXPECT_EQ(Told(),
            "1/3 6:20 1/4 6:20 1/5 6:20 1/6 6:20 1/7 6:23 1/8 6:22 "
            "-2147483648/0 1:-2147483648 -1/0 1:-1 256/0 1:256 2147483647/0 1:2147483647 "
            "2/0 5:-2147483648 2/1 5:-2147483648 2/2 5:0 2/3 5:-1 2/4 5:-1 2/5 5:0 2/8 6:0 2/15 5:65536 2/16 5:65536 "
            "2/18 5:2147483647 2/19 5:2147483647 2/20 6:2147483647 2/21 6:-1 2/24 6:65537 "
            "2/25 6:-1 2/26 6:-1 2/27 4:-1 2/28 4:-1 2/35 4:8 2/36 4:8 2/37 6:9 2/38 6:9 2/39 4:9 2/40 4:9 "
            "2/41 7:-1 2/42 7:-1 2/43 10:-1 2/43 10:-1 2/50 7:1024 2/51 7:1024 2/52 10:1024 2/52 10:1024 2/53 8:-1 "
            "2/56 8:64 2/57 3:64 2/58 4:3 2/59 4:2 2/60 4:1 2/61 5:7 2/62 7:7 2/63 7:7 2/64 8:9 2/65 8:9 2/66 11:2 ");
  EXPECT_EQ(GetInputChannelData(0, 5, nullptr, nullptr, nullptr) + GetCurOutputPos(nullptr, nullptr), 0);
  simulator::Set_Input(highest, 1);
  simulator::Place_Part(highest, infinity);

  TILLTIME(3, 1000000);
  int queued = 1;
  while (queued < 100000 && TILLTIME(3, 0) == 1) ++queued;
  EXPECT_EQ(queued, 4096);
  wchar_t text[17];
  int length = 17;
  GetError(nullptr, nullptr, text, &length, nullptr);
  EXPECT_EQ(std::wstring(text), L"the thread's ins");  // as much as there is room for
  EXPECT_EQ(length, 16);
}

// A sanitizer sees what a reader meets that goes on while the process takes its static objects down.
TEST(Callers_DeathTest, A_Process_May_End_Under_Its_Readers) {
  const auto leave_under_a_reader = [] {
    Connect();
    Map_Position(1);
    std::thread([] {
      for (;;) Take(1);
    }).detach();
    Sleep(20);
    std::exit(0);
  };
  EXPECT_EXIT(leave_under_a_reader(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace simulator_test
