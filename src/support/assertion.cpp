#include "support/assertion.h"

#include <dlfcn.h>

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <vector>

#include "support/critical_section.h"
#include "support/dump.h"
#include "support/process.h"
#include "support/trace.h"
#include "support/wide_string.h"

namespace orsanta {

namespace {

// File name of the library or program that this code is part of.
std::string This_Module_Name() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&This_Module_Name), &info) == 0 || info.dli_fname == nullptr) return "";
  const std::string path = info.dli_fname;
  return path.substr(path.rfind('/') + 1);
}

}  // namespace

// These live as long as the process: a report may come from a static object's destructor.
std::string& CVCDumpMessage::m_cErrorMsg() {
  static std::string& text = *new std::string;
  return text;
}

CMyCriticalSection& CVCDumpMessage::m_hErrorMsg() {
  static CMyCriticalSection& section = *new CMyCriticalSection;
  return section;
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
  const std::string text = Format_Assert_Text(
      "%s\n%s\n%s %s\npath: %s\nmodule: %s\nfunc: %s\nline: %d\n\n--------------\n\n"
      "发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
      "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to developer.",
      message.c_str(), cMyAssertAppendDispInfo().c_str(), __DATE__, __TIME__,
      To_Utf8(CMyExecuteProc::GetCurApplicationFilePath()).c_str(), This_Module_Name().c_str(), function, line);
  CVCDumpMessage::m_hErrorMsg().Lock();  // never given back: the process is ending
  CVCDumpMessage::m_cErrorMsg() = text;
  Keep_Stack_For_Dump();
  const std::wstring wide = From_Utf8(text);
  MY_TRACE0(wide.c_str());
  TraceLog2File(function, line, wide.c_str());
  std::set_terminate(&CVCDumpMessage::DumpFileProcess);
  throw CMy_Assert_Exception();
}

void Report_Assertion(const char* function, int line) {
  Report_Assertion(function, line, std::string());
}

}  // namespace orsanta
