// How a store is read, copied and replaced so that nothing is lost.
//
// A store is replaced by a new file that is written and flushed under another name and then renamed over it: at every
// instant one whole store stands under the name. That is the one flush of a save: after a power cut either the new
// store stands or the one before it. So a reader needs no lock. Savers of one folder, threads and processes, follow one
// another: the folder is locked while a store is replaced. Files are readable and writable by their owner alone.
//
// Names are bare file names in the working directory. What happened comes back as a value; support/store/store_words.h
// has the operator's words for it. Any thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/store/store_file.h"

namespace orsanta {

struct C_Store_Reading {
  C_Store_State state = C_Store_State::Missing;
  int error = 0;            // Unread: the system's error number
  std::string bytes;        // of the file, as they stand
  C_Store_Content content;  // what can be taken of it
  std::vector<C_Store_Fault> faults;
};

// Reads the store; it stays as it is.
C_Store_Reading Read_Store(const std::string& name);

struct C_Store_Copy {
  int error = 0;      // 0: a copy stands
  std::string name;   // of the copy
  bool made = false;  // by this call; else it stood already
};

// Sees to it that a copy with these bytes stands beside the store, under the first of NAME.bad, NAME.1.bad, NAME.2.bad
// and so on that is free or has them. The names are never used for anything else, so that no copy is ever replaced.
C_Store_Copy Keep_Copy(const std::string& name, const std::string& bytes);

struct C_Store_Writing {
  int error = 0;            // 0: the new store stands; else the system's error number, and the old store stands
  C_Store_Reading present;  // what stood there before
  C_Store_Copy copy;        // of it, where one was called for
};

// Writes the store and keeps the entries of the present one that the new content does not name. Of a present store that
// is not whole, a copy is kept before it is replaced. make_content: gives the content; called while the folder is held,
// so that of two saves at once the later one on the disk is also the one that looked at the members later. copies:
// keeps a copy of a whole store too, because not all of its values are in use.
C_Store_Writing Write_Store(const std::string& name, const std::function<C_Store_Content()>& make_content, bool copies);

}  // namespace orsanta
