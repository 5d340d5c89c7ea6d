#include "support/store/store_parser.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <map>
#include <set>
#include <type_traits>

#include "support/system/wide_string.h"

namespace orsanta {

namespace {

constexpr std::string_view Byte_Order_Mark = "\xEF\xBB\xBF";

template <class T>
std::string Bytes_Of(T value) {
  return std::string(reinterpret_cast<const char*>(&value), sizeof value);
}

// Thrown while a line is read; Read_Lines adds the number of the line.
struct C_Line_Fault {
  std::wstring text;
};

[[noreturn]] void Fail(const std::wstring& text) {
  throw C_Line_Fault{text};
}

bool Is_Blank(char c) {
  return c == ' ' || c == '\t';
}

template <class T>
T Read_Number(std::string_view word, int base = 10) {
  T value{};
  std::from_chars_result end{};
  if constexpr (std::is_floating_point_v<T>) {
    end = std::from_chars(word.data(), word.data() + word.size(), value);
  } else {
    end = std::from_chars(word.data(), word.data() + word.size(), value, base);
  }
  if (end.ec == std::errc::result_out_of_range) Fail(L"数值超出范围");
  if (end.ec != std::errc() || end.ptr != word.data() + word.size()) Fail(L"不是有效的数值");
  return value;
}

template <class T>
T Read_Float(std::string_view word) {
  constexpr std::string_view Bits_Mark = "nan:";
  if (word.substr(0, Bits_Mark.size()) != Bits_Mark) return Read_Number<T>(word);
  const T value = std::bit_cast<T>(Read_Number<store_form::C_Bits<T>>(word.substr(Bits_Mark.size()), 16));
  if (!std::isnan(value)) Fail(L"nan: 后面的位不是非数");
  return value;
}

int Hex_Digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  Fail(L"不是十六进制数字");
}

std::string Read_Hex_Bytes(std::string_view word) {
  if (word.size() % 2 != 0) Fail(L"十六进制数字的个数是奇数");
  std::string bytes;
  for (size_t i = 0; i < word.size(); i += 2)
    bytes.push_back(static_cast<char>(Hex_Digit(word[i]) * 16 + Hex_Digit(word[i + 1])));
  return bytes;
}

// Reads one line word by word.
class C_Line_Reader {
 public:
  explicit C_Line_Reader(std::string_view line) : m_Rest(line) {}

  bool At_End() {
    while (!m_Rest.empty() && Is_Blank(m_Rest.front())) m_Rest.remove_prefix(1);
    return m_Rest.empty();
  }

  // The next word, unchanged; empty at the end of the line.
  std::string_view Word() {
    At_End();
    size_t length = 0;
    while (length < m_Rest.size() && !Is_Blank(m_Rest[length])) ++length;
    const std::string_view word = m_Rest.substr(0, length);
    m_Rest.remove_prefix(length);
    return word;
  }

  std::string Quoted() {
    if (At_End() || Take() != '"') Fail(L"文字必须写在双引号内");
    std::string text;
    for (char c = Take(); c != '"'; c = Take()) text.push_back(c == '\\' ? Escape() : c);
    if (!m_Rest.empty() && !Is_Blank(m_Rest.front())) Fail(L"双引号后面缺少空格");
    return text;
  }

  // A name, bare or quoted.
  std::string Name() {
    if (At_End()) Fail(L"行不完整");
    std::string name = m_Rest.front() == '"' ? Quoted() : std::string(Word());
    if (name.find('\0') != std::string::npos) Fail(L"名称中有零字节");
    return name;
  }

 private:
  char Take() {
    if (m_Rest.empty()) Fail(L"缺少结束的双引号");
    const char c = m_Rest.front();
    m_Rest.remove_prefix(1);
    return c;
  }

  char Escape() {
    const char letter = Take();
    const size_t escape = store_form::Escape_Letters.find(letter);
    if (escape != std::string_view::npos) return store_form::Escaped[escape];
    if (letter != 'x') Fail(L"未知的转义字符");
    const int high = Hex_Digit(Take());
    if (high > 7) Fail(L"\\x 只用于 00 到 7f");  // beyond it are parts of characters
    return static_cast<char>(high * 16 + Hex_Digit(Take()));
  }

  std::string_view m_Rest;
};

C_Entry_Kind Read_Kind(std::string_view word) {
  for (const auto& known : store_form::Kinds)
    if (word == known.word) return known.kind;
  Fail(L"未知的类型 " + From_Utf8(std::string(word)));
}

C_Store_Entry Read_Entry(std::string_view line) {
  C_Line_Reader reader(line);
  C_Store_Entry entry;
  entry.path = reader.Name();
  entry.key = reader.Name();
  entry.index = Read_Number<int32_t>(reader.Word());
  if (entry.index < 0) Fail(L"序号不能为负");
  if (reader.Word() != "=") Fail(L"缺少等号");
  entry.kind = Read_Kind(reader.Word());
  switch (entry.kind) {
    case C_Entry_Kind::Raw:
      entry.bytes = Read_Hex_Bytes(reader.Word());
      break;
    case C_Entry_Kind::Int:
      entry.bytes = Bytes_Of(Read_Number<int32_t>(reader.Word()));
      break;
    case C_Entry_Kind::Float:
      entry.bytes = Bytes_Of(Read_Float<float>(reader.Word()));
      break;
    case C_Entry_Kind::Double:
      entry.bytes = Bytes_Of(Read_Float<double>(reader.Word()));
      break;
    case C_Entry_Kind::Text:
      entry.bytes = reader.Quoted();
      break;
    case C_Entry_Kind::Array:
      entry.bytes = reader.Name();
      entry.count = Read_Number<int32_t>(reader.Word());
      if (entry.count < 0) Fail(L"元素个数不能为负");
      break;
  }
  if (!reader.At_End()) Fail(L"行尾有多余的内容");
  return entry;
}

// The lines of a text, without their ends.
class C_Lines {
 public:
  explicit C_Lines(std::string_view text) : m_Rest(text) {}

