#include "support/store.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <bit>
#include <clocale>
#include <filesystem>
#include <limits>
#include <random>

#include "common/failed_check.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "store_thing.h"

namespace orsanta {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

constexpr const wchar_t* Name = L"音圈电机3参数";
constexpr const char* File = "音圈电机3参数";

class Store : public ::testing::Test {
 protected:
  C_Simulated_Clock clock{1};
  C_Temp_Folder folder;
  C_Scripted_Front_Holder front;

  std::string Only_Box() {
    EXPECT_EQ(front->Boxes().size(), 1U);
    return front->Boxes().empty() ? "" : To_Utf8(front->Boxes()[0]);
  }
};

TEST_F(Store, Reads_Every_Number_Back_To_The_Same_Bits) {
  const char* old_locale = std::setlocale(LC_ALL, nullptr);
  const std::string kept = old_locale != nullptr ? old_locale : "C";
  std::mt19937_64 random(11);
  C_Thing saved;
  for (const uint64_t bits : {0x0ULL, 0x8000000000000000ULL, 0x1ULL, 0x000FFFFFFFFFFFFFULL, 0x7FEFFFFFFFFFFFFFULL,
                              0x7FF0000000000000ULL, 0xFFF0000000000000ULL, 0x7FF8000000000000ULL,
                              0xFFF8000000001234ULL, 0x7FF0000000000001ULL, 0x3FD5555555555555ULL})
    saved.first.Add(std::bit_cast<double>(static_cast<uint64_t>(bits)));
  for (int i = 0; i < 2000; ++i) saved.first.Add(std::bit_cast<double>(random()));
  saved.travel = std::bit_cast<float>(0x7FC01234U);
  saved.level = std::numeric_limits<float>::denorm_min();
  saved.count = std::numeric_limits<int>::min();
  saved.word = std::wstring(L"“摩卡”\t\"\\\r\n\x7F\x01 𝄞 #") + L'\0' + L"end";
  saved.wide = L"";

  for (const char* locale : {"C", "C.UTF-8", "de_DE.UTF-8"}) {
    std::setlocale(LC_ALL, locale);  // one that is not installed leaves the one before
    ASSERT_EQ(saved.SaveAllClassParameterToHashOpt(Name, 1), 1);
    C_Thing read;
    ASSERT_EQ(read.LoadAllClassParameterFromHashOpt(Name, 1), 1);
    ASSERT_EQ(read.first.GetSize(), saved.first.GetSize());
    for (int i = 0; i < saved.first.GetSize(); ++i)
      ASSERT_EQ(std::bit_cast<uint64_t>(read.first[i]), std::bit_cast<uint64_t>(saved.first[i])) << i;
    EXPECT_EQ(std::bit_cast<uint32_t>(read.travel), 0x7FC01234U);
    EXPECT_EQ(read.level, saved.level);
    EXPECT_EQ(read.count, saved.count);
    EXPECT_EQ(read.word, saved.word);
    EXPECT_TRUE(read.wide.Is_Empty());
    EXPECT_TRUE(std::filesystem::exists(File));
  }
  std::setlocale(LC_ALL, kept.c_str());
}

TEST_F(Store, Is_Text_For_Its_Owner_Alone) {
  C_Thing thing;
  thing.second.Add(0.1);
  umask(0);
  ASSERT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 1);
  EXPECT_EQ(Text_Of_File(File),
            "orsanta store 1\n"
            "C_Thing count 0 = int 1\n"
            "C_Thing travel 0 = float 10\n"
            "C_Thing force 0 = double 200\n"
            "C_Thing word 0 = text \"mocha\"\n"
            "C_Thing wide 0 = text \"w\"\n"
            "C_Thing flag 0 = int 1\n"
            "C_Thing level 0 = float 2\n"
            "C_Thing speed 0 = double 20\n"
            "C_Thing Val_Pos_Friction[0].MyArrayP 0 = array CMyArray<double> 0\n"
            "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 1\n"
            "C_Thing/CMyArray Val_Pos_Friction[1].MyArrayP 0 = double 0.1\n"
            "end\n");
  struct stat info {};
  ASSERT_EQ(stat(File, &info), 0);
  EXPECT_EQ(info.st_mode & 0777U, 0600U);
}

