#include "support/hash.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <set>

#include "common/failed_check.h"
#include "common/temp_folder.h"

namespace orsanta {
namespace {

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  int area = 5;
  char name[] = "Val_Pos";
  double first = -0.0;
  int second = 77;
  char text[] = "mocha";
  (hash << area).ConnectIndexDataOrOutputData(name);
  hash.StartAddVarToLogInData(second).ConnectIndexDataOrOutputData(first).ConnectIndexDataOrOutputData(text);
  hash++;

  int found = 0;
  (hash << area).ConnectIndexDataOrOutputData(name) > found;
  EXPECT_EQ(found, 77);
  double number = 1.0;
  char read[sizeof text] = "";
  hash.ConnectIndexDataOrOutputData(number).ConnectIndexDataOrOutputData(read);
  EXPECT_TRUE(number == 0.0 && std::signbit(number));
  EXPECT_STREQ(read, "mocha");
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(found); }))
      << "read past the end of the entry";

  // Keys that run into one another in their bytes stay apart by their closing zero.
  (hash << area).ConnectIndexDataOrOutputData("Val_Po") > found;
  EXPECT_EQ(found, -1);
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(number); }))
      << "no key, no value, nothing found";

  // An empty entry is made on demand, and a new value replaces the old one.
  CHashObject_Buffer* entry = nullptr;
  hash << 6 >= entry;
  EXPECT_EQ(entry->m_Buffer.GetLogicalBufferSize(), 0);
  hash.StartAddVarToLogInData(9);
  hash++;
  EXPECT_EQ(entry->m_Buffer.GetLogicalBufferSize(), 4);
  hash--;
  hash << 6 > found;
  EXPECT_EQ(found, -1);
}

TEST(Hash, Gather_Hands_Out_Each_Number_Once) {
  const C_Temp_Folder folder;
  CHashGather gather;
  std::set<unsigned> in_use;
  std::mt19937 random(3);
  unsigned largest = 0;
  for (int i = 0; i < 5000; ++i) {
    if (in_use.size() < 20 && (in_use.empty() || random() % 2 == 0)) {
      const unsigned id = gather.GetUniqueID();
      EXPECT_TRUE(in_use.insert(id).second) << id << " is in use";
      largest = std::max(largest, id);
    } else {
      const auto place = std::next(in_use.begin(), static_cast<long>(random() % in_use.size()));
      gather.DeleteUniqueID(*place);
      in_use.erase(place);
    }
  }
  EXPECT_LT(largest, 20U) << "numbers that came back are not used again";
  EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(1000); }));
}

TEST(Hash, String_Gives_Room_To_Write_Into) {
  CHashObject_String text("ab");
  std::memcpy(text.GetBuffer(20), "a longer text", 14);
  CHashObject_String copy = text;
  text = "other";
  EXPECT_EQ(copy == "a longer text", 1);
  EXPECT_EQ(copy == text, 0);
}

}  // namespace
}  // namespace orsanta
