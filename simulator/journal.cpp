#include "simulator/journal.h"

#include <cstdio>

namespace simulator {

std::vector<Journal_Entry> C_Journal::Entries() const {
  std::vector<Journal_Entry> entries;
  entries.reserve(m_Calls.size());
  for (const C_Call& call : m_Calls) entries.push_back({call.time_ms, call.function, call.thread, call.arguments});
  return entries;
}

std::string C_Journal::Text() const {
  std::string text;
  char head[64];
  for (const C_Call& call : m_Calls) {
    std::snprintf(head, sizeof head, "%.3f %d ", call.time_ms, call.thread);
    text.append(head).append(call.function).append("(").append(call.arguments).append(")\n");
  }
  return text;
}

// Addresses are plain ASCII; anything else shows as a question mark.
void C_Journal::Append(std::string& text, const wchar_t* value) {
  if (!text.empty()) text += ", ";
  text += '"';
  for (; value != nullptr && *value != L'\0'; ++value)
    text += *value < 0x7F && *value >= 0x20 ? static_cast<char>(*value) : '?';
  text += '"';
}

}  // namespace simulator