TEST_F(Store, Leaves_Members_Whose_Keys_Are_Absent) {
  C_Thing thing;
  thing.first.Add(3.0);
  EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 0);
  EXPECT_EQ(thing.force, 200.0);

  // As an editor of another system may leave it: byte order mark, line ends, blanks, a comment.
  Write_File(File,
             "\xEF\xBB\xBForsanta store 1\r\n"
             "# Müller 2024\r\n\r\n"
             "  C_Thing\tforce 0  =  double 150.5 \r\n"
             "\"C_Other Class\" \"a b\" 7 = raw 00ff\r\n"
             "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 0\r\n"
             "end");
  thing.second.Add(1.0);
  EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 1);
  EXPECT_EQ(thing.force, 150.5);
  EXPECT_EQ(thing.count, 1);
  EXPECT_THAT(Values(thing.first), ElementsAre(3.0));
  EXPECT_EQ(thing.second.GetSize(), 0) << "an empty array in the store empties the member";

  // What the object does not name is kept, the comment too.
  EXPECT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 1);
  EXPECT_THAT(Text_Of_File(File), HasSubstr("# Müller 2024\n"));
  EXPECT_THAT(Text_Of_File(File), HasSubstr("\"C_Other Class\" \"a b\" 7 = raw 00ff\nend\n"));
  EXPECT_TRUE(front->Shown().empty());
}

TEST_F(Store, Keeps_Arrays_Apart_And_Drops_What_Lies_Beyond_Their_End) {
  C_Thing thing;
  for (const double value : {1.0, 2.0, 3.0}) {
    thing.first.Add(value);
    thing.second.Add(-value);
  }
  thing.SaveAllClassParameterToHashOpt(Name, 1);
  thing.first.SetArraySize(1);
  thing.SaveAllClassParameterToHashOpt(Name, 1);
  EXPECT_THAT(Text_Of_File(File), Not(HasSubstr("[0].MyArrayP 1 =")));
  C_Thing read;
  read.LoadAllClassParameterFromHashOpt(Name, 1);
  EXPECT_THAT(Values(read.first), ElementsAre(1.0));
  EXPECT_THAT(Values(read.second), ElementsAre(-1.0, -2.0, -3.0));
}

TEST_F(Store, Moves_A_Broken_Store_Aside_And_Never_Touches_It_Again) {
  const std::string broken = "orsanta store 1\nC_Thing count 0 = int 5\nC_Thing force 0 = double 15O\nend\n";
  C_Thing thing;
  for (const char* aside : {"音圈电机3参数.bad", "音圈电机3参数.1.bad"}) {
    front->Clear_Record();
    Write_File(File, broken + "#" + aside + "\n");
    EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 0);
    EXPECT_EQ(thing.count, 1) << "the defaults hold, none of the file's values";
    EXPECT_THAT(Only_Box(), HasSubstr((folder.Path() / File).string()));
    EXPECT_THAT(Only_Box(), HasSubstr("第3行"));
    EXPECT_THAT(Only_Box(), HasSubstr(aside));
    EXPECT_FALSE(std::filesystem::exists(File));
  }
  thing.SaveAllClassParameterToHashOpt(Name, 1);
  EXPECT_EQ(Text_Of_File("音圈电机3参数.bad"), broken + "#音圈电机3参数.bad\n");
  EXPECT_EQ(Text_Of_File("音圈电机3参数.1.bad"), broken + "#音圈电机3参数.1.bad\n");

  // Broken while the system runs: the save saves, and what stood there is kept aside.
  front->Clear_Record();
  Write_File(File, broken);
  EXPECT_EQ(thing.SaveAllClassParameterToHashOpt(Name, 1), 1);
  EXPECT_EQ(Text_Of_File("音圈电机3参数.2.bad"), broken);
  EXPECT_THAT(Only_Box(), HasSubstr("第3行"));
}

