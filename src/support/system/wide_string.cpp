#include "support/system/wide_string.h"

#include <utf8.h>

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

constexpr wchar_t Replacement = 0xFFFD;
constexpr size_t Longest_Text = size_t{1} << 24;  // characters; a composed text beyond it is a fault of its format

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
    const bool is_scalar = c >= 0 && c <= 0x10FFFF && (c < 0xD800 || c > 0xDFFF);
    utf8::append(static_cast<uint32_t>(is_scalar ? c : Replacement), std::back_inserter(out));
  }
  return out;
}

std::wstring From_Utf8(const std::string& text) {
  std::wstring out;
  out.reserve(text.size());
  for (auto at = text.begin(); at != text.end();) {
    const auto end = utf8::find_invalid(at, text.end());
    utf8::unchecked::utf8to32(at, end, std::back_inserter(out));
    at = end;
    if (at == text.end()) break;
    out.push_back(Replacement);
    ++at;
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
