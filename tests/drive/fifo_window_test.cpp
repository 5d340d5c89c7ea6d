#include "drive/fifo_window.h"

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <random>
#include <vector>

#include "support/threads/thread.h"

namespace orsanta {

// Random pushes, reads, clears and changes of length against a plain queue.
TEST(Fifo_Window, Slides_Like_A_Queue) {
  std::mt19937 choice(5);
  C_FIFO2Window window;
  size_t length = C_FIFO2Window::Default_Window_Len;
  std::deque<double> queue;
  CMyArray<double> out;
  double newest = 7.0;
  EXPECT_EQ(window.Get_Window(out) + window.Newest(newest), 0);
  EXPECT_EQ(newest, 7.0);
  for (uint64_t index = 0; index < 60000; ++index) {
    const int what = static_cast<int>(choice() % 2000);
    if (what == 0) window.Set_Window_Len(static_cast<int>(length = 1 + choice() % 50));
    if (what == 1) window.Clear_Window();
    if (what <= 1) queue.clear();
    if (queue.size() == length) queue.pop_front();
    queue.push_back(static_cast<double>(choice()));
    window.Push_Sample(queue.back(), index);
    ASSERT_EQ(window.Get_Count(), static_cast<int>(queue.size()));
    ASSERT_EQ(window.Newest(newest), 1);
    ASSERT_EQ(newest, queue.back());
    if (what > 200) continue;
    ASSERT_EQ(window.Get_Window(out), 1);
    ASSERT_EQ(std::vector<double>(out.begin(), out.end()), std::vector<double>(queue.begin(), queue.end()));
    const CMyArray<uint64_t> indices = window.Get_Read_Index_Copy();
    ASSERT_EQ(indices.GetSize(), out.GetSize());
    ASSERT_EQ(indices[0], index + 1 - queue.size());
  }
  window.Push_Sample(0.0, 0);  // the indices of a read do not follow, nor those of the newest alone
  window.Newest(newest);
  EXPECT_EQ(window.Get_Read_Index_Copy().GetSize(), out.GetSize());
  EXPECT_EQ(window.Set_Window_Len(0), 1);
  EXPECT_EQ(window.Set_Window_Len(10), 0);  // once set to nothing it stays so
}

// Readers, some of which clear, and a writer at once, on the real clock: what a reader gets is always one run of the
// stream.
TEST(Fifo_Window, Readers_On_Many_Threads_See_Whole_Windows) {
  constexpr int Length = 300;
  C_FIFO2Window window;
  window.Set_Window_Len(Length);
  std::atomic<int> broken{0}, filled{0};
  const auto read = [&] {
    CMyArray<double> out;
    CMyArray<uint64_t> indices;
    for (int look = 0; filled < 50; ++look) {
      window.Get_Window(out);
      window.Get_Read_Index(indices);  // of this look, or of another reader's
      broken += out.GetSize() > Length ? 1 : 0;
      filled += out.GetSize() == Length ? 1 : 0;
      for (int i = 1; i < out.GetSize(); ++i) broken += out[i] == out[i - 1] + 1.0 ? 0 : 1;
      for (int i = 1; i < indices.GetSize(); ++i) broken += indices[i] == indices[i - 1] + 1 ? 0 : 1;
      if (look % 10 == 9) window.Clear_Window();
      Sleep(1);  // the writer is not to starve
    }
  };
  C_Thread readers[3];
  for (C_Thread& reader : readers) reader.Start("reader", read);
  for (uint64_t index = 0; filled < 50; ++index) window.Push_Sample(static_cast<double>(index), index);
  for (C_Thread& reader : readers) reader.Join();
  EXPECT_EQ(broken, 0);
}

}  // namespace orsanta
