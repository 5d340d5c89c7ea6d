#include "support/store/store_access.h"

#include <cerrno>
#include <optional>

#include "support/store/store_disk.h"
#include "support/time/lock.h"
#include "support/time/uncopied.h"

namespace orsanta {

namespace {

// Locks the folder for the span of a scope. Where the file system has no locks, the threads of this process still take
// turns.
class C_Folder_Holder : private C_Uncopied {
 public:
  explicit C_Folder_Holder(C_Disk& disk) : m_Disk(disk), m_Error(disk.Lock_Folder(m_Folder)) {
    if (m_Error == 0) m_Threads.emplace(the_Threads);  // who did not get the folder does not wait for it twice
  }
  ~C_Folder_Holder() {
    if (m_Error == 0) m_Disk.Unlock_Folder(m_Folder);
  }
  int Error() const { return m_Error; }

 private:
  static inline C_Leaf_Lock the_Threads;

  C_Disk& m_Disk;
  int m_Folder = -1;
  int m_Error;
  std::optional<C_Lock_Guard<C_Leaf_Lock>> m_Threads;
};

// Returns 0 or the error; the old store then remains.
int Replace_Store(C_Disk& disk, const std::string& name, const std::string& bytes) {
  if (bytes.size() > Largest_Store) return EFBIG;
  const std::string fresh = name + ".new";
  disk.Remove(fresh);  // what an interrupted save has left, whoever made it
  int error = disk.Write(fresh, bytes);
  if (error == 0) error = disk.Rename(fresh, name);
  if (error != 0) disk.Remove(fresh);
  return error;
}

}  // namespace

C_Store_Reading Read_Store(const std::string& name) {
  C_Store_Reading reading;
  C_Store_Report& report = reading.report;
  report.name = name;
  report.error = Disk().Read(name, reading.bytes);
  if (report.error == 0) {
    report.state = Parse_Store(reading.bytes, reading.content, report.faults);
  } else if (report.error == ENOENT) {
    report.error = 0;  // a missing store is no error
  } else {
    report.state = C_Store_State::Unread;
  }
  return reading;
}

C_Store_Copy Keep_Copy(const std::string& name, const std::string& bytes) {
  C_Disk& disk = Disk();
  C_Store_Copy copy;
  copy.name = name + ".bad";
  for (int i = 1;; ++i) {
    std::string present;
    if (disk.Read(copy.name, present) == 0 && present == bytes) return copy;
    const int error = disk.Write(copy.name, bytes);
    if (error != EEXIST) {
      copy.error = error;
      copy.made = error == 0;
      if (error != 0) disk.Remove(copy.name);
      return copy;
    }
    copy.name = name + "." + std::to_string(i) + ".bad";
  }
}

C_Store_Report Write_Store(const std::string& name, const std::function<C_Store_Content()>& make_content, bool copies) {
  C_Disk& disk = Disk();
  const C_Folder_Holder folder(disk);
  if (folder.Error() != 0) return {.name = name, .saving = true, .error = folder.Error()};

  const C_Store_Reading present = Read_Store(name);
  C_Store_Report report = present.report;
  report.saving = true;
  const bool has_faults = report.state == C_Store_State::Faulty || report.state == C_Store_State::Broken;
  if (has_faults || (report.state == C_Store_State::Whole && copies)) {
    report.copy = Keep_Copy(name, present.bytes);
    report.error = report.copy.error;
  }
  if (report.error != 0) return report;

  C_Store_Content content = make_content();
  Keep_Unknown_Entries(present.content, content);
  report.error = Replace_Store(disk, name, Format_Store(content));
  return report;
}

}  // namespace orsanta
