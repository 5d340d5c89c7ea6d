#include "support/dialog/dialog_entry.h"

#include <charconv>
#include <cmath>

namespace orsanta {

namespace {

// The typed text in plain characters, without blanks around it.
std::string Plain_Text(const std::wstring& text) {
  std::string plain;
  for (const wchar_t c : text) {
    if (c >= L'０' && c <= L'９') {
      plain.push_back(static_cast<char>('0' + (c - L'０')));
    } else if (c == L'．') {
      plain.push_back('.');
    } else if (c == L'－' || c == L'−') {
      plain.push_back('-');
    } else if (c == L'＋') {
      plain.push_back('+');
    } else if (c == L'　' || c == L'\t') {
      plain.push_back(' ');
    } else {
      plain.push_back(c > 0 && c < 0x80 ? static_cast<char>(c) : '?');
    }
  }
  const size_t first = plain.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  plain = plain.substr(first, plain.find_last_not_of(' ') + 1 - first);
  const bool signed_digit = plain.size() > 1 && plain[0] == '+' && plain[1] != '-';
  return signed_digit ? plain.substr(1) : plain;
}

template <class T>
bool Read_Whole(const std::wstring& text, T& value) {
  const std::string plain = Plain_Text(text);
  T read{};
  const auto end = std::from_chars(plain.data(), plain.data() + plain.size(), read);
  if (end.ec != std::errc() || end.ptr != plain.data() + plain.size()) return false;
  value = read;
  return true;
}

std::wstring Shortest_Text(double value) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value);
  return std::wstring(digits, end.ptr);
}

}  // namespace

std::wstring Number_Text(double value, int decimals) {
  char digits[512];  // the longest number has 309 digits before the point
  const auto end = std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, decimals);
  return end.ec == std::errc() ? std::wstring(digits, end.ptr) : Shortest_Text(value);
}

bool Read_Typed(const std::wstring& text, double& value) {
  double read = 0.0;
  if (!Read_Whole(text, read) || !std::isfinite(read)) return false;
  value = read;
  return true;
}

bool Read_Typed(const std::wstring& text, int& value) {
  return Read_Whole(text, value);
}

std::wstring Range_Reason(double min, double max) {
  return L"请输入 " + Shortest_Text(min) + L" 到 " + Shortest_Text(max) + L" 之间的数值";
}

std::wstring No_Number_Reason(bool integer) {
  return integer ? L"请输入整数" : L"请输入数字";
}

}  // namespace orsanta
