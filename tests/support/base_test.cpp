// Arrays, the hash, and smart pointers.
#include <gmock/gmock.h>

#include <array>
#include <set>
#include <vector>

#include "common/arrays.h"
#include "common/failed_check.h"
#include "support/base/hash.h"
#include "support/base/smart_pointer.h"

namespace orsanta {
namespace {

using testing::ElementsAre;

TEST(Array, Grows_By_Doubling_And_Fills_Only_The_Places_Beyond_The_Old_Block) {
  CMyArray<double> array;
  for (const int size : {1, 2, 4, 4, 8}) {
    array.Add(7);
    EXPECT_EQ(array.GetAllocatedSize(), size);
  }
  array.SetArraySize(8);
  for (int i = 5; i < 8; ++i) array[i] = 3;
  array.SetArraySize(2);
  array.SetArraySize(10, 1);
  EXPECT_THAT(Values(array), ElementsAre(7, 7, 7, 7, 7, 3, 3, 3, 1, 1));
  array.SetArraySize(0);
  array.SetArraySize(2, 9);
  array.ReallocateMem(16);
  EXPECT_EQ(array.GetSize(), 16);
  EXPECT_EQ(*(array + 1), 7) << "the block was large enough, twice";
  array.ReallocateMem(17);
  EXPECT_EQ(array.GetAllocatedSize(), 17);
  array.Clear();
  EXPECT_TRUE(array.GetSize() == 0 && array.GetAllocatedSize() == 0 && array.GetData() == nullptr);
}

TEST(Array, Removes_Ranges_And_Lists_And_Cuts_Sub_Arrays_In_Place_Too) {
  CMyArray<double> range = Array({0, 1, 2, 3, 4, 5, 6});
  range.RemoveData(1, 2);
  range.DelStartData();
  range.DelEndData();
  EXPECT_THAT(Values(range), ElementsAre(3, 4, 5));
  // Every set of places of an array of six, against a plain filter.
  for (unsigned set = 0; set < 64; ++set) {
    CMyArray<double> array = Array({0, 1, 2, 3, 4, 5});
    std::vector<int> places, left;
    for (int i = 0; i < 6; ++i) (set >> i & 1 ? places : left).push_back(i);
    array.RemoveData(places.data(), static_cast<int>(places.size()));
    EXPECT_THAT(Values(array), testing::ElementsAreArray(left)) << "set " << set;
  }
  range.GetSubArray(1, 2, range);
  EXPECT_THAT(Values(range), ElementsAre(4, 5));
  range.GetSubArray(2, 0, range);
  EXPECT_EQ(range.GetSize(), 0);
}

TEST(Array, Each_Broken_Check_Reports_Its_Own_Line) {
  const C_Temp_Folder folder;
  CMyArray<double> array = Array({0, 1, 2}), empty, out;
  std::set<int> lines{0};  // of no check
  const auto breaks = [&lines](auto action) { EXPECT_TRUE(lines.insert(Failed_Check_Line(action)).second); };
  for (const int outside : {3, -1}) {
    breaks([&] { array[outside] = 0; });
    breaks([&] { static_cast<void>(std::as_const(array)[outside]); });
  }
  breaks([&] { empty.GetEndData(); });
  breaks([&] { empty.DelEndData(); });
  breaks([&] { array.SetArraySize(-1); });
  breaks([&] { array.SetArraySize(-1, 0); });
  // Ranges, by their start and count.
  for (const auto& range : {std::array{-1, 1}, {2, -1}, {2, 2}}) breaks([&] { array.RemoveData(range[0], range[1]); });
  for (const auto& range : {std::array{-1, 1}, {4, -1}, {3, -1}, {2, 2}})
    breaks([&] { array.GetSubArray(range[0], range[1], out); });
  // Places that repeat, fall, or lie outside, and sums that do not fit the 32 bits of a count.
  for (const std::vector<int>& places : {std::vector{1, 1}, {2, 0}, {0, 3}, {-2, 0}, {3}, {0, 1, 2, 3}})
    EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(places.data(), static_cast<int>(places.size())); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { array.RemoveData(2147483647, 2147483647); }), 0);
  EXPECT_THAT(Values(array), ElementsAre(0, 1, 2));
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)  // their allocators end the process instead
  CMyArray<std::array<char, 1 << 20>> large;
  EXPECT_GT(Failed_Check_Line([&] { large.ReallocateMem(2147483647); }), 0);
  EXPECT_GT(Failed_Check_Line([&] { large.ExpandMem(2147483647); }), 0);
  EXPECT_TRUE(CVCDumpMessage::m_cErrorMsg().starts_with(
      "CMyArray<T>::ExpandMem错误: T* pNewData = new T[nNewSize]; nNewSize = 2147483647\n"));
