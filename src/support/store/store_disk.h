// C_Disk: the steps on the disk that keep a store, in the working directory. Tests replace it to let a step fail. Any
// thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

namespace orsanta {

// Bytes. A larger file is no store: it is neither read nor written.
constexpr size_t Largest_Store = size_t{64} << 20;

// Each step returns 0 or the system's error number.
class C_Disk {
 public:
  virtual ~C_Disk() = default;

  // Locks the folder until the matching Unlock_Folder. folder: handle for that call. EWOULDBLOCK when another program
  // does not release it within seconds.
  virtual int Lock_Folder(int& folder);
  virtual void Unlock_Folder(int folder);

  // Reads a whole file and takes the rights to it from all but its owner; ENOENT when there is none, EISDIR when it is
  // a folder, EFBIG beyond Largest_Store.
  virtual int Read(const std::string& name, std::string& bytes);
  // Writes a new file for its owner alone and flushes it to the disk. EEXIST when the name is taken.
  virtual int Write(const std::string& name, const std::string& bytes);
  virtual int Rename(const std::string& from, const std::string& to);
  virtual int Remove(const std::string& name);
};

// The disk in use.
C_Disk& Disk();
// Puts a disk in place of the present one and returns that, null for the built-in one. For tests.
std::unique_ptr<C_Disk> Replace_Disk(std::unique_ptr<C_Disk> disk);

}  // namespace orsanta
