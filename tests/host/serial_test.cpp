#include "support/serial.h"

#include <asm/termbits.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "support/clock.h"

namespace orsanta {
namespace {

// Bytes cross the line in real time: reads until so many have come or two real seconds are over.
std::string Read_At_Least(CComSerial& port, size_t wanted) {
  std::string bytes;
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  while (bytes.size() < wanted && std::chrono::steady_clock::now() < limit) {
    char part[256];
    int got = 0;
    port.GetComData(part, sizeof part, got);
    bytes.append(part, static_cast<size_t>(got));
    if (got == 0) std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  return bytes;
}

class Serial : public ::testing::Test {
 protected:
  C_Simulated_Clock clock{1};
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;
  CComSerial port;
};

TEST_F(Serial, PortNumbersFollowTheLinksAndAPortHasOneUser) {
  const C_Pty line(1);
  std::ofstream("COM2") << "no device";
  std::filesystem::create_symlink("/dev/orsanta_no_such_device", "COM3");
  CComSerial other;
  EXPECT_EQ(port.OpenCom(0), 0);
  EXPECT_EQ(port.OpenCom(2), 0);
  EXPECT_EQ(port.OpenCom(3), 0);
  ASSERT_EQ(port.OpenCom(1), 1);
  EXPECT_EQ(other.OpenCom(1), 0);
  port.CloseCom();
  ASSERT_EQ(other.OpenCom(1), 1);
  int got = 0;
  char byte = 0;
  EXPECT_EQ(port.GetComData(&byte, 1, got), 0);
}

TEST_F(Serial, SetsEachRateAndPassesEveryByteUnchanged) {
  C_Pty line(1);
  int written = 0;
  EXPECT_EQ(port.SetPropW(9600, 8, 1, 0), 0);  // closed
  ASSERT_EQ(port.OpenCom(1), 1);
  for (const int rate : CComSerial::Rates) {
    ASSERT_EQ(port.SetPropW(rate, 8, 1, 0), 1) << rate;
    termios2 set{};
    ASSERT_EQ(ioctl(line.Master(), TCGETS2, &set), 0);
    EXPECT_EQ(set.c_ospeed, static_cast<unsigned>(rate));
    EXPECT_EQ(set.c_cflag & (CSIZE | CSTOPB | PARENB), static_cast<unsigned>(CS8));
  }
  EXPECT_EQ(port.SetPropW(4800, 8, 1, 0), 0);
  EXPECT_EQ(port.SetPropW(9600, 7, 1, 0), 0);

  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  ASSERT_EQ(port.WriteComData(bytes.data(), 256, written), 1);
  EXPECT_EQ(written, 256);
  EXPECT_EQ(line.Take_At_Least(256), bytes);
  line.Send(bytes);
  EXPECT_EQ(Read_At_Least(port, 256), bytes);
}

TEST_F(Serial, NeverWaits) {
  const C_Pty line(1);
  ASSERT_EQ(port.OpenCom(1), 1);
  ASSERT_EQ(port.SetPropW(115200, 8, 1, 0), 1);
  int count = -1;
  char byte = 0;
  EXPECT_EQ(port.GetComData(&byte, 1, count), 1);
  EXPECT_EQ(count, 0);
  const std::string flood(1000000, 'x');  // nobody reads it
  EXPECT_EQ(port.WriteComData(flood.data(), static_cast<int>(flood.size()), count), 1);
  EXPECT_GT(count, 0);
  EXPECT_LT(count, static_cast<int>(flood.size()));
}

TEST_F(Serial, ToldOnceWhenItVanishesAndFoundAgain) {
  C_Pty line(1);
  ASSERT_EQ(port.OpenCom(1), 1);
  ASSERT_EQ(port.SetPropW(19200, 8, 1, 0), 1);
  int count = 0;
  char byte = 0;
  for (int round = 1; round <= 2; ++round) {
    line.Pull_Out();
    for (int i = 0; i < 2000; ++i) {
      EXPECT_EQ(port.GetComData(&byte, 1, count), 0);
      EXPECT_EQ(port.WriteComData("x", 1, count), 0);
      Sleep(1);
    }
    EXPECT_EQ(front->Count_Boxes(L"串口1已断开"), round);
    line.Plug_In();
    Sleep(static_cast<int>(CComSerial::Reopen_Period_Ms));
    ASSERT_EQ(port.WriteComData("back\n", 5, count), 1);
    EXPECT_EQ(line.Take_At_Least(5), "back\n");
    termios2 set{};
    ASSERT_EQ(ioctl(line.Master(), TCGETS2, &set), 0);
    EXPECT_EQ(set.c_ospeed, 19200U);
  }
}

}  // namespace
}  // namespace orsanta
