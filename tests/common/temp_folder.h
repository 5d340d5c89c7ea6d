// File_Text, and C_Temp_Folder: a fresh folder as working directory while it lives, so that tests which write files
// leave nothing behind. The working directory belongs to the whole process: one at a time, and no other thread may use
// relative paths then.
#pragma once

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

namespace orsanta {

class C_Temp_Folder {
 public:
  C_Temp_Folder() : m_Old(std::filesystem::current_path()) {
    std::string name = (std::filesystem::temp_directory_path() / "orsanta_XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr)
      throw std::filesystem::filesystem_error("mkdtemp", name, std::error_code(errno, std::generic_category()));
    m_Path = name;
    std::filesystem::current_path(m_Path);
  }
  ~C_Temp_Folder() {
    std::error_code ignored;
    std::filesystem::current_path(m_Old, ignored);
    std::filesystem::remove_all(m_Path, ignored);
  }
  C_Temp_Folder& operator=(C_Temp_Folder&&) = delete;  // neither copied nor moved

  const std::filesystem::path& Path() const { return m_Path; }

 private:
  std::filesystem::path m_Old;
  std::filesystem::path m_Path;
};

// The bytes of a file; none where it cannot be read.
inline std::string File_Text(const std::filesystem::path& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace orsanta
