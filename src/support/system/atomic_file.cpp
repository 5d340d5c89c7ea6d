#include "support/system/atomic_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "support/system/signal_blocker.h"

namespace orsanta {

namespace {

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

int Write_All(int file, std::string_view bytes) {
  for (size_t done = 0; done < bytes.size();) {
    const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    done += static_cast<size_t>(written);
  }
  return 0;
}

int Write_Flush_Close(int file, const std::string& bytes, unsigned rights) {
  const C_Signal_Blocker held;
  int error = Write_All(file, bytes);
  if (error == 0 && fchmod(file, rights) != 0) error = errno;
  if (error == 0 && fsync(file) != 0) error = errno;
  if (close(file) != 0 && error == 0) error = errno;
  return error;
}

std::string Write_Atomically(const std::string& path, const std::string& bytes, unsigned rights) {
  std::string fresh = path + ".XXXXXX";
  const int file = mkostemp(fresh.data(), O_CLOEXEC);
  if (file < 0) return std::generic_category().message(errno);
  int error = Write_Flush_Close(file, bytes, rights);
  if (error == 0 && std::rename(fresh.c_str(), path.c_str()) != 0) error = errno;
  if (error != 0) {
    unlink(fresh.c_str());
    return std::generic_category().message(error);
  }
  Flush_Folder_Of(path);
  return "";
}

}  // namespace orsanta