  bool Next(std::string_view& line) {
    if (m_Rest.empty()) return false;
    const size_t end = m_Rest.find('\n');
    line = m_Rest.substr(0, end);
    m_Rest.remove_prefix(end == std::string_view::npos ? m_Rest.size() : end + 1);
    while (!line.empty() && (Is_Blank(line.back()) || line.back() == '\r')) line.remove_suffix(1);
    while (!line.empty() && Is_Blank(line.front())) line.remove_prefix(1);
    ++m_Number;
    return true;
  }
  int Number() const { return m_Number; }

 private:
  std::string_view m_Rest;
  int m_Number = 0;
};

void Check_Utf8(std::string_view line) {
  if (std::all_of(line.begin(), line.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; })) return;
  const std::string bytes(line);
  if (To_Utf8(From_Utf8(bytes)) != bytes) Fail(L"不是UTF-8文字,请用UTF-8编码保存");
}

using C_Places = std::map<C_Store_Place, int>;  // the line of each

// Reads the lines after the first. Returns false when the last one is missing. What occurs twice is in neither
// `places` nor, in the end, `content`.
bool Read_Lines(C_Lines& lines, C_Store_Content& content, C_Places& places, std::vector<C_Store_Fault>& faults) {
  bool ended = false;
  std::set<C_Store_Place> doubled;
  const auto read_line = [&](std::string_view line) {
    Check_Utf8(line);
    if (line.front() == '#') {
      content.comments.emplace_back(line);
    } else if (ended) {
      Fail(L"end 之后还有内容");
    } else if (line == store_form::Last_Line) {
      ended = true;
    } else {
      C_Store_Entry entry = Read_Entry(line);
      entry.line = lines.Number();
      const auto [place, is_new] = places.try_emplace(entry.Place(), entry.line);
      if (!is_new) {
        doubled.insert(place->first);
        Fail(L"与第" + std::to_wstring(place->second) + L"行重复,两行都没有采用");
      }
      content.entries.push_back(std::move(entry));
    }
  };
  for (std::string_view line; lines.Next(line);) {
    try {
      if (!line.empty()) read_line(line);
    } catch (const C_Line_Fault& fault) {
      faults.push_back({lines.Number(), fault.text});
    }
  }
  for (const C_Store_Place& place : doubled) places.erase(place);
  return ended;
}

// Drops arrays whose elements are not all there: places without a value would be left. An element may be an array
// itself, so that dropping one can make another incomplete. Returns whether one was dropped.
bool Drop_Incomplete_Array(C_Store_Content& content, C_Places& places, std::vector<C_Store_Fault>& faults) {
  for (const C_Store_Entry& entry : content.entries) {
    if (entry.kind != C_Entry_Kind::Array) continue;
    const std::string element_path = entry.Element_Path();
    int i = 0;
    while (i < entry.count && places.count({element_path, entry.key, i}) != 0) ++i;
    if (i == entry.count) continue;
    faults.push_back(
        {entry.line, L"数组应有" + std::to_wstring(entry.count) + L"个元素,缺少序号" + std::to_wstring(i)});
    std::erase_if(places, [&entry, &element_path](const auto& place) {
      const auto& [path, key, index] = place.first;
      return key == entry.key && (path == entry.path || path == element_path);
    });
    return true;
  }
  return false;
}

}  // namespace

C_Store_State Parse_Store(std::string_view text, C_Store_Content& content, std::vector<C_Store_Fault>& faults) {
  content = {};
  faults.clear();
  if (text.substr(0, Byte_Order_Mark.size()) == Byte_Order_Mark) text.remove_prefix(Byte_Order_Mark.size());
  C_Lines lines(text);
  std::string_view line;
  while (line.empty() && lines.Next(line)) continue;
  if (line != store_form::First_Line) {
    faults.push_back({std::max(lines.Number(), 1), line.empty() ? L"文件是空的" : L"第一行应为 orsanta store 1"});
    return C_Store_State::Broken;
  }
  C_Places places;
  if (!Read_Lines(lines, content, places, faults)) {
    content = {};
    faults.push_back({lines.Number(), L"文件不完整,缺少最后一行 end"});
    return C_Store_State::Broken;
  }
  const auto drop_the_lost = [&] {
    std::erase_if(content.entries, [&](const auto& entry) { return places.count(entry.Place()) == 0; });
  };
  do {
    drop_the_lost();
  } while (Drop_Incomplete_Array(content, places, faults));
  std::stable_sort(faults.begin(), faults.end(), [](const auto& a, const auto& b) { return a.line < b.line; });
  return faults.empty() ? C_Store_State::Whole : C_Store_State::Faulty;
}

}  // namespace orsanta
