#include "support/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace orsanta {

namespace {

bool Write_All(int file, const std::string& bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    done += static_cast<size_t>(written);
  }
  return true;
}

// A renamed file is safe from a power cut only when its folder has reached the disk too.
void Flush_Folder_Of(const std::string& path) {
  const size_t separator = path.rfind('/');
  const std::string folder = separator == std::string::npos ? "." : path.substr(0, separator + 1);
  const int file = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  fsync(file);
  close(file);
}

}  // namespace

std::string Write_Whole_File(const std::string& path, const std::string& bytes, unsigned rights) {
  std::string fresh = path + ".XXXXXX";
  const int file = mkostemp(fresh.data(), O_CLOEXEC);
  if (file < 0) return std::generic_category().message(errno);
  bool good = Write_All(file, bytes) && fchmod(file, rights) == 0 && fsync(file) == 0;
  int reason = errno;
  if (close(file) != 0 && good) {
    good = false;
    reason = errno;
  }
  if (good && std::rename(fresh.c_str(), path.c_str()) != 0) {
    good = false;
    reason = errno;
  }
  if (!good) {
    unlink(fresh.c_str());
    return std::generic_category().message(reason);
  }
  Flush_Folder_Of(path);
  return "";
}

}  // namespace orsanta
