// How a store is read, copied and replaced so that nothing is lost.
//
// A store is replaced by a new file that is written and flushed under another name and then renamed over it: at every
// instant there is one whole store under the name. That is the one flush of a save: after a power cut there is either
// the new store or the one before it. So a reader needs no lock. Savers of one folder, threads and processes, take
// turns: the folder is locked while a store is replaced. Files are readable and writable by their owner alone.
//
// Names are bare file names in the working directory. Any thread.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "support/store/store_parser.h"

namespace orsanta {

struct C_Store_Copy {
  int error = 0;      // 0: there is a copy
  std::string name;   // of the copy
  bool made = false;  // by this call; else it existed already
};

// What happened to a store. support/store/store_words.h has the operator's words for it.
struct C_Store_Report {
  std::string name = {};                         // of the store
  bool saving = false;                           // it was to be written, else to be read
  int error = 0;                                 // of the system, why it was not; 0 when it was
  int owner = 0;                                 // not written because it belongs to this process, see C_Store_Claim
  C_Store_State state = C_Store_State::Missing;  // of the file that was there
  std::vector<C_Store_Fault> faults = {};        // what was not taken of that file
  C_Store_Copy copy = {};                        // of that file, where one was called for
};

struct C_Store_Reading {
  C_Store_Report report;
  std::string bytes;        // of the file, unchanged
  C_Store_Content content;  // what can be taken of it
};

// Reads the store and leaves it as it is.
C_Store_Reading Read_Store(const std::string& name);

// Makes sure that there is a copy with these bytes beside the store, under the first of NAME.bad, NAME.1.bad,
// NAME.2.bad and so on that is free or has them. The names are never used for anything else, so that no copy is ever
// replaced.
C_Store_Copy Keep_Copy(const std::string& name, const std::string& bytes);

// Writes the store and keeps the entries of the present one that the new content does not name. Of a present store that
// is not whole, a copy is kept before it is replaced. On any error the old store remains as it was. make_content: gives
// the content; called while the folder is locked, so that of two saves at once the later one on the disk is also the
// one that looked at the members later. copies: keeps a copy of a whole store too, because not all of its values are in
// use.
C_Store_Report Write_Store(const std::string& name, const std::function<C_Store_Content()>& make_content, bool copies);

}  // namespace orsanta
