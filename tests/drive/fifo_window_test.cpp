#include "drive/fifo_window.h"

#include <atomic>
#include <deque>
#include <random>

#include "drive/room.h"
#include "drive/tremalink.h"

namespace orsanta {
namespace {

// Random pushes, reads, clears and changes of length against a plain queue.
TEST(Fifo_Window, Slides_Like_A_Queue) {
  std::mt19937 choice(5);
  C_FIFO2Window window;
  size_t length = C_FIFO2Window::Default_Window_Len;
  std::deque<double> queue;
  CMyArray<double> out;
  out.Add(7.0);
  EXPECT_EQ(window.Get_Window(out) + out.GetSize(), 0);
  for (uint64_t index = 0; index < 60000; ++index) {
    const int what = static_cast<int>(choice() % 2000);
    if (what == 0) window.Set_Window_Len(static_cast<int>(length = 1 + choice() % 50));
    if (what == 1) window.Clear_Window();
    if (what <= 1) queue.clear();
    if (queue.size() == length) queue.pop_front();
    queue.push_back(static_cast<double>(choice()));
    window.Push_Sample(queue.back(), index);
    ASSERT_EQ(window.Get_Count(), static_cast<int>(queue.size()));
    if (what > 200) continue;
    ASSERT_EQ(window.Get_Window(out), 1);
    ASSERT_EQ(std::vector<double>(out.begin(), out.end()), std::vector<double>(queue.begin(), queue.end()));
    const CMyArray<uint64_t> indices = window.Get_Read_Index_Copy();
    ASSERT_EQ(indices.GetSize(), out.GetSize());
    ASSERT_EQ(indices[0], index + 1 - queue.size());
  }
  window.Push_Sample(0.0, 0);  // the indices of a read do not follow
  EXPECT_EQ(window.Get_Read_Index_Copy().GetSize(), out.GetSize());
  EXPECT_EQ(window.Set_Window_Len(0), 1);
  EXPECT_EQ(window.Set_Window_Len(10), 0);  // once set to nothing it stays so
}

// Readers, a clearer and the window thread at once, on the real clock: what a reader gets is always one run of the
// stream, with evenly spaced indices.
TEST(Fifo_Window, Readers_On_Many_Threads_See_Whole_Windows) {
  simulator::Settings settings;
  settings.sample_ms = 0.1;
  simulator::Reset(settings);
  InitDevice_PC_Local_Controler(1, 0);
  ASSERT_NE(ConnectControlServer(L"", 0, nullptr), 0);
  SET_INPUT_DATA_MAP(1, 1, 4, 4, 65);
  RESET_INPUT_DATA_FIFO(1, 65, 4096);
  C_FIFO2Window window;
  window.Set_Window_Len(300);
  window.Start_Read(65);
  std::atomic<int> broken{0}, filled{0};
  std::atomic<bool> end{false};
  const auto read = [&] {
    CMyArray<double> out;
    CMyArray<uint64_t> indices;
    while (!end) {
      window.Get_Window(out);
      window.Get_Read_Index(indices);
      broken += out.GetSize() > 300 ? 1 : 0;
      filled += out.GetSize() == 300 ? 1 : 0;
      for (int i = 2; i < indices.GetSize(); ++i)
        broken += indices[i] - indices[i - 1] == indices[1] - indices[0] ? 0 : 1;
    }
  };
  C_Thread readers[3];
  for (C_Thread& reader : readers) reader.Start("reader", read);
  for (int pass = 0; pass < 8; ++pass) {
    for (const int before = filled; filled == before;) Sleep(1);
    window.Clear_Window();
  }
  end = true;
  for (C_Thread& reader : readers) reader.Join();
  EXPECT_EQ(broken, 0);
}

}  // namespace
}  // namespace orsanta