#endif
}

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  const auto found = [&hash](const char* name) {
    int value = 0;
    (hash << 5).ConnectIndexDataOrOutputData(name) > value;
    return value;
  };
  double number = -1.5;
  char text[] = "mocha";
  CHashObject_String key = "Val";
  std::strcpy(key.GetBuffer(20) + 3, "_Pos");  // a text ends at its first zero
  EXPECT_TRUE(key == "Val_Pos" && key == CHashObject_String("Val_Pos"));
  EXPECT_FALSE(key == "Val" || key == CHashObject_String());
  EXPECT_EQ(found(key.GetBuffer(0)), -1);
  hash.StartAddVarToLogInData(77).ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  hash++;
  number = text[0] = 0;
  EXPECT_EQ(found("Val_Pos"), 77);
  hash.ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  EXPECT_STREQ(text, "mocha");
  EXPECT_EQ(number, -1.5);
  const auto read_on = [&] { hash.ConnectIndexDataOrOutputData(number); };
  EXPECT_NE(0, Failed_Check_Line(read_on)) << "beyond the end of the entry";
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(text); }));
  EXPECT_EQ(found("Val_Po"), -1) << "a key that another one starts with";
  EXPECT_NE(0, Failed_Check_Line(read_on));
  found("Val_Pos");
  hash--;
  EXPECT_NE(0, Failed_Check_Line(read_on));
  EXPECT_EQ(found("Val_Pos"), -1) << "removed";
}

TEST(Hash, Gather_Hands_Out_Each_Number_Once_And_The_Smallest_First) {
  const C_Temp_Folder folder;
  CHashGather gather;
  for (unsigned id = 0; id < 5; ++id) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {3U, 1U, 4U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {1U, 3U, 4U, 5U}) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {2U, 1U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {2U, 6U}) EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(id); }));
  EXPECT_EQ(gather.GetUniqueID(), 1U);
}

struct C_Alive {
  C_Alive() { ++live; }
  ~C_Alive() { --live; }
  static inline int live = 0;
};

TEST(Smart_Pointer, The_Last_Copy_Frees_Objects_And_Arrays_And_Their_Records) {
  CSmartPointer<C_Alive> last(1);
  {
    CMyArray<CSmartPointer<C_Alive>> array;
    for (int i = 0; i < 3; ++i) array.Add(last);
    CMyArray<CSmartPointer<C_Alive>> copy(array);
    copy[0] = CSmartPointer<C_Alive>(3);
    EXPECT_EQ(C_Alive::live, 4);
    EXPECT_EQ(smart_pointer_table::Live_Records(), 2);
    last = array[0];
    last = *&last;
    copy.Clear();  // with the last pointer to three of them
    array.ReallocateMem(100);
    array[99] = last;
  }
  EXPECT_EQ(C_Alive::live, 1);
  for (int i = 0; i < 2; ++i) last.ReleaseCurSmartPointReference();
  EXPECT_EQ(C_Alive::live, 0);
  EXPECT_EQ(smart_pointer_table::Live_Records(), 0);

  // A place that is used again has a new serial.
  int object = 0;
  smart_pointer_table::C_Place places[2];
  for (smart_pointer_table::C_Place& place : places) {
    place = smart_pointer_table::Enter(&object, 1);
    EXPECT_TRUE(smart_pointer_table::Release(place.heap_id, &object));
  }
  EXPECT_EQ(places[1].heap_id, places[0].heap_id);
  EXPECT_EQ(places[1].serial, places[0].serial + 1);
}

}  // namespace
}  // namespace orsanta
