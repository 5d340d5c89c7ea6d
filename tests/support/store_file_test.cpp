#include "support/store/store_file.h"

#include <gtest/gtest.h>

#include "support/system/wide_string.h"

namespace orsanta {
namespace {

constexpr const char* First = "orsanta store 1\n";

// What was taken, as it stands in a file, and behind it the line and the reason of what was not.
std::string Parsed(const std::string& text) {
  C_Store_Content content;
  std::vector<C_Store_Fault> faults;
  const C_Store_State state = Parse_Store(text, content, faults);
  EXPECT_EQ(faults.empty(), state == C_Store_State::Whole) << text;
  std::string parsed =
      state == C_Store_State::Broken ? "broken\n" : Format_Store(content).substr(std::string(First).size());
  for (const C_Store_Fault& fault : faults) parsed += std::to_string(fault.line) + " " + To_Utf8(fault.text) + "\n";
  return parsed;
}

TEST(Store_File, A_Line_That_Cannot_Be_Read_Costs_Its_Own_Entry_Alone) {
  const std::pair<const char*, const char*> bad_lines[] = {
      {"A k 0 = int 2147483648", "数值超出范围"},
      {"A k 0 = double 1e999", "数值超出范围"},
      {"A k 0 = double nan:3ff0000000000000", "nan: 后面的位不是非数"},
      {"A k 0 = number 1", "未知的类型 number"},
      {"A k 0 int 1", "缺少等号"},
      {"A k -1 = int 1", "序号不能为负"},
      {"A k 0 = int 1 2", "行尾有多余的内容"},
      {"A", "行不完整"},
      {"A k 0 = text mocha", "文字必须写在双引号内"},
      {"A k 0 = text \"mocha", "缺少结束的双引号"},
      {"A k 0 = text \"mocha\"2", "双引号后面缺少空格"},
      {"A k 0 = text \"\\q\"", "未知的转义字符"},
      {"A k 0 = text \"\\x82\"", "\\x 只用于 00 到 7f"},
      {"A k 0 = text \"\xC4\xE3\"", "不是UTF-8文字,请用UTF-8编码保存"},
      {"# \xC4\xE3", "不是UTF-8文字,请用UTF-8编码保存"},
      {"\"A\\x00\" k 0 = int 1", "名称中有零字节"},
      {"A k 0 = raw 123", "十六进制数字的个数是奇数"},
      {"A k 0 = raw 1g", "不是十六进制数字"},
      {"A p 0 = array T -1", "元素个数不能为负"},
  };
  for (const auto& [line, fault] : bad_lines)
    EXPECT_EQ(Parsed(std::string(First) + "A a 0 = int 1\n" + line + "\nA z 0 = int 2\nend\n"),
              std::string("A a 0 = int 1\nA z 0 = int 2\nend\n3 ") + fault + "\n");
}

TEST(Store_File, Takes_Nothing_In_Halves) {
  const std::pair<const char*, const char*> stores[] = {
      // what stands behind the first line, and what is taken of it
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
