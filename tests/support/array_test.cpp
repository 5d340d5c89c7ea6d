#include "support/array.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "common/failed_check.h"
#include "common/temp_folder.h"

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

// An element that tells how many of its kind live.
struct C_Counted {
  C_Counted() { ++live; }
  C_Counted(const C_Counted& other) : text(other.text) { ++live; }
  C_Counted& operator=(const C_Counted&) = default;
  ~C_Counted() { --live; }
  std::string text;
  static inline int live = 0;
};

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
  array.Clear();
  EXPECT_EQ(array.GetAllocatedSize(), 0);
  EXPECT_EQ(array.GetData(), nullptr);
}

TEST(Array, Removes_Ranges_And_Lists_And_Cuts_Sub_Arrays_In_Place_Too) {
  CMyArray<int> range = Numbers(6);
  range.RemoveData(1, 2);
  range.DelStartData();
  range.DelEndData();
  EXPECT_THAT(Content(range), ElementsAre(3, 4));
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
  {
    CMyArray<C_Counted> array;
    array.SetArraySize(3);
    for (int i = 0; i < 3; ++i) array[i].text = std::to_string(i);
    CMyArray<C_Counted> copy(array);
    copy[0].text = "other";
    EXPECT_EQ(array[0].text, "0");
    array = copy;
    EXPECT_EQ(array[0].text, "other");
    array.DelStartData();
    EXPECT_EQ(array[0].text, "1");
  }
  EXPECT_EQ(C_Counted::live, 0);
}

TEST(Array, Each_Broken_Check_Reports_Its_Own_Line) {
  const C_Temp_Folder folder;
  CMyArray<int> array = Numbers(3), empty, out;
  std::set<int> lines;
  const auto breaks = [&lines](auto action) { return lines.insert(Failed_Check_Line(action)).second; };
  EXPECT_TRUE(breaks([&] { array.GetAt(3); }) && breaks([&] { array.GetAt(-1); }));
  EXPECT_TRUE(breaks([&] { empty.GetEndData(); }) && breaks([&] { empty.DelEndData(); }));
  EXPECT_TRUE(breaks([&] { array.SetArraySize(-1); }) && breaks([&] { array.SetArraySize(-1, 0); }));
  EXPECT_TRUE(breaks([&] { array.RemoveData(-1, 1); }) && breaks([&] { array.RemoveData(2, -1); }));
  EXPECT_TRUE(breaks([&] { array.RemoveData(2, 2); }));
  EXPECT_TRUE(breaks([&] { array.GetSubArray(4, 0, out); }) && breaks([&] { array.GetSubArray(2, 2, out); }));
  EXPECT_EQ(lines.count(0), 0U) << "an action that no check stopped";
  // Places that repeat, fall, or lie outside, and sums that do not fit the 32 bits of a count.
  for (const std::vector<int>& places : {std::vector{1, 1}, {2, 0}, {0, 3}, {-2, 0}, {3}, {0, 1, 2, 3}})
    EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(places.data(), static_cast<int>(places.size())); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(2147483647, 2147483647); }), 0);
  EXPECT_THAT(Content(array), ElementsAre(0, 1, 2));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
TEST(Array, Reports_An_Allocation_That_Fails) {
  const C_Temp_Folder folder;
  struct C_Megabyte {
    char bytes[1 << 20];
  };
  CMyArray<C_Megabyte> array;
  EXPECT_GT(Failed_Check_Line([&] { array.ExpandMem(2147483647); }), 0);
  EXPECT_TRUE(CVCDumpMessage::m_cErrorMsg().starts_with(
      "CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = 2147483647\n"));
  EXPECT_GT(Failed_Check_Line([&] { array.ReallocateMem(2147483647); }), 0);
}
#endif

}  // namespace
}  // namespace orsanta
