#include "support/hash.h"

#include <gtest/gtest.h>

#include <cmath>

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
  (hash << 6) >= entry;
  EXPECT_EQ(entry->m_Buffer.GetLogicalBufferSize(), 0);
  hash.StartAddVarToLogInData(9);
  hash++;
  EXPECT_EQ(entry->m_Buffer.GetLogicalBufferSize(), 4);
  hash--;
  (hash << 6) > found;
  EXPECT_EQ(found, -1);
}

TEST(Hash, Gather_Hands_Out_Each_Number_Once_And_The_Smallest_First) {
  const C_Temp_Folder folder;
  CHashGather gather;
  for (unsigned id = 0; id < 5; ++id) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {3U, 1U, 4U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {1U, 3U, 4U, 5U}) EXPECT_EQ(gather.GetUniqueID(), id);
  gather.DeleteUniqueID(2);
  EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(2); }));
  EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(1000); }));
}

}  // namespace
}  // namespace orsanta
