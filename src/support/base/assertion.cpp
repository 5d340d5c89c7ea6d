#include "support/base/assertion.h"

#include <cxxabi.h>
#include <dlfcn.h>

#include <atomic>
#include <exception>
#include <new>
#include <typeinfo>

#include "support/base/crash_report.h"
#include "support/base/process.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/time/critical_section.h"
#include "support/time/no_destructor.h"

namespace orsanta {

namespace {

std::atomic<bool> the_Checks_Throw{false};

// File name of the library or program that this code is part of.
std::string This_Module_Name() {
  Dl_info info{};
  if (dladdr(reinterpret_cast<const void*>(&This_Module_Name), &info) == 0 || info.dli_fname == nullptr) return "";
  const std::string path = info.dli_fname;
  return path.substr(path.rfind('/') + 1);
}

std::string Compose(const char* function, int line, const std::string& message) {
  return Format_Utf8(
      "%s\n%s\n%s %s\npath: %s\nmodule: %s\nfunc: %s\nline: %d\n\n--------------\n\n"
      "发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
      "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to developer.",
      message.c_str(), cMyAssertAppendDispInfo().c_str(), __DATE__, __TIME__,
      To_Utf8(CMyExecuteProc::GetCurApplicationFilePath()).c_str(), This_Module_Name().c_str(), function, line);
}

void Keep_And_Show(const char* function, int line, const std::string& message) {
  try {
    CVCDumpMessage::m_cErrorMsg() = Compose(function, line, message);
    const std::wstring wide = From_Utf8(CVCDumpMessage::m_cErrorMsg());
    MY_TRACE0(wide.c_str());
    TraceLog2File(function, line, wide.c_str());
  } catch (const std::bad_alloc&) {
    // No memory for the text: the dump still holds the stack.
  }
}

// What the handler of std::terminate was called for.
std::string Describe_Termination() {
  const std::type_info* type = abi::__cxa_current_exception_type();
  if (type == nullptr) return "";
  try {
    throw;
  } catch (const std::exception& error) {
    return Format_Utf8("uncaught exception %s: %s", type->name(), error.what());
  } catch (...) {
    return Format_Utf8("uncaught exception %s", type->name());
  }
}

}  // namespace

std::string& CVCDumpMessage::m_cErrorMsg() {
  static C_No_Destructor<std::string> text;
  return text.Get();
}

CMyCriticalSection& CVCDumpMessage::m_hErrorMsg() {
  static C_No_Destructor<CMyCriticalSection> section;
  return section.Get();
}

void CVCDumpMessage::DumpFileProcess() {
  Claim_Process_End();
  Keep_And_Show("std::terminate", 0, Describe_Termination());
  Write_Dump_And_End();
}

std::string& cMyAssertAppendDispInfo() {
  static C_No_Destructor<std::string> text;
  return text.Get();
}

void Report_Assertion(const char* function, int line, const std::string& message) {
  if (the_Checks_Throw) {
    const C_Lock_Guard hold(CVCDumpMessage::m_hErrorMsg());
    Keep_And_Show(function, line, message);
    throw CMy_Assert_Exception();
  }
  Claim_Process_End();
  Keep_And_Show(function, line, message);
  Write_Dump_And_End();
}

void Report_Assertion(const char* function, int line) {
  Report_Assertion(function, line, std::string());
}

void Throw_On_Failed_Check(bool throws) {
  the_Checks_Throw = throws;
}

}  // namespace orsanta
