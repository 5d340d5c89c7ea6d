#include "support/base/assertion.h"

#include <atomic>
#include <new>

#include "support/base/crash_report.h"
#include "support/base/process.h"
#include "support/system/environment.h"
#include "support/time/critical_section.h"
#include "support/time/no_destructor.h"

namespace orsanta {

namespace {

std::atomic<bool> the_Checks_Throw{false};

std::string Compose(const char* function, int line, const std::string& message) {
  try {
    const std::string module = Library_Path();
    return Format_Utf8(
        "%s\n%s\n%s %s\npath: %s\nmodule: %s\nfunc: %s\nline: %d\n\n--------------\n\n"
        "发生异常(Debug),请把本窗口和此时生成的 .dmp 文件发送给开发者.\n"
        "Exception Occurs,please send an image of This Window and Currently Generated .dmp file to developer.",
        message.c_str(), cMyAssertAppendDispInfo().c_str(), __DATE__, __TIME__,
        To_Utf8(CMyExecuteProc::GetCurApplicationFilePath()).c_str(), module.c_str() + module.rfind('/') + 1, function,
        line);
  } catch (const std::bad_alloc&) {
    return {};  // the dump has the stack
  }
}

}  // namespace

std::string& cMyAssertAppendDispInfo() {
  static C_No_Destructor<std::string> text;
  return text.Get();
}

void Report_Assertion(const char* function, int line, const std::string& message) {
  if (the_Checks_Throw) {
    const C_Lock_Guard hold(CVCDumpMessage::m_hErrorMsg());
    Keep_Report(function, line, Compose(function, line, message));
    throw CMy_Assert_Exception();
  }
  Claim_Process_End();
  Keep_Report(function, line, Compose(function, line, message));
  Write_Dump_And_End();
}

void Report_Assertion(const char* function, int line) {
  Report_Assertion(function, line, std::string());
}

void Throw_On_Failed_Check(bool throws) {
  the_Checks_Throw = throws;
}

}  // namespace orsanta
