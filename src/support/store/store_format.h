// What the writer and the reader of a store's file share.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "support/store/store_file.h"

namespace orsanta::store_form {

constexpr std::string_view First_Line = "orsanta store 1";
constexpr std::string_view Last_Line = "end";
constexpr const char* Element_Class = "/CMyArray";  // behind the class path of an array stands that of its elements

constexpr struct {
  C_Entry_Kind kind;
  const char* word;
} Kinds[] = {{C_Entry_Kind::Raw, "raw"},       {C_Entry_Kind::Int, "int"},   {C_Entry_Kind::Float, "float"},
             {C_Entry_Kind::Double, "double"}, {C_Entry_Kind::Text, "text"}, {C_Entry_Kind::Array, "array"}};

// Characters that stand in quotes as a backslash and the letter in the same place.
constexpr std::string_view Escaped = "\"\\\n\r\t";
constexpr std::string_view Escape_Letters = "\"\\nrt";

// The whole number type that holds the bits of a floating-point type.
template <class T>
using C_Bits = std::conditional_t<sizeof(T) == 4, uint32_t, uint64_t>;

// One entry stands under one place.
using C_Place = std::tuple<std::string, std::string, int>;  // path, key, index

inline C_Place Place_Of(const C_Store_Entry& entry) {
  return {entry.path, entry.key, entry.index};
}

}  // namespace orsanta::store_form
