#include "support/array.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

#include "common/failed_check.h"
#include "common/temp_folder.h"

namespace orsanta {
namespace {

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

TEST(Array, GrowsByDoublingAndKeepsElements) {
  CMyArray<int> array;
  EXPECT_EQ(array.GetData(), nullptr);
  for (const int size : {1, 2, 4, 4, 8}) {
    array.Add(array.GetSize());
    EXPECT_EQ(array.GetAllocatedSize(), size);
  }
  array.ExpandMem(100);
  EXPECT_EQ(array.GetAllocatedSize(), 100);
  EXPECT_THAT(Content(array), testing::ElementsAre(0, 1, 2, 3, 4));
  array.SetArraySize(0);
  EXPECT_EQ(array.GetAllocatedSize(), 100);
  array.Clear();
  EXPECT_EQ(array.GetAllocatedSize(), 0);
}

TEST(Array, FillReachesOnlyThePlacesBeyondTheOldBlock) {
  CMyArray<double> array;
  array.SetArraySize(4, 7.0);
  array.SetArraySize(2);
  array.SetArraySize(5, 1.0);
  EXPECT_THAT(std::vector<double>(array.begin(), array.end()), testing::ElementsAre(7.0, 7.0, 7.0, 7.0, 1.0));
  ASSERT_EQ(array.GetAllocatedSize(), 8);
  array.SetArraySize(7);
  array[6] = 3.0;
  array.SetArraySize(5);
  array.SetArraySize(7, 2.0);
  EXPECT_EQ(array[6], 3.0);
}

TEST(Array, RemovesRangesAndLists) {
  CMyArray<int> range = Numbers(6);
  range.RemoveData(1, 2);
  range.RemoveData(0, 0);
  range.DelStartData();
  range.DelEndData();
  EXPECT_THAT(Content(range), testing::ElementsAre(3, 4));

  // Every set of places of an array of six, against a plain filter.
  for (unsigned set = 0; set < 64; ++set) {
    CMyArray<int> array = Numbers(6);
    std::vector<int> places, left;
    for (int i = 0; i < 6; ++i) (set >> i & 1 ? places : left).push_back(i);
    array.RemoveData(places.data(), static_cast<int>(places.size()));
    EXPECT_EQ(Content(array), left) << "set " << set;
  }
}

TEST(Array, CutsSubArraysInPlaceToo) {
  CMyArray<int> array = Numbers(6);
  CMyArray<int> out = Numbers(2);
  array.GetSubArray(6, 0, out);
  EXPECT_EQ(out.GetSize(), 0);
  array.GetSubArray(2, 3, out);
  EXPECT_THAT(Content(out), testing::ElementsAre(2, 3, 4));
  array.GetSubArray(3, 3, array);
  EXPECT_THAT(Content(array), testing::ElementsAre(3, 4, 5));
}

TEST(Array, ElementsOfClassesAreCopiedDeepAndAllDestroyed) {
  {
    CMyArray<C_Counted> array;
    for (const char* text : {"a", "b", "c"}) {
      array.Add(C_Counted());
      array.GetEndData().text = text;
    }
    CMyArray<C_Counted> copy(array);
    copy.GetAt(0).text = "other";
    EXPECT_EQ(array.GetAt(0).text, "a");
    array = copy;
    EXPECT_EQ(array.GetAt(0).text, "other");
    EXPECT_EQ(copy.GetAt(2).text, "c");
    array.DelStartData();
    EXPECT_EQ(array.GetAt(0).text, "b");
  }
  EXPECT_EQ(C_Counted::live, 0);
}

TEST(Array, EachBrokenCheckReportsItsOwnLine) {
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
  for (const std::vector<int>& places : {std::vector{1, 1}, {2, 0}, {0, 3}, {-2, 0}, {3}, {0, 1, 2, 3}}) {
    EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(places.data(), static_cast<int>(places.size())); }), 0);
  }
  EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(2147483647, 2147483647); }), 0);
  EXPECT_THAT(Content(array), testing::ElementsAre(0, 1, 2));
}

#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
TEST(Array, ReportsAnAllocationThatFails) {
  const C_Temp_Folder folder;
  struct C_Megabyte {
    char bytes[1 << 20];
  };
  CMyArray<C_Megabyte> array;
  EXPECT_GT(Failed_Check_Line([&] { array.ExpandMem(2147483647); }), 0);
  EXPECT_TRUE(CVCDumpMessage::m_cErrorMsg().starts_with(
      "CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = 2147483647\n"));
  EXPECT_GT(Failed_Check_Line([&] { array.ReallocateMem(2147483647); }), 0);
  EXPECT_EQ(array.GetSize(), 0);
}
#endif

}  // namespace
}  // namespace orsanta
