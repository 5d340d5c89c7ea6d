#include "support/base/process.h"

#include <dirent.h>
#include <limits.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <memory>

#include "support/system/wide_string.h"

namespace orsanta {

namespace {

// What a symbolic link points to; empty when it cannot be read.
std::string Link_Target(const std::string& link) {
  char target[PATH_MAX];
  const ssize_t length = readlink(link.c_str(), target, sizeof(target));
  return length > 0 ? std::string(target, static_cast<size_t>(length)) : std::string();
}

std::string File_Name(const std::string& path) {
  return path.substr(path.find_last_of("/\\") + 1);
}

// The file name of the process's executable, also when that file has been replaced since.
std::string Executable_Name(const std::string& process_folder) {
  static const std::string Replaced = " (deleted)";
  std::string path = Link_Target(process_folder + "/exe");
  if (path.ends_with(Replaced)) path.resize(path.size() - Replaced.size());
  return File_Name(path);
}

// The file name of the command that the process was started as.
std::string Command_Name(const std::string& process_folder) {
  std::ifstream command_line(process_folder + "/cmdline", std::ios::binary);
  std::string command;
  std::getline(command_line, command, '\0');
  return File_Name(command);
}

}  // namespace

std::wstring CMyExecuteProc::GetCurApplicationFilePath() {
  return From_Utf8(Link_Target("/proc/self/exe"));
}

void CMyExecuteProc::SplitPath(const std::wstring& path, std::wstring& drive, std::wstring& dir, std::wstring& name,
                               std::wstring& ext) {
  const std::wstring whole = path;  // NOLINT: an output may be the input itself
  const size_t drive_end = whole.size() >= 2 && whole[1] == L':' ? 2 : 0;
  const size_t separator = whole.find_last_of(L"/\\");
  const size_t name_begin = separator == std::wstring::npos ? drive_end : separator + 1;
  size_t name_end = whole.find_last_of(L'.');
  if (name_end == std::wstring::npos || name_end <= name_begin) name_end = whole.size();
  drive = whole.substr(0, drive_end);
  dir = whole.substr(drive_end, name_begin - drive_end);
  name = whole.substr(name_begin, name_end - name_begin);
  ext = whole.substr(name_end);
}

int CProcessAndThreadSnapShot::GetProcessIDFromProcessName(const std::wstring& name, CMyArray<int>& ids, int) {
  const std::string wanted = To_Utf8(name);
  const std::unique_ptr<DIR, int (*)(DIR*)> processes(opendir("/proc"), &closedir);
  int found = 0;
  while (processes != nullptr) {
    const dirent* entry = readdir(processes.get());
    if (entry == nullptr) break;
    const int id = std::atoi(entry->d_name);
    if (id <= 0) continue;
    const std::string folder = std::string("/proc/") + entry->d_name;
    if (Executable_Name(folder) != wanted && Command_Name(folder) != wanted) continue;
    ids.Add(id);
    ++found;
  }
  return found;
}

}  // namespace orsanta
