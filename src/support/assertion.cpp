#include "support/assertion.h"

#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <vector>

#include "support/critical_section.h"
#include "support/trace.h"
#include "support/wide_string.h"

namespace orsanta {

std::string& CVCDumpMessage::Error_Msg() {
  static std::string& text = *new std::string;
  return text;
}

CMyCriticalSection& CVCDumpMessage::m_hErrorMsg() {
  static CMyCriticalSection& section = *new CMyCriticalSection;
  return section;
}

void CVCDumpMessage::DumpFileProcess() {
  std::fprintf(stderr, "%s\n", Error_Msg().c_str());
  _exit(3);
}

std::string& cMyAssertAppendDispInfo() {
  static std::string& text = *new std::string;
  return text;
}

std::string Format_Assert_Text(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::vector<char> room(length < 0 ? 1 : static_cast<size_t>(length) + 1);
  if (length >= 0) std::vsnprintf(room.data(), room.size(), format, again);
  va_end(again);
  return room.data();
}

void Report_Assertion(const char* function, int line, const std::string& message) {
  const std::string text = Format_Assert_Text("%s\nfunc: %s\nline: %d\n", message.c_str(), function, line);
  CVCDumpMessage::m_hErrorMsg().Lock();
  CVCDumpMessage::Error_Msg() = text;
  MY_TRACE0(From_Utf8(text).c_str());
  TraceLog2File(function, line, From_Utf8(text).c_str());
  std::set_terminate(&CVCDumpMessage::DumpFileProcess);
  throw CMy_Assert_Exception();
}

}  // namespace orsanta
