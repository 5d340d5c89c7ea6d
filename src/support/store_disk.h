// Stores on the disk: how a store is read, replaced and moved aside so that nothing is lost.
//
// A store is replaced by a new file that is written and flushed under another name and then renamed over it: at every
// instant one whole store stands under the name. Files are readable and writable by their owner alone. While a store is
// worked on, its folder is locked against other threads and processes that do the same.
//
// The operating system hides behind C_Disk, so that tests can let each step fail. Any thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "support/store_file.h"

namespace orsanta {

// The steps on the disk, in the working directory. Each returns 0 or the system's error number.
class C_Disk {
 public:
  virtual ~C_Disk() = default;

  // Holds the folder until the matching Unlock_Folder. folder: handle for the two further calls.
  virtual int Lock_Folder(int& folder);
  virtual void Unlock_Folder(int folder);
  virtual int Flush_Folder(int folder);

  // Reads a whole file; ENOENT when there is none, EISDIR when a folder stands there.
  virtual int Read(const std::string& name, std::string& bytes);
  // Writes a whole file for its owner alone and flushes it to the disk.
  virtual int Write(const std::string& name, const std::string& bytes);
  virtual int Rename(const std::string& from, const std::string& to);
  virtual int Remove(const std::string& name);
  virtual bool Exists(const std::string& name);
};

// Puts a disk in place of the present one and returns that, null for the built-in one. For tests.
std::unique_ptr<C_Disk> Replace_Disk(std::unique_ptr<C_Disk> disk);

// Reads the store of that name. False when there is none, or when it cannot be read: a message box then names the file
// and the reason. A store that does not parse is moved aside under a name that ends in ".bad", which no other file has.
bool Read_Store(const std::wstring& name, C_Store_Content& content);

// Writes the store and keeps the entries of the present one that the new content does not name. On failure a message
// box names the file and the reason, the old store stands, and the result is false. make_content: gives the content;
// called while the folder is held, so that of two saves at once the later one on the disk is also the one that looked
// at the members later.
bool Write_Store(const std::wstring& name, const std::function<C_Store_Content()>& make_content);

// Moves the store aside, because of `reason`, and says so in a message box.
void Move_Store_Aside(const std::wstring& name, const std::wstring& reason);

}  // namespace orsanta
