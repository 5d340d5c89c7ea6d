#include "support/store_disk.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <iterator>
#include <mutex>

#include "support/clock.h"
#include "support/message_box.h"
#include "support/whole_file.h"
#include "support/wide_string.h"

namespace orsanta {

namespace {

constexpr mode_t Owner_Alone = 0600;
constexpr int Longest_Lock_Wait_Ms = 5000;
constexpr size_t Largest_Store = size_t{64} << 20;  // bytes; a file beyond it is no store

struct C_Disk_Place {
  std::mutex lock;
  std::unique_ptr<C_Disk> replacement;
  C_Disk built_in;
};

C_Disk_Place& Place() {
  static C_Disk_Place& place = *new C_Disk_Place;
  return place;
}

C_Disk& Disk() {
  C_Disk_Place& place = Place();
  const std::lock_guard holder(place.lock);
  return place.replacement != nullptr ? *place.replacement : place.built_in;
}

int Read_All(int file, std::string& bytes) {
  struct stat info {};
  if (fstat(file, &info) != 0) return errno;
  if (S_ISDIR(info.st_mode)) return EISDIR;
  if (!S_ISREG(info.st_mode)) return EINVAL;
  if ((info.st_mode & ~Owner_Alone & 0777) != 0) fchmod(file, Owner_Alone);  // only its owner may; otherwise it stays
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
    {EFBIG, L"文件过大"},
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

// The store's whole path, so that the operator finds it.
std::wstring Full_Path(const std::string& name) {
  std::error_code none;
  return From_Utf8((std::filesystem::current_path(none) / name).string());
}

// Holds the folder for the span of a scope. Where the file system has no locks, the threads of this process still keep
// off one another.
class C_Folder_Holder {
 public:
  explicit C_Folder_Holder(C_Disk& disk) : m_Disk(disk), m_Error(disk.Lock_Folder(m_Folder)), m_Threads(Lock()) {}
  ~C_Folder_Holder() {
    if (m_Error == 0) m_Disk.Unlock_Folder(m_Folder);
  }
  C_Folder_Holder(const C_Folder_Holder&) = delete;
  C_Folder_Holder& operator=(const C_Folder_Holder&) = delete;
  int Error() const { return m_Error; }

 private:
  static std::mutex& Lock() {
    static std::mutex& lock = *new std::mutex;
    return lock;
  }

  C_Disk& m_Disk;
  int m_Folder = -1;
  int m_Error;
  std::lock_guard<std::mutex> m_Threads;
};

// Renames the store to the first free name of NAME.bad, NAME.1.bad, NAME.2.bad and so on. The folder is held. What the
// operator is to know is added to `message`.
C_Store_State Move_Aside_Held(C_Disk& disk, const std::string& name, std::wstring& message) {
  std::string aside = name + ".bad";
  for (int i = 1; disk.Exists(aside); ++i) aside = name + "." + std::to_string(i) + ".bad";
  const int error = disk.Rename(name, aside);
  if (error != 0) {
    message += L"\n原文件无法改名: " + Reason_Text(error) + L"。文件保持不变。";
    return C_Store_State::Unread;
  }
  message += L"\n原文件已改名为 " + From_Utf8(aside) + L"。要恢复,请先退出程序,修正后改回原名,再启动。";
  return C_Store_State::Moved_Aside;
}

// Reads the store while the folder is held. What the operator is to know goes to `message`, to be shown once the folder
// is free: a box may stand open for hours.
C_Store_State Read_Held(C_Disk& disk, const std::string& name, C_Store_Content& content, std::wstring& message) {
  std::string bytes;
  const int error = disk.Read(name, bytes);
  if (error == ENOENT) return C_Store_State::Missing;
  if (error != 0) {
    message = L"无法读取参数文件 " + Full_Path(name) + L": " + Reason_Text(error);
    return C_Store_State::Unread;
  }
  C_Store_Fault fault;
  if (Parse_Store(bytes, content, fault)) return C_Store_State::Whole;
  content = {};
  message = L"参数文件 " + Full_Path(name) + L" 第" + std::to_wstring(fault.line) + L"行有误: " + fault.text;
  return Move_Aside_Held(disk, name, message);
}

// Replaces the store while the folder is held. Returns 0 or the error; the old store then stands.
int Replace_Held(C_Disk& disk, const std::string& name, const C_Store_Content& content) {
  const std::string fresh = name + ".new";
  int error = disk.Write(fresh, Format_Store(content));
  if (error == 0) error = disk.Rename(fresh, name);
  if (error != 0) disk.Remove(fresh);
  return error;
}

void Show(const std::wstring& message) {
  if (!message.empty()) Message_Box(message);
}

}  // namespace

int C_Disk::Lock_Folder(int& folder) {
  folder = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return errno;
  for (int waited_ms = 0; flock(folder, LOCK_EX | LOCK_NB) != 0; ++waited_ms) {
    if (errno != EWOULDBLOCK && errno != EINTR) return 0;  // without locks: nobody else may use the folder
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
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);  // a pipe in the place must not hang
  if (file < 0) return errno;
  const int error = Read_All(file, bytes);
  close(file);
  return error;
}

int C_Disk::Write(const std::string& name, const std::string& bytes) {
  unlink(name.c_str());  // what an interrupted save has left, whoever made it
  const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, Owner_Alone);
  if (file < 0) return errno;
  return Write_Flush_Close(file, bytes, Owner_Alone);
}

int C_Disk::Rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int C_Disk::Remove(const std::string& name) {
  return unlink(name.c_str()) == 0 ? 0 : errno;
}

bool C_Disk::Exists(const std::string& name) {
  struct stat info {};
  return lstat(name.c_str(), &info) == 0;
}

std::unique_ptr<C_Disk> Replace_Disk(std::unique_ptr<C_Disk> disk) {
  C_Disk_Place& place = Place();
  const std::lock_guard holder(place.lock);
  std::swap(place.replacement, disk);
  return disk;
}

C_Store_State Read_Store(const std::wstring& name, C_Store_Content& content) {
  C_Disk& disk = Disk();
  std::wstring message;
  C_Store_State state = C_Store_State::Unread;
  {
    const C_Folder_Holder folder(disk);
    // Reading needs no lock; it is held for the move.
    state = Read_Held(disk, To_Utf8(name), content, message);
  }
  if (!message.empty()) message += L"\n本次使用默认值。";
  Show(message);
  return state;
}

bool Write_Store(const std::wstring& name, const std::function<C_Store_Content()>& make_content, bool replaces) {
  C_Disk& disk = Disk();
  const std::string file = To_Utf8(name);
  std::wstring message;
  C_Store_State present_state = C_Store_State::Unread;
  int error = 0;
  bool written = false;
  {
    const C_Folder_Holder folder(disk);
    error = folder.Error();
    C_Store_Content present;
    if (error == 0) present_state = Read_Held(disk, file, present, message);
    if (present_state == C_Store_State::Whole && !replaces) {
      message = L"参数文件 " + Full_Path(file) + L" 装载时未能读取,其中的数值没有使用。";
      present_state = Move_Aside_Held(disk, file, message);
    }
    if (present_state != C_Store_State::Unread) {
      C_Store_Content content = make_content();
      if (present_state == C_Store_State::Whole) Keep_Unknown_Entries(present, content);
      error = Replace_Held(disk, file, content);
      written = error == 0;
    }
  }
  if (!written) {
    if (!message.empty()) message += L"\n";
    message += L"无法保存参数文件 " + Full_Path(file);
    if (error != 0) message += L": " + Reason_Text(error);
    if (present_state != C_Store_State::Moved_Aside) message += L"\n原有的参数文件保持不变。";
    message += L"\n排除原因后请重新保存。";
  }
  Show(message);
  return written;
}

void Move_Store_Aside(const std::wstring& name, const std::wstring& reason) {
  C_Disk& disk = Disk();
  std::wstring message = L"参数文件 " + Full_Path(To_Utf8(name)) + L" 有误: " + reason;
  {
    const C_Folder_Holder folder(disk);
    Move_Aside_Held(disk, To_Utf8(name), message);
  }
  Show(message);
}

}  // namespace orsanta
