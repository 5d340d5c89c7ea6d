#include "support/hash.h"

#include <gtest/gtest.h>

#include "common/failed_check.h"
#include "common/temp_folder.h"

namespace orsanta {
namespace {

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  double number = -1.5;
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos");
  hash.StartAddVarToLogInData(77).ConnectIndexDataOrOutputData(number);
  hash++;
  int found = 0;
  number = 0.0;
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos") > found;
  hash.ConnectIndexDataOrOutputData(number);
  EXPECT_EQ(found, 77);
  EXPECT_EQ(number, -1.5);
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(found); })) << "beyond the end of the entry";
  // A key that another one starts with is absent, and then nothing can be read.
  (hash << 5).ConnectIndexDataOrOutputData("Val_Po") > found;
  EXPECT_EQ(found, -1);
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(number); }));
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos");
  hash--;
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos") > found;
  EXPECT_EQ(found, -1) << "removed";
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
