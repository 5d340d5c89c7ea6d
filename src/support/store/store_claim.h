// C_Store_Claim: a store belongs to one process at a time, so that two programs that were started side by side by
// mistake do not overwrite each other's values.
//
// The claim is a lock of the system on the file NAME.lock beside the store. It ends with the process, however that
// ends, and the file is removed with the claim; one that a killed process has left has no effect. Within a process any
// number of objects may hold the claim on one store. Any thread, also several at once on one claim.
#pragma once

#include <string>

#include "support/time/uncopied.h"

namespace orsanta {

class C_Store_Claim : private C_Uncopied {
 public:
  ~C_Store_Claim();  // releases the claim

  // Claims the store of that name in the working directory; once claimed it stays so. Returns 0, or the id of the
  // process that has the store, -1 where that runs on another computer or in another container. Also returns 0 where
  // the file cannot be made or the file system has no locks: then the owner is unknown, and the store is free to all.
  int Take(const std::string& name);

 private:
  std::string m_Path;  // of the lock's file
  int m_Process = 0;   // that holds the claim; 0 while it is not held. A child of that process does not.
};

}  // namespace orsanta
