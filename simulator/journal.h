// The journal of contract calls. The caller holds the simulator's lock.
#pragma once

#include <bit>
#include <charconv>
#include <concepts>
#include <cstdint>
#include <cwchar>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/noise.h"
#include "simulator/simulator.h"

namespace simulator {

class C_Journal {
 public:
  void Keep_Reads(bool keep) { m_Keep_Reads = keep; }
  void Clear() { m_Calls.clear(); }
  std::vector<Journal_Entry> Entries() const;
  std::string Text() const;
  uint64_t Checksum() const { return m_Checksum; }

  // A call that commands something or asks about the room.
  template <class... A>
  void Call(double time_ms, const char* function, int thread, const A&... arguments) {
    Add_To_Checksum(time_ms, function, thread, arguments...);
    Keep(time_ms, function, thread, arguments...);
  }
  // A read that runs all the time.
  template <class... A>
  void Read(double time_ms, const char* function, int thread, const A&... arguments) {
    Add_To_Checksum(time_ms, function, thread, arguments...);
    if (m_Keep_Reads) Keep(time_ms, function, thread, arguments...);
  }
  // What a call returned goes into the checksum alone.
  void Result(double value) { Add(std::bit_cast<uint64_t>(value)); }

 private:
  struct C_Call {
    double time_ms;
    const char* function;
    int thread;
    std::string arguments;
  };

  void Add(uint64_t value) { m_Checksum = Mix(m_Checksum ^ value); }
  void Add_Value(std::integral auto value) { Add(static_cast<uint64_t>(value)); }
  void Add_Value(double value) { Add(std::bit_cast<uint64_t>(value)); }
  void Add_Value(const wchar_t* text) {
    for (; text != nullptr && *text != L'\0'; ++text) Add(static_cast<uint64_t>(*text));
  }

  template <class... A>
  void Add_To_Checksum(double time_ms, const char* function, int thread, const A&... arguments) {
    Add_Value(time_ms);
    for (std::string_view name = function; !name.empty();) {
      uint64_t letters = 0;
      name.remove_prefix(name.copy(reinterpret_cast<char*>(&letters), sizeof letters));
      Add(letters);
    }
    Add_Value(thread);
    (Add_Value(arguments), ...);
  }

  template <class... A>
  void Keep(double time_ms, const char* function, int thread, const A&... arguments) {
    if (m_Calls.size() >= static_cast<size_t>(Journal_Limit)) m_Calls.pop_front();
    m_Calls.push_back({time_ms, function, thread, {}});
    (Append(m_Calls.back().arguments, arguments), ...);
  }

  template <class T>
  requires std::integral<T> || std::same_as<T, double>
  static void Append(std::string& text, T value) {
    char digits[32];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    if (!text.empty()) text += ", ";
    text.append(digits, end);
  }
  static void Append(std::string& text, const wchar_t* value);

  std::deque<C_Call> m_Calls;
  uint64_t m_Checksum = 0;
  bool m_Keep_Reads = false;
};

}  // namespace simulator