TEST_F(Store, Keeps_The_Default_And_The_File_Where_A_Value_Is_Of_Another_Kind) {
  const std::string text =
      "orsanta store 1\nC_Thing count 0 = double 5\nC_Thing force 0 = double 3\nC_Thing word 0 = int 1\nend\n";
  Write_File(File, text);
  C_Thing thing;
  EXPECT_EQ(thing.LoadAllClassParameterFromHashOpt(Name, 1), 1);
  EXPECT_EQ(thing.count, 1);
  EXPECT_EQ(thing.force, 3.0);
  EXPECT_EQ(thing.word, L"mocha");
  EXPECT_THAT(Only_Box(), HasSubstr("C_Thing count 0 = int"));
  EXPECT_THAT(Only_Box(), HasSubstr("C_Thing word 0 = text"));
  EXPECT_EQ(Text_Of_File("音圈电机3参数.bad"), text);
}

TEST_F(Store, Reports_An_Array_Of_Another_Layout_As_A_Fault_Of_The_Program) {
  for (const char* value : {"array CMyArray<int> 0", "double 1", "text \"123456789012\""}) {
    Write_File(File, std::string("orsanta store 1\nC_Thing Val_Pos_Friction[0].MyArrayP 0 = ") + value + "\nend\n");
    C_Thing thing;
    EXPECT_NE(0, Failed_Check_Line([&] { thing.LoadAllClassParameterFromHashOpt(Name, 1); })) << value;
  }
}

TEST_F(Store, Gives_One_Area_Id_To_One_Stack_Of_Classes) {
  CAutoSaveClassData_Data one;
  CAutoSaveClassData_Data other;
  one.OptSaveFunctionCallInClassNameList.Add("C_VoiceMotor");
  other.OptSaveFunctionCallInClassNameList.Add("C_VoiceMotor");
  const int id = one.GetAreaIDFrom_OptSaveFunctionCallInClassNameList();
  EXPECT_EQ(other.GetAreaIDFrom_OptSaveFunctionCallInClassNameList(), id);
  other.OptSaveFunctionCallInClassNameList.Add("CMyArray");
  EXPECT_NE(other.GetAreaIDFrom_OptSaveFunctionCallInClassNameList(), id);
  EXPECT_EQ(Area_Path(id), "C_VoiceMotor");
  // These two paths have the same 32-bit hash.
  EXPECT_NE(Area_ID("costarring"), Area_ID("liquid"));
  EXPECT_EQ(Area_Path(Area_ID("liquid")), "liquid");
}

// A store whose pass, the first time, takes long after it has looked at the member.
class C_Slow_Thing : public CAutoSaveClassData2 {
 public:
  Shared<int> force = 1;
  Shared<int> passes = 0;

 protected:
  void OptSaveAndLoadDataStore(CAutoSaveClassData_Data& data) override {
    const C_Store_Class entered(*this, data);
    Process_Member("force", force, data);
    passes = passes + 1;
    if (passes == 1) Sleep(50);
  }
};

TEST(Store_Race, An_Older_Value_Never_Replaces_A_Newer_One) {
  const C_Temp_Folder folder;
  C_Slow_Thing thing;
  C_Thread slow;
  slow.Start("slow save", [&] { thing.SaveAllClassParameterToHashOpt(Name, 1); });
  while (thing.passes == 0) Sleep(1);
  thing.force = 2;
  thing.SaveAllClassParameterToHashOpt(Name, 1);
  slow.Join();
  C_Slow_Thing read;
  read.LoadAllClassParameterFromHashOpt(Name, 1);
  EXPECT_EQ(read.force, 2);
}

}  // namespace
}  // namespace orsanta
