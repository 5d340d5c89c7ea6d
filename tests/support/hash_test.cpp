#include "support/hash.h"

#include <gtest/gtest.h>

#include "common/failed_check.h"
#include "common/temp_folder.h"

namespace orsanta {
namespace {

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  char name[] = "Val_Pos";
  double number = -1.5;
  char text[] = "mocha";
  (hash << 5).ConnectIndexDataOrOutputData(name);
  hash.StartAddVarToLogInData(77).ConnectIndexDataOrOutputData(number).ConnectIndexDataOrOutputData(text);
  hash++;

  int found = 0;
  number = 0.0;
  char read[sizeof text] = "";
  (hash << 5).ConnectIndexDataOrOutputData(name) > found;
  hash.ConnectIndexDataOrOutputData(number).ConnectIndexDataOrOutputData(read);
  EXPECT_EQ(found, 77);
  EXPECT_EQ(number, -1.5);
  EXPECT_STREQ(read, "mocha");
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(found); })) << "beyond the end of the entry";

  // A key that another one starts with is absent, and then nothing can be read.
  (hash << 5).ConnectIndexDataOrOutputData("Val_Po") > found;
  EXPECT_EQ(found, -1);
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(number); }));

  // An empty entry is made on demand, filled, and removed.
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

TEST(Hash, Gather_Hands_Out_Each_Number_Once_And_The_Smallest_First) {
  const C_Temp_Folder folder;
  CHashGather gather;
  for (unsigned id = 0; id < 5; ++id) EXPECT_EQ(gather.GetUniqueID(), id);
  for (const unsigned id : {3U, 1U, 4U}) gather.DeleteUniqueID(id);
  for (const unsigned id : {1U, 3U, 4U, 5U}) EXPECT_EQ(gather.GetUniqueID(), id);
  gather.DeleteUniqueID(2);
  for (const unsigned id : {2U, 1000U}) EXPECT_NE(0, Failed_Check_Line([&] { gather.DeleteUniqueID(id); }));
}

}  // namespace
}  // namespace orsanta
