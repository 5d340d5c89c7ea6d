#include "support/store/store_disk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "support/base/replaceable.h"
#include "support/system/atomic_file.h"
#include "support/system/working_folder.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr mode_t Owner_Alone = 0600;
constexpr int Longest_Lock_Wait_Ms = 5000;

int Read_All(int file, std::string& bytes) {
  struct stat info {};
  if (fstat(file, &info) != 0) return errno;
  if (S_ISDIR(info.st_mode)) return EISDIR;
  if (!S_ISREG(info.st_mode)) return EINVAL;
  if ((info.st_mode & ~Owner_Alone & 0777) != 0) fchmod(file, Owner_Alone);  // fails for all but its owner
  bytes.clear();
  char block[16384];
  for (;;) {
    const ssize_t count = read(file, block, sizeof block);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (count == 0) return 0;
    bytes.append(block, static_cast<size_t>(count));
    if (bytes.size() > Largest_Store) return EFBIG;
  }
}

}  // namespace

int C_Disk::Lock_Folder(int& folder) {
  folder = open(In_Working_Folder(".").c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return errno;
  for (int waited_ms = 0; flock(folder, LOCK_EX | LOCK_NB) != 0; ++waited_ms) {
    if (errno != EWOULDBLOCK && errno != EINTR) return 0;  // a file system without locks
    if (waited_ms >= Longest_Lock_Wait_Ms) {
      close(folder);
      return EWOULDBLOCK;
    }
    Sleep(1);
  }
  return 0;
}

void C_Disk::Unlock_Folder(int folder) {
  close(folder);
}

int C_Disk::Read(const std::string& name, std::string& bytes) {
  const int file =
      open(In_Working_Folder(name).c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe in the place must not hang
  if (file < 0) return errno;
  const int error = Read_All(file, bytes);
  close(file);
  return error;
}

int C_Disk::Write(const std::string& name, const std::string& bytes) {
  const int file = open(In_Working_Folder(name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, Owner_Alone);
  if (file < 0) return errno;
  return Write_Flush_Close(file, bytes, Owner_Alone);
}

int C_Disk::Rename(const std::string& from, const std::string& to) {
  return std::rename(In_Working_Folder(from).c_str(), In_Working_Folder(to).c_str()) == 0 ? 0 : errno;
}

int C_Disk::Remove(const std::string& name) {
  return unlink(In_Working_Folder(name).c_str()) == 0 ? 0 : errno;
}

C_Disk& Disk() {
  return C_Replaceable<C_Disk>::Instance().Get([] { return std::make_unique<C_Disk>(); });
}

std::unique_ptr<C_Disk> Replace_Disk(std::unique_ptr<C_Disk> disk) {
  return C_Replaceable<C_Disk>::Instance().Replace(std::move(disk));
}

}  // namespace orsanta
