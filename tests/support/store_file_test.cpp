#include "support/store_file.h"

#include <gtest/gtest.h>

#include "support/wide_string.h"

namespace orsanta {
namespace {

TEST(Store_File, Says_Where_And_Why_It_Cannot_Be_Read) {
  const struct {
    const char* lines;  // behind the first line
    int line;
    const wchar_t* reason;
  } bad_stores[] = {
      {"A k 0 = int 1\n", 2, L"不完整"},
      {"A k 0 = int 1\nen", 3, L"行不完整"},
      {"A k 0 = int 1\nend\nA l 0 = int 1\n", 4, L"end 之后"},
      {"A k 0 = int 1\nB k 0 = int 1\nA k 0 = int 2\nend\n", 4, L"第2行重复"},
      {"A k 0 = int 2147483648\nend\n", 2, L"超出范围"},
      {"A k 0 = double 1e999\nend\n", 2, L"超出范围"},
      {"A k 0 = double 1.5x\nend\n", 2, L"不是有效的数值"},
      {"A k 0 = double nan:3ff0000000000000\nend\n", 2, L"不是非数"},
      {"A k 0 = number 1\nend\n", 2, L"未知的类型 number"},
      {"A k 0 int 1\nend\n", 2, L"等号"},
      {"A k -1 = int 1\nend\n", 2, L"序号不能为负"},
      {"A k 0 = int 1 2\nend\n", 2, L"多余"},
      {"A k 0 = text mocha\nend\n", 2, L"双引号内"},
      {"A k 0 = text \"mocha\nend\n", 2, L"结束的双引号"},
      {"A k 0 = text \"\\q\"\nend\n", 2, L"转义"},
      {"A k 0 = text \"\\x82\"\nend\n", 2, L"00 到 7f"},
      {"A k 0 = text \"\xC4\xE3\"\nend\n", 2, L"UTF-8"},
      {"\"A\\x00\" k 0 = int 1\nend\n", 2, L"零字节"},
      {"A k 0 = raw 123\nend\n", 2, L"奇数"},
      {"A p 0 = array T -1\nend\n", 2, L"不能为负"},
      {"A p 0 = array T 2147483647\nA/CMyArray p 0 = double 1\nend\n", 2, L"缺少序号1"},
  };
  for (const auto& bad : bad_stores) {
    C_Store_Content content;
    C_Store_Fault fault;
    EXPECT_FALSE(Parse_Store(std::string("orsanta store 1\n") + bad.lines, content, fault)) << bad.lines;
    EXPECT_EQ(fault.line, bad.line) << bad.lines;
    EXPECT_NE(fault.text.find(bad.reason), std::wstring::npos) << bad.lines << To_Utf8(fault.text);
  }
  for (const char* text : {"", "\n\n", "orsanta store 2\nend\n", "\x7F\x45LF"}) {
    C_Store_Content content;
    C_Store_Fault fault;
    EXPECT_FALSE(Parse_Store(text, content, fault)) << text;
    EXPECT_GE(fault.line, 1);
  }
}

}  // namespace
}  // namespace orsanta
