#include "support/store/store.h"

#include <sys/stat.h>

#include <bit>
#include <clocale>
#include <cstring>
#include <random>

#include "common/failed_check.h"
#include "store_thing.h"

namespace orsanta {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* First = "orsanta store 1\n";

// What was taken, as it stands in a file, and behind it the line and the reason of what was not.
std::string Parsed(const std::string& text) {
  C_Store_Content content;
  std::vector<C_Store_Fault> faults;
  const C_Store_State state = Parse_Store(text, content, faults);
  std::string parsed =
      state == C_Store_State::Broken ? "broken\n" : Format_Store(content).substr(std::string(First).size());
  for (const C_Store_Fault& fault : faults) parsed += std::to_string(fault.line) + " " + To_Utf8(fault.text) + "\n";
  return parsed;
}

class Store : public C_Store_Test {};

TEST_F(Store, Reads_Every_Number_Back_To_The_Same_Bits_In_Every_Locale) {
  C_Thing saved;
  for (const uint64_t bits : {0x0ULL, 0x8000000000000000ULL, 0x1ULL, 0x7FEFFFFFFFFFFFFFULL, 0x7FF0000000000000ULL,
                              0xFFF0000000000000ULL, 0xFFF8000000001234ULL, 0x7FF0000000000001ULL})
    saved.first.Add(std::bit_cast<double>(bits));
  std::mt19937_64 random(11);
  for (int i = 0; i < 2000; ++i) saved.first.Add(std::bit_cast<double>(random()));
  saved.level = std::bit_cast<float>(0x7FC01234U);
  saved.word = std::wstring(L"“摩卡”\t\"\\\r\n\x7F\x01 𝄞 #") + L'\0' + L"end";

  for (const char* locale : {"C", "C.UTF-8", "de_DE", "de_DE.UTF-8", "zh_CN.GB18030"}) {
    std::setlocale(LC_ALL, locale);  // one that is not installed leaves the one before
    ASSERT_EQ(saved.Save(), 1);
    C_Thing read;
    ASSERT_EQ(read.Load(), 1);
    ASSERT_EQ(read.first.GetSize(), 2008);
    EXPECT_EQ(0, std::memcmp(read.first.GetData(), saved.first.GetData(), sizeof(double) * 2008));
    EXPECT_EQ(std::bit_cast<uint32_t>(read.level.Get()), 0x7FC01234U);
    EXPECT_EQ(read.word.Text(), saved.word.Text());
  }
  std::setlocale(LC_ALL, "C");
}

TEST_F(Store, Is_Text_For_Its_Owner_Alone_And_Holds_Arrays_Apart_And_No_Longer_Than_They_Are) {
  C_Thing thing;
  thing.first = Array({1.0, 2.5});
  thing.second = Array({-1.0, -2.5});
  umask(0);
  ASSERT_EQ(thing.Save(), 1);
  EXPECT_EQ(std::filesystem::status(File).permissions(), std::filesystem::perms(0600));
  chmod(File, 0644);  // as an editor leaves it
  C_Thing read;
  read.Load();
  EXPECT_EQ(std::filesystem::status(File).permissions(), std::filesystem::perms(0600));
  read.first.SetArraySize(1);
  read.Save();
  EXPECT_EQ(File_Text(File),
            "orsanta store 1\n"
            "C_Thing count 0 = int 1\nC_Thing force 0 = double 200\n"
            "C_Thing word 0 = text \"mocha\"\nC_Thing level 0 = float 2\n"
            "C_Thing Val_Pos_Friction[0].MyArrayP 0 = array CMyArray<double> 1\n"
            "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 0 = double 1\n"
            "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 2\n"
            "C_Thing/CMyArray Val_Pos_Friction[1].MyArrayP 0 = double -1\n"
            "C_Thing/CMyArray Val_Pos_Friction[1].MyArrayP 1 = double -2.5\n"
            "end\n");
  EXPECT_NE(Area_ID("costarring"), Area_ID("liquid")) << "they have the same 32-bit hash";
}

TEST_F(Store, Leaves_What_Is_Absent_And_Keeps_What_Is_Unknown) {
  C_Thing thing;
  thing.first = Array({3.0});
  thing.second = Array({1.0});
  EXPECT_EQ(thing.Load(), 0);
  EXPECT_EQ(thing.force, 200.0);

  // As an editor of another system may leave it: byte order mark, line ends, blanks, a comment.
  Write(
      "\xEF\xBB\xBForsanta store 1\r\n# Müller 2024\r\n\r\n"
      "  C_Thing\tforce 0  =  double 150.5 \r\n"
      "\"C_Other Class\" \"a b\" 7 = raw 00FF\r\n\"end\" \"#\" 0 = int 1\r\n"
      "C_Thing Val_Pos_Friction[1].MyArrayP 0 = array CMyArray<double> 0\r\n  end");
  EXPECT_EQ(thing.Load(), 1);
  EXPECT_EQ(thing.force, 150.5);
  EXPECT_THAT(Values(thing.first), ElementsAre(3.0));
  EXPECT_EQ(thing.second.GetSize(), 0) << "an empty array in the store empties the member";

  EXPECT_EQ(thing.Save(), 1);
  EXPECT_THAT(File_Text(File),
              AllOf(HasSubstr("# Müller 2024\n"),
                    HasSubstr("\"C_Other Class\" \"a b\" 7 = raw 00ff\n\"end\" \"#\" 0 = int 1\nend\n")));
  EXPECT_TRUE(front->Shown().empty());
}

TEST_F(Store, Stays_In_Its_Place_With_A_Copy_Of_Each_State_That_Was_Not_Taken_Whole) {
  const struct {
    std::string lines;
    int count;  // as it is read
    std::string told, copy;
  } stores[] = {{"C_Thing count 0 = int 5\nC_Thing force 0 = double 15O\nend\n", 5,
                 "第3行 不是有效的数值\n有误的各项使用默认值,其余照常。", ".bad"},
                {"C_Thing count 0 = int 7\n", 1, "第2行 文件不完整,缺少最后一行 end\n本次使用默认值。", ".1.bad"},
                {"C_Thing count 0 = int 6\nC_Thing force 0 = float 3\nC_Thing word 0 = int 1\n"
                 "C_Thing Val_Pos_Friction[0].MyArrayP 0 = array CMyArray<double> 2\n"
                 "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 0 = double 8\n"
                 "C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 1 = int 9\nend\n",
                 6,
                 "第3行 C_Thing force 0 应为 double\n第4行 C_Thing word 0 应为 text\n"
                 "第7行 C_Thing/CMyArray Val_Pos_Friction[0].MyArrayP 1 应为 double\n有误的各项使用默认值,其余照常。",
                 ".2.bad"}};
  for (const auto& store : stores) {
    const std::string text = "orsanta store 1\n" + store.lines;
    Write(text);
    for (int start = 0; start < 2; ++start) {  // the first one is killed before it saves; its copy serves the second
      C_Thing thing;
      thing.first = Array({4.0});
      EXPECT_EQ(thing.Load(), store.count == 1 ? 0 : 1);
      EXPECT_EQ(thing.count, store.count);
      EXPECT_EQ(thing.force, 200.0);
      EXPECT_EQ(thing.word.Text(), L"mocha");
      EXPECT_THAT(Values(thing.first), ElementsAre(4.0)) << "no array of half its values";
      EXPECT_EQ(Only_Box(), store_name + " 有误:\n" + store.told + "\n原文件的副本是 " + File + store.copy +
                                "。要恢复,请先退出程序,把副本修正后改回原名,再启动。");
      EXPECT_EQ(File_Text(File), text);
      EXPECT_EQ(File_Text(File + store.copy), text);
      EXPECT_EQ(start == 0 ? 1 : thing.Save(), 1);
    }
    EXPECT_THAT(File_Text(File), HasSubstr("count 0 = int " + std::to_string(store.count) + "\n"));
    EXPECT_TRUE(front->Shown().empty()) << "what the load has told";
  }
  EXPECT_EQ(std::filesystem::status("音圈电机3参数.bad").permissions(), std::filesystem::perms(0600));

  for (const int faults : {10, 11}) {
    std::string lines;
    for (int i = 0; i < faults; ++i) lines += "C_Thing count 0 = int x\n";
    Write("orsanta store 1\n" + lines + "end\n");
    EXPECT_EQ(C_Thing().Save(), 1);
    EXPECT_THAT(Only_Box(),
                HasSubstr(std::string("\n第11行 不是有效的数值\n") + (faults > 10 ? "…… 共11处\n" : "") + "原"));
  }
}

TEST_F(Store, An_Array_Of_Another_Layout_Is_A_Fault_Of_The_Program) {
  for (const char* value : {"array CMyArray<int> 0", "double 1", "text \"123456789012\""}) {
    Write(std::string("orsanta store 1\nC_Thing Val_Pos_Friction[0].MyArrayP 0 = ") + value + "\nend\n");
    EXPECT_NE(0, Failed_Check_Line([] { C_Thing().Load(); })) << value;
    EXPECT_THAT(
        CVCDumpMessage::m_cErrorMsg(),
        HasSubstr("参数文件 音圈电机3参数 第2行 C_Thing Val_Pos_Friction[0].MyArrayP 0 应为 array CMyArray<double>"));
  }
}

TEST(Store_File, A_Line_That_Cannot_Be_Read_Costs_Its_Own_Entry_Alone) {
  std::istringstream bad_lines(  // each with what is told of it
      "A k 0 = int 2147483648 -> 数值超出范围\nA k 0 = double 1e999 -> 数值超出范围\n"
      "A k 0 = double nan:0 -> nan: 后面的位不是非数\nA k 0 = number 1 -> 未知的类型 number\n"
      "A k 0 int 1 -> 缺少等号\nA k -1 = int 1 -> 序号不能为负\nA k 0 = int 1 2 -> 行尾有多余的内容\nA -> 行不完整\n"
      "A k 0 = text mocha -> 文字必须写在双引号内\nA k 0 = text \"mocha -> 缺少结束的双引号\n"
      "A k 0 = text \"mocha\"2 -> 双引号后面缺少空格\nA k 0 = text \"\\q\" -> 未知的转义字符\n"
      "A k 0 = text \"\\x82\" -> \\x 只用于 00 到 7f\nA k 0 = text \"\xC4\xE3\" -> 不是UTF-8文字,请用UTF-8编码保存\n"
      "# \xC4\xE3 -> 不是UTF-8文字,请用UTF-8编码保存\nA p 0 = array T -1 -> 元素个数不能为负\n"
      "\"A\\x00\" k 0 = int 1 -> 名称中有零字节\nA k 0 = raw 123 -> 十六进制数字的个数是奇数\n"
      "A k 0 = raw 1g -> 不是十六进制数字\n");
  for (std::string bad; std::getline(bad_lines, bad);) {
    const size_t arrow = bad.find(" -> ");
    EXPECT_EQ(Parsed(std::string(First) + "A a 0 = int 1\n" + bad.substr(0, arrow) + "\nA z 0 = int 2\nend\n"),
              "A a 0 = int 1\nA z 0 = int 2\nend\n3 " + bad.substr(arrow + 4) + "\n");
  }
}

TEST(Store_File, Takes_Nothing_In_Halves) {
  const std::pair<const char*, const char*> stores[] = {
      // Which of two entries was meant is not for the program to say.
      {"A k 0 = int 1\nB k 0 = int 1\nA k 0 = int 2\nA k 0 = int 3\nend\nA l 0 = int 1\n",
       "B k 0 = int 1\nend\n4 与第2行重复,两行都没有采用\n5 与第2行重复,两行都没有采用\n7 end 之后还有内容\n"},
      // An array with a bad element goes whole, and an array of arrays with it; its neighbours stay.
      {"A p 0 = array L 2\nA/CMyArray p 0 = array T 1\nA/CMyArray p 1 = array T 1\nA/CMyArray/CMyArray p 0 = int x\n"
       "A q 0 = array T 2\nA/CMyArray q 0 = int 1\nA/CMyArray q 1 = int 2\nend\n",
       "A q 0 = array T 2\nA/CMyArray q 0 = int 1\nA/CMyArray q 1 = int 2\nend\n2 数组应有2个元素,缺少序号0\n"
       "3 数组应有1个元素,缺少序号0\n5 不是有效的数值\n"},
      {"A p 0 = array T 2\nA/CMyArray p 0 = int 1\nend\n", "end\n2 数组应有2个元素,缺少序号1\n"},
      // A file that was cut off may have been cut off inside a number.
      {"A k 0 = int 1\nen", "broken\n3 行不完整\n3 文件不完整,缺少最后一行 end\n"},
  };
  for (const auto& [lines, parsed] : stores) EXPECT_EQ(Parsed(std::string(First) + lines), parsed);
  for (const char* text : {"", "\n\n"}) EXPECT_TRUE(Parsed(text).ends_with("文件是空的\n")) << text;
  for (const char* text : {"\norsanta store 2\nend\n", "\n\x7F\x45LF"})
    EXPECT_EQ(Parsed(text), "broken\n2 第一行应为 orsanta store 1\n");
}

}  // namespace
}  // namespace orsanta
