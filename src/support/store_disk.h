// Stores on the disk: how a store is read, replaced and moved aside so that nothing is lost.
//
// A store is replaced by a new file that is written and flushed under another name and then renamed over it: at every
// instant one whole store stands under the name. That is the one flush of a save: after a power cut either the new
// store stands or the one before it. Files are readable and writable by their owner alone; a store that an editor left
// open to others is closed to them when it is read. While a store is worked on, its folder is locked against other
// threads and processes that do the same.
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

  // Holds the folder until the matching Unlock_Folder. folder: handle for that call. EWOULDBLOCK when another program
  // does not give it back within seconds.
  virtual int Lock_Folder(int& folder);
  virtual void Unlock_Folder(int folder);

  // Reads a whole file; ENOENT when there is none, EISDIR when a folder stands there.
  virtual int Read(const std::string& name, std::string& bytes);
  // Writes a new file for its owner alone and flushes it to the disk; what stands under the name goes. EEXIST when it
  // does not go.
  virtual int Write(const std::string& name, const std::string& bytes);
  virtual int Rename(const std::string& from, const std::string& to);
  virtual int Remove(const std::string& name);
  virtual bool Exists(const std::string& name);
};

// Puts a disk in place of the present one and returns that, null for the built-in one. For tests.
std::unique_ptr<C_Disk> Replace_Disk(std::unique_ptr<C_Disk> disk);

enum class C_Store_State {
  Missing,
  Whole,
  Moved_Aside,  // it does not parse, and stands under a name that ends in ".bad" and that no other file had
  Unread,       // it stands, but could not be read, or neither parsed nor moved aside
};

// Reads the store of that name. A store that is neither missing nor whole is told in a message box with the file and
// the reason.
C_Store_State Read_Store(const std::wstring& name, C_Store_Content& content);

// Writes the store and keeps the entries of the present one that the new content does not name. On failure a message
// box names the file and the reason, the old store stands, and the result is false. make_content: gives the content;
// called while the folder is held, so that of two saves at once the later one on the disk is also the one that looked
// at the members later. replaces: 0 where the present store was never read, so that its values are to be found nowhere
// else: it is then moved aside and not replaced.
bool Write_Store(const std::wstring& name, const std::function<C_Store_Content()>& make_content, bool replaces);

// Moves the store aside, because of `reason`, and says so in a message box.
void Move_Store_Aside(const std::wstring& name, const std::wstring& reason);

}  // namespace orsanta
