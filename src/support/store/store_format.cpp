#include "support/store/store_format.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <set>
#include <utility>

namespace orsanta {

namespace {

template <class T>
T Value_Of(const std::string& bytes) {
  T value{};
  std::memcpy(&value, bytes.data(), std::min(sizeof value, bytes.size()));
  return value;
}

template <class T>
void Put_Number(std::string& out, T value, int base = 10) {
  char digits[32];
  std::to_chars_result end{};
  if constexpr (std::is_floating_point_v<T>) {
    end = std::to_chars(digits, digits + sizeof digits, value);  // the shortest text that reads back to the same bits
  } else {
    end = std::to_chars(digits, digits + sizeof digits, value, base);
  }
  out.append(digits, end.ptr);
}

template <class T>
void Put_Float(std::string& out, T value) {
  if (std::isnan(value)) {
    out += "nan:";
    Put_Number(out, std::bit_cast<store_form::C_Bits<T>>(value), 16);
  } else {
    Put_Number(out, value);
  }
}

void Put_Hex_Byte(std::string& out, unsigned char byte) {
  constexpr const char* Digits = "0123456789abcdef";
  out.push_back(Digits[byte >> 4]);
  out.push_back(Digits[byte & 15]);
}

bool Is_Control(char c) {
  return static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
}

void Put_Quoted(std::string& out, std::string_view text) {
  out.push_back('"');
  for (const char c : text) {
    const size_t escape = store_form::Escaped.find(c);
    if (escape != std::string_view::npos) {
      out.push_back('\\');
      out.push_back(store_form::Escape_Letters[escape]);
    } else if (Is_Control(c)) {
      out += "\\x";
      Put_Hex_Byte(out, static_cast<unsigned char>(c));
    } else {
      out.push_back(c);
    }
  }
  out.push_back('"');
}

// A name needs no quotes where it reads back as one word.
void Put_Name(std::string& out, std::string_view name) {
  bool bare = !name.empty() && name.front() != '#' && name != store_form::Last_Line;
  for (const char c : name) bare = bare && c != ' ' && c != '"' && !Is_Control(c);
  if (bare) {
    out += name;
  } else {
    Put_Quoted(out, name);
  }
}

void Put_Value(std::string& out, const C_Store_Entry& entry) {
  switch (entry.kind) {
    case C_Entry_Kind::Raw:
      for (const char c : entry.bytes) Put_Hex_Byte(out, static_cast<unsigned char>(c));
      break;
    case C_Entry_Kind::Int:
      Put_Number(out, Value_Of<int32_t>(entry.bytes));
      break;
    case C_Entry_Kind::Float:
      Put_Float(out, Value_Of<float>(entry.bytes));
      break;
    case C_Entry_Kind::Double:
      Put_Float(out, Value_Of<double>(entry.bytes));
      break;
    case C_Entry_Kind::Text:
      Put_Quoted(out, entry.bytes);
      break;
    case C_Entry_Kind::Array:
      Put_Name(out, entry.bytes);
      out.push_back(' ');
      Put_Number(out, entry.count);
      break;
  }
}

}  // namespace

const char* Kind_Word(C_Entry_Kind kind) {
  for (const auto& known : store_form::Kinds)
    if (kind == known.kind) return known.word;
  return "";
}

std::string Format_Store(const C_Store_Content& content) {
  std::string out(store_form::First_Line);
  out.push_back('\n');
  for (const std::string& comment : content.comments) out.append(comment).push_back('\n');
  for (const C_Store_Entry& entry : content.entries) {
    Put_Name(out, entry.path);
    out.push_back(' ');
    Put_Name(out, entry.key);
    out.push_back(' ');
    Put_Number(out, entry.index);
    out.append(" = ").append(Kind_Word(entry.kind)).push_back(' ');
    Put_Value(out, entry);
    out.push_back('\n');
  }
  out.append(store_form::Last_Line).push_back('\n');
  return out;
}

void Keep_Unknown_Entries(const C_Store_Content& present, C_Store_Content& written) {
  written.comments = present.comments;
  std::set<C_Store_Place> places;
  std::set<std::pair<std::string, std::string>> element_lists;  // path and key of the elements of written arrays
  for (const C_Store_Entry& entry : written.entries) {
    places.insert(entry.Place());
    if (entry.kind == C_Entry_Kind::Array) element_lists.emplace(entry.Element_Path(), entry.key);
  }
  for (const C_Store_Entry& entry : present.entries) {
    if (places.count(entry.Place()) != 0 || element_lists.count({entry.path, entry.key}) != 0) continue;
    written.entries.push_back(entry);
  }
}

}  // namespace orsanta
