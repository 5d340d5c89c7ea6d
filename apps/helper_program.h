// The programs that belong to this one: beside it in a build, in libexec/orsanta of an installation.
#pragma once

#include <filesystem>
#include <string>

namespace app {

inline std::string Helper_Program(const char* name) {
  namespace fs = std::filesystem;
  std::error_code none;
  const fs::path folder = fs::read_symlink("/proc/self/exe", none).parent_path();
  const fs::path installed = folder.parent_path() / "libexec" / "orsanta" / name;
  return (fs::exists(installed, none) ? installed : folder / name).string();
}

}  // namespace app
