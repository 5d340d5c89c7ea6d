// CMyStringW: the wide string of the system, and the conversions at its borders. Files and streams are UTF-8 in every
// locale; wide texts are UTF-32, one element for each character. A plain std::wstring is the platform's string.
#pragma once

#include <string>

namespace orsanta {

std::string To_Utf8(const std::wstring& text);
// Bytes that are no UTF-8 come out as U+FFFD, one for each.
std::wstring From_Utf8(const std::string& text);

class CMyStringW {
 public:
  CMyStringW() = default;
  CMyStringW(const wchar_t* text) : m_Text(text != nullptr ? text : L"") {}         // NOLINT: converts like a literal
  CMyStringW(const char* utf8) : m_Text(From_Utf8(utf8 != nullptr ? utf8 : "")) {}  // NOLINT
  CMyStringW(std::wstring text) : m_Text(std::move(text)) {}                        // NOLINT

  int operator==(const CMyStringW& other) const { return m_Text == other.m_Text ? 1 : 0; }
  int operator==(const wchar_t* other) const { return m_Text == other ? 1 : 0; }

  // Composes the text in the manner of the wide printf in which %s takes a wide text (const wchar_t*). Independent of
  // the locale. Returns itself.
  CMyStringW& Format(const wchar_t* format, ...);
  CMyStringW& Append(const CMyStringW& other);

  const wchar_t* GetBuffer() const { return m_Text.c_str(); }
  operator const wchar_t*() const { return m_Text.c_str(); }  // NOLINT: passed where a wide text is expected
  const std::wstring& Text() const { return m_Text; }
  bool Is_Empty() const { return m_Text.empty(); }

 private:
  std::wstring m_Text;
};

// A text composed in the manner of printf, whose arguments the compiler checks. Format and texts are UTF-8; the locale
// has no influence. Empty when there is no memory for it.
CMyStringW Format_Text(const char* format, ...) __attribute__((format(printf, 1, 2)));
// The same in UTF-8.
std::string Format_Utf8(const char* format, ...) __attribute__((format(printf, 1, 2)));

}  // namespace orsanta
