#include "study_folder.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace app {

namespace {

[[noreturn]] void Refuse(const std::string& what, const std::string& path) {
  throw std::runtime_error(what + " \"" + path + "\": " + std::strerror(errno));
}

// Writes everything and waits for the disk.
void Put(const std::string& path, int flags, const std::string& text) {
  const int file = open(path.c_str(), flags | O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  if (file < 0) Refuse("cannot write", path);
  size_t done = 0;
  while (done < text.size()) {
    const ssize_t count = write(file, text.data() + done, text.size() - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) break;
    done += static_cast<size_t>(count);
  }
  const bool whole = done == text.size() && fsync(file) == 0;
  const int reason = errno;
  close(file);
  errno = reason;
  if (!whole) Refuse("cannot write all of", path);
}

}  // namespace

C_Study_Folder::C_Study_Folder(const std::string& path) : m_Path(std::filesystem::absolute(path)) {
  std::error_code error;
  std::filesystem::create_directories(m_Path, error);
  if (error) throw std::runtime_error("--out cannot make the folder \"" + path + "\": " + error.message());
}

std::string C_Study_Folder::Read(const std::string& name) const {
  std::ifstream file(m_Path / name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) Refuse("cannot read", Path_Of(name));
  return text.str();
}

void C_Study_Folder::Write(const std::string& name, const std::string& text) const {
  const std::string path = Path_Of(name), fresh = path + ".new";
  Put(fresh, O_TRUNC, text);
  if (std::rename(fresh.c_str(), path.c_str()) != 0) Refuse("cannot write", path);
}

C_Study_Options C_Study_Folder::Read_Plan() const {
  try {
    return nlohmann::json::parse(Read("plan.json")).get<C_Study_Options>();
  } catch (const nlohmann::json::exception&) {
    throw std::runtime_error("\"" + Path_Of("plan.json") +
                             "\" is not the plan of a study; it was changed, or another version wrote it");
  }
}

std::string C_Study_Folder::Take_Up_Data() const {
  if (!Holds("data.csv")) return "";
  std::string data = Read("data.csv");
  const size_t whole = data.rfind('\n') + 1;  // 0 where there is none
  if (whole < data.size()) Write("data.csv", data.substr(0, whole));
  data.resize(whole);
  return data;
}

void C_Study_Folder::Add_Line(const std::string& line) const {
  Put(Path_Of("data.csv"), O_APPEND, line + "\n");
}

}  // namespace app
