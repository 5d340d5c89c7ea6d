// The form of a store's file: UTF-8 text that an operator can read and correct in an editor.
//
//   orsanta store 1
//   C_InitDlg Num 0 = int 1
//   C_VoiceMotor Val_Force_OffSet 0 = double 0.1
//   C_VoiceMotor m_P 0 = array CMyArray<double> 2
//   C_VoiceMotor/CMyArray m_P 0 = double -1.5
//   C_VoiceMotor/CMyArray m_P 1 = double nan:7ff8000000000000
//   C_ORS_Dlg password_str 0 = text "mocha"
//   end
//
// One entry a line: class path, key, index, kind, value. Every value reads back to the same bits. Names with blanks are
// quoted like texts, with \" \\ \n \r \t and, for the other control characters, \xHH. Empty lines are allowed anywhere;
// lines that start with # are kept. The last line shows that the file is whole. store_parser.h reads it.
//
// No file is touched here, and no call depends on the locale or keeps state: any thread.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <vector>

#include "support/base/hash.h"

namespace orsanta {

// What identifies an entry: class path, key, index.
using C_Store_Place = std::tuple<std::string, std::string, int>;

struct C_Store_Entry {
  std::string path;  // class names joined by '/'
  std::string key;
  int index = 0;
  C_Entry_Kind kind = C_Entry_Kind::Raw;
  std::string bytes;  // the value as it is in memory; a text in UTF-8; of an array, the type of the array
  int count = 0;      // of an array
  int line = 0;       // of the file, from 1; Parse_Store fills it in

  C_Store_Place Place() const { return {path, key, index}; }
  std::string Element_Path() const { return path + "/CMyArray"; }  // of an array: the class path of its elements
};

struct C_Store_Content {
  std::vector<std::string> comments;
  std::vector<C_Store_Entry> entries;
};

std::string Format_Store(const C_Store_Content& content);
// The word for a kind in the file.
const char* Kind_Word(C_Entry_Kind kind);
// The entries of `present` that `written` does not name, and its comments, added to `written`. Elements beyond the new
// end of an array are dropped.
void Keep_Unknown_Entries(const C_Store_Content& present, C_Store_Content& written);

// What Format_Store and Parse_Store share.
namespace store_form {

constexpr std::string_view First_Line = "orsanta store 1";
constexpr std::string_view Last_Line = "end";

constexpr struct {
  C_Entry_Kind kind;
  const char* word;
} Kinds[] = {{C_Entry_Kind::Raw, "raw"},       {C_Entry_Kind::Int, "int"},   {C_Entry_Kind::Float, "float"},
             {C_Entry_Kind::Double, "double"}, {C_Entry_Kind::Text, "text"}, {C_Entry_Kind::Array, "array"}};

// In quotes each of these characters is written as a backslash and the letter at the same position.
constexpr std::string_view Escaped = "\"\\\n\r\t";
constexpr std::string_view Escape_Letters = "\"\\nrt";

// The whole number type that holds the bits of a floating-point type.
template <class T>
using C_Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

}  // namespace store_form

}  // namespace orsanta
