#include "support/base/array.h"

#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <memory>
#include <set>
#include <vector>

#include "common/failed_check.h"

namespace orsanta {
namespace {

using testing::ElementsAre;

CMyArray<int> Numbers(int count) {
  CMyArray<int> array;
  for (int i = 0; i < count; ++i) array.Add(i);
  return array;
}

std::vector<int> Content(const CMyArray<int>& array) {
  return {array.begin(), array.end()};
}

TEST(Array, Grows_By_Doubling_And_Fills_Only_The_Places_Beyond_The_Old_Block) {
  CMyArray<int> array;
  std::vector<int> sizes;
  for (int i = 0; i < 5; ++i) {
    array.Add(7);
    sizes.push_back(array.GetAllocatedSize());
  }
  EXPECT_THAT(sizes, ElementsAre(1, 2, 4, 4, 8));
  array.SetArraySize(8);
  for (int i = 5; i < 8; ++i) array[i] = 3;
  array.SetArraySize(2);
  array.SetArraySize(10, 1);
  EXPECT_THAT(Content(array), ElementsAre(7, 7, 7, 7, 7, 3, 3, 3, 1, 1));
  array.SetArraySize(0);
  array.SetArraySize(3, 9);
  EXPECT_THAT(Content(array), ElementsAre(7, 7, 7));
  array.ReallocateMem(16);
  EXPECT_EQ(array.GetSize(), 16);
  EXPECT_EQ(*(array + 2), 7) << "the block was large enough";
  array.ReallocateMem(17);
  EXPECT_EQ(array.GetAllocatedSize(), 17);
  array.Clear();
  EXPECT_EQ(array.GetSize() + array.GetAllocatedSize(), 0);
  EXPECT_EQ(array.GetData(), nullptr);
}

TEST(Array, Removes_Ranges_And_Lists_And_Cuts_Sub_Arrays_In_Place_Too) {
  CMyArray<int> range = Numbers(7);
  range.RemoveData(1, 2);
  range.DelStartData();
  range.DelEndData();
  EXPECT_THAT(Content(range), ElementsAre(3, 4, 5));
  EXPECT_EQ(range.GetEndData(), 5);
  // Every set of places of an array of six, against a plain filter.
  for (unsigned set = 0; set < 64; ++set) {
    CMyArray<int> array = Numbers(6);
    std::vector<int> places, left;
    for (int i = 0; i < 6; ++i) (set >> i & 1 ? places : left).push_back(i);
    array.RemoveData(places.data(), static_cast<int>(places.size()));
    EXPECT_EQ(Content(array), left) << "set " << set;
  }
  CMyArray<int> array = Numbers(6);
  array.GetSubArray(6, 0, range);
  EXPECT_EQ(range.GetSize(), 0);
  array.GetSubArray(3, 3, array);
  EXPECT_THAT(Content(array), ElementsAre(3, 4, 5));
}

TEST(Array, Elements_Of_Classes_Are_Copied_Deep_And_All_Destroyed) {
  const auto held = std::make_shared<int>();
  {
    CMyArray<std::shared_ptr<int>> array;
    for (int i = 0; i < 3; ++i) array.Add(held);
    CMyArray<std::shared_ptr<int>> copy(array);
    copy[0].reset();
    EXPECT_NE(array[0], nullptr);
    array = copy;
    EXPECT_EQ(array[0], nullptr);
    EXPECT_EQ(array.GetAllocatedSize(), 3);
    array.DelStartData();
    EXPECT_EQ(array[0], held);
    array.ReallocateMem(100);
    copy.Clear();
    EXPECT_EQ(held.use_count(), 1);
    array[99] = held;
  }
  EXPECT_EQ(held.use_count(), 1);
}

TEST(Array, Each_Broken_Check_Reports_Its_Own_Line) {
  const C_Temp_Folder folder;
  CMyArray<int> array = Numbers(3), empty, out;
  const CMyArray<int>& constant = array;
  const std::function<void()> broken[] = {[&] { array.GetAt(3); },
                                          [&] { array.GetAt(-1); },
                                          [&] { constant.GetAt(3); },
                                          [&] { constant.GetAt(-1); },
                                          [&] { empty.GetEndData(); },
                                          [&] { empty.DelEndData(); },
                                          [&] { empty.DelStartData(); },
                                          [&] { array.SetArraySize(-1); },
                                          [&] { array.SetArraySize(-1, 0); },
                                          [&] { array.RemoveData(-1, 1); },
                                          [&] { array.RemoveData(2, -1); },
                                          [&] { array.RemoveData(2, 2); },
                                          [&] { array.GetSubArray(-1, 1, out); },
                                          [&] { array.GetSubArray(4, -1, out); },
                                          [&] { array.GetSubArray(3, -1, out); },
                                          [&] { array.GetSubArray(2, 2, out); }};
  std::set<int> lines{0};  // of no check
  for (const auto& action : broken) EXPECT_TRUE(lines.insert(Failed_Check_Line(action)).second) << *lines.rbegin();
  // Places that repeat, fall, or lie outside, and sums that do not fit the 32 bits of a count.
  for (const std::vector<int>& places : {std::vector{1, 1}, {2, 0}, {0, 3}, {-2, 0}, {3}, {0, 1, 2, 3}})
    EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(places.data(), static_cast<int>(places.size())); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(2147483647, 2147483647); }), 0);
  EXPECT_THAT(Content(array), ElementsAre(0, 1, 2));
  EXPECT_EQ(constant[0], 0);
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
TEST(Array, Reports_An_Allocation_That_Fails) {
  const C_Temp_Folder folder;
  CMyArray<std::array<char, 1 << 20>> array;
  EXPECT_GT(Failed_Check_Line([&] { array.ReallocateMem(2147483647); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { array.ExpandMem(2147483647); }), 0);
  EXPECT_TRUE(CVCDumpMessage::m_cErrorMsg().starts_with(
      "CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = 2147483647\n"));
}
#endif

}  // namespace
}  // namespace orsanta
