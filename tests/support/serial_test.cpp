#include "support/services/serial.h"

#include <gtest/gtest.h>

#include <array>
#include <numeric>

#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "simulated_clock/simulated_clock.h"

namespace orsanta {
namespace {

class Serial : public ::testing::Test {
 protected:
  int Write(const std::string& bytes) { return port.WriteComData(bytes.data(), static_cast<int>(bytes.size()), count); }

  C_Simulated_Clock clock{1};
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  C_Pty line{1};
  CComSerial port;
  int count = -1;
  char bytes_in[256];
};

TEST_F(Serial, Port_Numbers_Follow_The_Links_And_A_Port_Has_One_User) {
  std::ofstream("COM2") << "no device";
  for (const int absent : {-1, 0, 2}) EXPECT_EQ(port.OpenCom(absent), 0);
  testing::internal::CaptureStderr();
  EXPECT_EQ(port.OpenCom(1000), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "COM1000 (/dev/ttyS999): does not open: No such file or directory\n");
  EXPECT_EQ(port.SetPropW(9600, 8, 1, 0) + port.GetComData(bytes_in, 1, count) + Write("x"), 0);
  CComSerial other;
  ASSERT_EQ(port.OpenCom(1), 1);
  EXPECT_EQ(other.OpenCom(1), 0);
  port.CloseCom();
  EXPECT_EQ(other.OpenCom(1), 1);
}

TEST_F(Serial, Passes_Every_Byte_At_Each_Rate_And_Never_Waits) {
  ASSERT_EQ(port.OpenCom(1), 1);
  EXPECT_EQ(line.Rate(), 115200);
  for (const int rate : {9600, 14400, 19200, 28800, 38400, 57600, 4800, 230400, 115200}) {
    ASSERT_EQ(port.SetPropW(rate, 8, 1, 0), 1) << rate;
    EXPECT_EQ(line.Rate(), rate);
  }
  for (const auto& [baud, bits, stop, parity] :
       {std::array{0, 8, 1, 0}, {-9600, 8, 1, 0}, {9600, 7, 1, 0}, {9600, 8, 2, 0}, {9600, 8, 1, 1}})
    EXPECT_EQ(port.SetPropW(baud, bits, stop, parity), 0) << baud;
  EXPECT_EQ(line.Rate(), 115200);

  EXPECT_EQ(port.GetComData(bytes_in, 1, count), 1);
  EXPECT_EQ(count, 0);
  std::string bytes(256, '\0');
  std::iota(bytes.begin(), bytes.end(), 0);
  ASSERT_EQ(Write(bytes), 1);
  EXPECT_EQ(count, 256);
  EXPECT_EQ(line.Take_At_Least(256), bytes);
  line.Send(bytes);
  std::string got;  // bytes cross the line in real time
  for (int wait = 0; got.size() < bytes.size() && wait < 2000; ++wait) {
    EXPECT_EQ(port.GetComData(bytes_in, 256, count), 1);
    got.append(bytes_in, static_cast<size_t>(count));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(got, bytes);

  EXPECT_EQ(Write(std::string(1000000, 'x')), 1);  // nobody reads it
  EXPECT_GT(count, 0);
  EXPECT_LT(count, 1000000);
}

TEST_F(Serial, Finds_An_Adapter_Again_That_Comes_And_Goes_And_Tells_Of_It_In_One_Box_At_A_Time) {
  front->On_Box(L"串口1已断开", Answer_Ok, 100000);  // the operator is away
  ASSERT_EQ(port.OpenCom(1), 1);
  ASSERT_EQ(port.SetPropW(19200, 8, 1, 0), 1);
  for (int round = 0; round < 20; ++round) {
    line.Pull_Out();
    for (int i = 0; i <= 1000; ++i) {  // the last try at 1000 ms
      EXPECT_EQ(port.GetComData(bytes_in, 1, count), 0);
      EXPECT_EQ(Write("x"), 0);
      Sleep(1);
    }
    line.Plug_In();
    Sleep(498);
    EXPECT_EQ(Write("x"), 0) << "tried twice a second";
    Sleep(1);
    ASSERT_EQ(Write("back\n"), 1);
    EXPECT_EQ(line.Take_At_Least(5), "back\n");
    EXPECT_EQ(line.Rate(), 19200);
    EXPECT_EQ(front->Count_Boxes(L"串口1已断开"), 1);
  }
  Sleep(100000);
  line.Pull_Out();
  EXPECT_EQ(port.GetComData(bytes_in, 1, count), 0);
  EXPECT_EQ(front->Count_Boxes(L"串口1已断开"), 2);
}

}  // namespace
}  // namespace orsanta
