#include "support/base/hash.h"

#include <gtest/gtest.h>

#include "common/failed_check.h"

namespace orsanta {
namespace {

TEST(Hash, Builds_Keys_Commits_Values_And_Reads_Them_Back) {
  const C_Temp_Folder folder;
  CHashOpt hash;
  double number = -1.5;
  char text[] = "mocha";
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos");
  hash.StartAddVarToLogInData(77).ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  hash++;
  number = 0.0;
  text[0] = '\0';
  int found = 0;
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos") > found;
  hash.ConnectIndexDataOrOutputData(text).ConnectIndexDataOrOutputData(number);
  EXPECT_EQ(found, 77);
  EXPECT_STREQ(text, "mocha");
  EXPECT_EQ(number, -1.5);
  for (int i = 0; i < 2; ++i) EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(found); }));
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(text); })) << "beyond the end of the entry";
  // A key that another one starts with is absent, and then nothing can be read.
  (hash << 5).ConnectIndexDataOrOutputData("Val_Po") > found;
  EXPECT_EQ(found, -1);
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(number); }));
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos") > found;
  hash--;
  EXPECT_NE(0, Failed_Check_Line([&] { hash.ConnectIndexDataOrOutputData(number); }));
  (hash << 5).ConnectIndexDataOrOutputData("Val_Pos") > found;
  EXPECT_EQ(found, -1) << "removed";
}

TEST(Hash, Texts_End_At_Their_First_Zero) {
  CHashObject_String text = "Val";
  std::strcpy(text.GetBuffer(20) + 3, "_Pos");
  EXPECT_TRUE(text == "Val_Pos" && text == CHashObject_String("Val_Pos"));
  EXPECT_FALSE(text == "Val" || text == CHashObject_String());
  EXPECT_STREQ(text.GetBuffer(0), "Val_Pos");
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
  gather.DeleteUniqueID(1);
}

}  // namespace
}  // namespace orsanta
