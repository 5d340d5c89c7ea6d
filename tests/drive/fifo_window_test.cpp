#include "drive/fifo_window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <random>
#include <vector>

#include "bench/bench.h"
#include "drive/tremalink.h"
#include "support/clock.h"

namespace orsanta {
namespace {

constexpr int Server_Thread = 1;
constexpr int Channel = 65;
constexpr int Position_Port = 4;

std::vector<double> To_Vector(const CMyArray<double>& array) {
  return {array.begin(), array.end()};
}

// Ties the position stream of drive 1 to the channel.
void Map_Position() {
  InitDevice_PC_Local_Controler(1, 0);
  ASSERT_NE(ConnectControlServer(L"", 0, nullptr), 0);
  SET_INPUT_DATA_MAP(Server_Thread, 1, Position_Port, 4, Channel);
  RESET_INPUT_DATA_FIFO(Server_Thread, Channel, 4096);
  WaitForAllInsFinish(Server_Thread);
}

// Random pushes, reads, clears and changes of length against a plain queue.
TEST(C_FIFO2Window, Slides_Like_A_Queue) {
  std::mt19937 choice(5);
  C_FIFO2Window window;
  int length = C_FIFO2Window::Default_Window_Len;
  std::deque<double> queue;
  CMyArray<double> out;
  for (uint64_t index = 0; index < 60000; ++index) {
    const int what = static_cast<int>(choice() % 2000);
    if (what == 0) {
      length = 1 + static_cast<int>(choice() % 50);
      ASSERT_EQ(window.Set_Window_Len(length), 1);
      queue.clear();
    } else if (what == 1) {
      ASSERT_EQ(window.Clear_Window(), 1);
      queue.clear();
    }
    const double value = static_cast<double>(choice());
    if (queue.size() == static_cast<size_t>(length)) queue.pop_front();
    queue.push_back(value);
    ASSERT_EQ(window.Push_Sample(value, index), 1);
    ASSERT_EQ(window.Get_Count(), static_cast<int>(queue.size()));
    if (what < 200) {
      ASSERT_EQ(window.Get_Window(out), 1);
      ASSERT_EQ(To_Vector(out), std::vector<double>(queue.begin(), queue.end()));
      const CMyArray<uint64_t> indices = window.Get_Read_Index_Copy();
      ASSERT_EQ(indices.GetSize(), out.GetSize());
      ASSERT_EQ(indices[indices.GetSize() - 1], index);
      ASSERT_EQ(indices[0], index + 1 - queue.size());
    }
  }
}

TEST(C_FIFO2Window, Reads_Leave_The_Samples_And_An_Empty_One_Says_So) {
  C_FIFO2Window window;
  CMyArray<double> out;
  out.Add(7.0);
  EXPECT_EQ(window.Get_Window(out), 0);
  EXPECT_EQ(out.GetSize(), 0);
  window.Push_Sample(1.5, 40);
  EXPECT_EQ(window.Get_Window(out), 1);
  window.Push_Sample(2.5, 41);  // the indices of the read do not follow
  CMyArray<uint64_t> indices;
  EXPECT_EQ(window.Get_Read_Index(indices), 1);
  ASSERT_EQ(indices.GetSize(), 1);
  EXPECT_EQ(indices[0], 40U);
  EXPECT_EQ(window.Get_Window(out), 1);
  EXPECT_EQ(window.Get_Window(out), 1);
  EXPECT_EQ(To_Vector(out), (std::vector<double>{1.5, 2.5}));
  // A window once set to nothing cannot be set to anything else.
  EXPECT_EQ(window.Set_Window_Len(0), 1);
  EXPECT_EQ(window.Set_Window_Len(10), 0);
}

TEST(C_FIFO2Window, Its_Thread_Keeps_Up_With_The_Stream) {
  C_Simulated_Clock clock(1);
  bench::Reset();
  Map_Position();
  C_FIFO2Window window;
  window.Start_Read(Channel);
  Sleep(1000);
  EXPECT_NEAR(window.Get_Count(), 500, 3);
  window.Clear_Window();
  Sleep(100);
  CMyArray<double> out;
  window.Get_Window(out);
  EXPECT_NEAR(out.GetSize(), 50, 3);
  const CMyArray<uint64_t> indices = window.Get_Read_Index_Copy();
  for (int i = 1; i < indices.GetSize(); ++i) EXPECT_GT(indices[i], indices[i - 1]);
  window.Set_Window_Len(10);
  Sleep(100);
  EXPECT_EQ(window.Get_Count(), 10);
  window.ReleaseSubClass_CBaseBindThread();
  window.Clear_Window();
  Sleep(100);
  EXPECT_EQ(window.Get_Count(), 0);
}

TEST(C_FIFO2Window, Channel_Zero_Reads_Nothing) {
  C_Simulated_Clock clock(1);
  bench::Reset();
  bench::Journal_Keep_Reads(true);
  C_FIFO2Window window;
  EXPECT_EQ(window.Start_Read(0), 1);
  Sleep(50);
  window.ReleaseSubClass_CBaseBindThread();
  for (const bench::Journal_Entry& call : bench::Journal()) EXPECT_NE(call.function, "GetInputChannelData");
  bench::Journal_Keep_Reads(false);
}

// Readers, a clearer and the window thread at once, on the real clock. What a reader gets is always one run of the
// stream: values and indices of one length, the indices evenly spaced.
TEST(C_FIFO2Window, Readers_On_Many_Threads_See_Whole_Windows) {
  bench::Settings settings;
  settings.sample_ms = 0.1;
  bench::Reset(settings);
  Map_Position();
  C_FIFO2Window window;
  window.Set_Window_Len(300);
  window.Start_Read(Channel);
  std::atomic<int> broken{0};
  std::atomic<int> filled{0};
  const double until_ms = Now_Ms() + 300.0;
  {
    C_Thread readers[3];
    for (C_Thread& reader : readers) {
      reader.Start("reader", [&] {
        CMyArray<double> out;
        CMyArray<uint64_t> indices;
        while (Now_Ms() < until_ms) {
          window.Get_Window(out);
          window.Get_Read_Index(indices);
          if (out.GetSize() > 300) ++broken;
          if (out.GetSize() == 300) ++filled;
          for (int i = 2; i < indices.GetSize(); ++i) {
            if (indices[i] - indices[i - 1] != indices[1] - indices[0]) ++broken;
          }
        }
      });
    }
    while (Now_Ms() < until_ms) {
      Sleep(50);
      window.Clear_Window();
    }
  }
  EXPECT_EQ(broken, 0);
  EXPECT_GT(filled, 0);
}

}  // namespace
}  // namespace orsanta
