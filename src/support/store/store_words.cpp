#include "support/store/store_words.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/system/wide_string.h"
#include "support/system/working_folder.h"

namespace orsanta {

namespace {

constexpr size_t Most_Faults = 10;  // that are listed line by line

constexpr struct {
  int error;
  const wchar_t* text;
} Reasons[] = {
    {ENOSPC, L"磁盘已满"},
    {EDQUOT, L"磁盘已满"},
    {EACCES, L"没有权限"},
    {EPERM, L"没有权限"},
    {EROFS, L"磁盘或文件夹是只读的"},
    {EISDIR, L"该名称下是一个文件夹"},
    {EINVAL, L"不是普通文件"},
    {EFBIG, L"文件过大,超过64 MiB或系统的限制"},
    {ENOENT, L"文件夹不存在"},
    {EEXIST, L"同名的 .new 文件夹占用了名称,请移走"},
    {EWOULDBLOCK, L"文件夹被另一个程序占用"},
};

std::wstring Reason_Text(int error) {
  const auto* known = std::find_if(std::begin(Reasons), std::end(Reasons),
                                   [error](const auto& reason) { return reason.error == error; });
  const char* system_text = strerrordesc_np(error);  // independent of the locale
  return std::wstring(known != std::end(Reasons) ? known->text : L"磁盘读写错误") + L" (" +
         From_Utf8(system_text != nullptr ? system_text : std::to_string(error)) + L")";
}

// With the whole path, so that the operator finds it.
std::wstring Store_Text(const std::string& name) {
  std::error_code none;
  return L"参数文件 " + From_Utf8(std::filesystem::absolute(In_Working_Folder(name), none).string());
}

std::wstring Fault_Lines(const std::vector<C_Store_Fault>& faults) {
  std::wstring text;
  for (size_t i = 0; i < std::min(faults.size(), Most_Faults); ++i)
    text += L"\n第" + std::to_wstring(faults[i].line) + L"行 " + faults[i].text;
  if (faults.size() > Most_Faults) text += L"\n…… 共" + std::to_wstring(faults.size()) + L"处";
  return text;
}

std::wstring Copy_Text(const C_Store_Copy& copy) {
  if (copy.error != 0) return L"\n无法写入副本 " + From_Utf8(copy.name) + L": " + Reason_Text(copy.error);
  return L"\n原文件的副本是 " + From_Utf8(copy.name) + L"。要恢复,请先退出程序,把副本修正后改回原名,再启动。";
}

std::wstring Reading_Text(const C_Store_Report& report) {
  if (report.error != 0)
    return L"无法读取" + Store_Text(report.name) + L": " + Reason_Text(report.error) + L"\n本次使用默认值。";
  if (report.faults.empty()) return L"";
  return Store_Text(report.name) + L" 有误:" + Fault_Lines(report.faults) +
         (report.state == C_Store_State::Broken ? L"\n本次使用默认值。" : L"\n有误的各项使用默认值,其余照常。") +
         Copy_Text(report.copy);
}

std::wstring Saving_Text(const C_Store_Report& report) {
  std::wstring text;
  if (report.copy.made || report.copy.error != 0) {
    text = Store_Text(report.name) + (report.faults.empty() ? L" 中的数值没有全部使用。" : L" 有误:") +
           Fault_Lines(report.faults) + Copy_Text(report.copy);
  }
  if (report.error == 0) return text;
  if (!text.empty()) text += L"\n";
  return text + L"无法保存" + Store_Text(report.name) + L": " + Reason_Text(report.error) +
         L"\n原有的参数文件保持不变。\n排除原因后请重新保存。";
}

std::wstring Owner_Text(const C_Store_Report& report) {
  std::string command;
  std::getline(std::ifstream("/proc/" + std::to_string(report.owner) + "/comm"), command);
  const std::wstring owner = report.owner > 0
                                 ? L"进程 " + std::to_wstring(report.owner) + L" (" + From_Utf8(command) + L")"
                                 : L"另一台计算机或另一个容器中的程序";
  return Store_Text(report.name) + L" 正由" + owner +
         L"使用。本程序照常测量,但在它退出之前不保存这个文件。请只运行一个程序,"
         L"或让各程序使用不同的工位或不同的文件夹。";
}

}  // namespace

std::wstring Report_Text(const C_Store_Report& report) {
  if (report.owner != 0) return Owner_Text(report);
  return report.saving ? Saving_Text(report) : Reading_Text(report);
}

}  // namespace orsanta
