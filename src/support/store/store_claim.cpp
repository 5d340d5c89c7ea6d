#include "support/store/store_claim.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <map>

#include "support/system/working_folder.h"
#include "support/time/lock.h"
#include "support/time/no_destructor.h"

namespace orsanta {

namespace {

// The claims of this process. The system's lock belongs to a process, and any close of its file releases it: so a file
// is open once, for all holders.
struct C_Claims {
  struct C_Held {
    int file = -1;
    int holders = 0;
  };
  C_Leaf_Lock lock;
  pid_t process GUARDED_BY(lock) = 0;
  std::map<std::string, C_Held> held GUARDED_BY(lock);  // by the whole path of the lock's file
};

C_Claims& Claims() {
  static C_No_Destructor<C_Claims> claims;
  return claims.Get();
}

// A forked process has none of the claims of its parent.
void Forget_Claims_Of_Parent(C_Claims& claims) REQUIRES(claims.lock) {
  if (claims.process == getpid()) return;
  claims.process = getpid();
  for (const auto& [path, held] : claims.held) close(held.file);
  claims.held.clear();
}

// Sets or queries a lock on the whole file. Returns 0 or the system's error number.
int Lock_File(int file, int command, struct flock& lock) {
  lock = {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  return fcntl(file, command, &lock) == 0 ? 0 : errno;
}

bool Is_Removed(int file) {
  struct stat info {};
  return fstat(file, &info) == 0 && info.st_nlink == 0;
}

// Opens and locks the file. Returns 0 or the other process as Take does. file: stays open where the lock is held, else
// -1.
int Open_Locked(const std::string& path, int& file) {
  for (;;) {
    file = open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK, 0600);
    if (file < 0) return 0;
    struct flock lock {};
    const int error = Lock_File(file, F_SETLK, lock);
    // The holder before may have removed the file since it was opened: its lock then has no effect.
    if (error == 0 && !Is_Removed(file)) return 0;
    const bool is_held = (error == EACCES || error == EAGAIN) && Lock_File(file, F_GETLK, lock) == 0;
    close(file);
    file = -1;
    if (is_held && lock.l_type != F_UNLCK) return lock.l_pid > 0 ? lock.l_pid : -1;
    if (error != 0 && !is_held) return 0;
  }
}

}  // namespace

C_Store_Claim::~C_Store_Claim() {
  if (m_Process != getpid()) return;
  C_Claims& claims = Claims();
  const C_Lock_Guard hold(claims.lock);
  const auto place = claims.held.find(m_Path);
  if (--place->second.holders > 0) return;
  unlink(m_Path.c_str());  // before the lock is released, so that no process locks a file that is then removed
  close(place->second.file);
  claims.held.erase(place);
}

int C_Store_Claim::Take(const std::string& name) {
  C_Claims& claims = Claims();
  const C_Lock_Guard hold(claims.lock);
  Forget_Claims_Of_Parent(claims);
  if (m_Process == claims.process) return 0;
  std::error_code none;
  const std::string path = std::filesystem::absolute(In_Working_Folder(name + ".lock"), none).string();
  auto place = claims.held.find(path);
  if (place == claims.held.end()) {
    int file = -1;
    const int owner = Open_Locked(path, file);
    if (file < 0) return owner;
    place = claims.held.emplace(path, C_Claims::C_Held{file, 0}).first;
  }
  ++place->second.holders;
  m_Path = path;
  m_Process = claims.process;
  return 0;
}

}  // namespace orsanta
