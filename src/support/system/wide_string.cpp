#include "support/system/wide_string.h"

#include <clocale>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cwchar>
#include <iterator>
#include <memory>
#include <new>
#include <vector>

#include "support/time/uncopied.h"

namespace orsanta {

namespace {

constexpr char32_t Replacement = 0xFFFD;
constexpr size_t Longest_Text = size_t{1} << 24;  // characters; a composed text beyond it is a fault of its format

// The well-formed sequences of UTF-8 by the number of bytes behind the first, of which each has six bits in 10xxxxxx.
constexpr struct {
  char32_t mask;   // of the first byte: these bits ...
  char32_t mark;   // ... have this value, the others are the highest bits of the character
  char32_t least;  // below it a shorter sequence exists
} Sequences[] = {{0x80, 0x00, 0x00}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};

bool Is_Scalar(char32_t c) {
  return c < 0xD800 || (c > 0xDFFF && c <= 0x10FFFF);
}

void Append_Utf8(std::string& out, char32_t c) {
  size_t more = std::size(Sequences) - 1;
  while (c < Sequences[more].least) --more;
  out.push_back(static_cast<char>(Sequences[more].mark | c >> 6 * more));
  while (more-- > 0) out.push_back(static_cast<char>(0x80 | (c >> 6 * more & 0x3F)));
}

// Reads one character at `at` and moves behind it. False, with `at` unmoved, when there is no well-formed one.
bool Read_Utf8(const std::string& bytes, size_t& at, char32_t& c) {
  const auto byte = [&bytes](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  size_t more = 0;
  while (more < std::size(Sequences) && (byte(at) & Sequences[more].mask) != Sequences[more].mark) ++more;
  if (more == std::size(Sequences) || bytes.size() - at <= more) return false;
  c = byte(at) & ~Sequences[more].mask;
  for (size_t i = 1; i <= more; ++i) {
    if ((byte(at + i) & 0xC0) != 0x80) return false;
    c = c << 6 | (byte(at + i) & 0x3F);
  }
  if (c < Sequences[more].least || !Is_Scalar(c)) return false;
  at += more + 1;
  return true;
}

// The C library takes a wide text for %ls only; formats of the contract use %s and %c.
std::wstring Widen_Text_Conversions(const wchar_t* format) {
  std::wstring out;
  for (const wchar_t* p = format; *p != L'\0'; ++p) {
    out.push_back(*p);
    if (*p != L'%') continue;
    ++p;
    while (*p != L'\0' && std::wcschr(L"-+ #0123456789.*", *p) != nullptr) out.push_back(*p++);
    if (*p == L's' || *p == L'c') out.push_back(L'l');
    if (*p == L'\0') break;
    out.push_back(*p);
  }
  return out;
}

// The "C" locale for the calling thread while it lives, whatever locale the host has set.
class C_Plain_Locale : private C_Uncopied {
 public:
  C_Plain_Locale() : m_Old(uselocale(Plain())) {}
  ~C_Plain_Locale() { uselocale(m_Old); }

 private:
  static locale_t Plain() {
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return plain;
  }
  locale_t m_Old;
};

std::wstring Compose(const wchar_t* format, va_list arguments) {
  const std::wstring wide_format = Widen_Text_Conversions(format);
  const C_Plain_Locale plain;
  std::vector<wchar_t> room(256);
  for (;;) {
    va_list again;
    va_copy(again, arguments);
    const int length = std::vswprintf(room.data(), room.size(), wide_format.c_str(), again);
    va_end(again);
    if (length >= 0) return std::wstring(room.data(), static_cast<size_t>(length));
    // The needed length is not known: the buffer is doubled until the text fits.
    if (room.size() >= Longest_Text) return format;
    room.resize(room.size() * 2);
  }
}

std::string Compose_Utf8(const char* format, va_list arguments) {
  const C_Plain_Locale plain;
  char* text = nullptr;
  if (vasprintf(&text, format, arguments) < 0) return {};
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  try {
    return text;
  } catch (const std::bad_alloc&) {
    return {};
  }
}

}  // namespace

std::string To_Utf8(const std::wstring& text) {
  std::string out;
  out.reserve(text.size());
  for (const wchar_t c : text) {
    const auto scalar = static_cast<char32_t>(c);
    Append_Utf8(out, Is_Scalar(scalar) ? scalar : Replacement);
  }
  return out;
}

std::wstring From_Utf8(const std::string& text) {
  std::wstring out;
  out.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    char32_t c = Replacement;
    if (!Read_Utf8(text, at, c)) {
      c = Replacement;
      ++at;
    }
    out.push_back(static_cast<wchar_t>(c));
  }
  return out;
}

CMyStringW& CMyStringW::Format(const wchar_t* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  m_Text = Compose(format, arguments);
  va_end(arguments);
  return *this;
}

CMyStringW& CMyStringW::Append(const CMyStringW& other) {
  m_Text += other.m_Text;
  return *this;
}

CMyStringW Format_Text(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string text = Compose_Utf8(format, arguments);
  va_end(arguments);
  try {
    return From_Utf8(text);
  } catch (const std::bad_alloc&) {
    return {};
  }
}

std::string Format_Utf8(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::string text = Compose_Utf8(format, arguments);
  va_end(arguments);
  return text;
}

}  // namespace orsanta
