// A fresh folder as working directory while a command runs, so that the run neither depends on old stores nor leaves
// any.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>

namespace app {

class C_Working_Folder {
 public:
  C_Working_Folder() : m_Before(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "orsanta-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) {
      throw std::filesystem::filesystem_error("no folder for the stores", name,
                                              std::error_code(errno, std::generic_category()));
    }
    m_Folder = name;
    std::filesystem::current_path(m_Folder);
    // Settings that say nothing: the system takes its defaults and does not ask for them as at a first start.
    std::ofstream("全局电机参数") << "orsanta store 1\nend\n";
  }
  ~C_Working_Folder() {
    std::error_code ignored;
    std::filesystem::current_path(m_Before, ignored);
    std::filesystem::remove_all(m_Folder, ignored);
  }
  C_Working_Folder(const C_Working_Folder&) = delete;
  C_Working_Folder& operator=(const C_Working_Folder&) = delete;

 private:
  std::filesystem::path m_Before;
  std::filesystem::path m_Folder;
};

}  // namespace app
