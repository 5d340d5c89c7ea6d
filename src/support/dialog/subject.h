// What a thread is working on. Dialogs and boxes that the thread shows bear it as their title, so that an operator of
// fourteen stations sees which one is meant.
#pragma once

#include <string>

#include "support/time/uncopied.h"

namespace orsanta {

struct C_Subject {
  int station = 0;       // number as it stands on the panel, 0 for none
  std::wstring words{};  // the command, empty for none

  std::wstring Title() const;
};

// The subject of the calling thread, of the innermost scope; empty outside of all.
const C_Subject& Present_Subject();

// Sets the subject of the calling thread from construction to destruction.
class C_Subject_Scope : private C_Uncopied {
 public:
  explicit C_Subject_Scope(C_Subject subject);
  ~C_Subject_Scope();

 private:
  friend const C_Subject& Present_Subject();

  C_Subject m_Subject;
  const C_Subject_Scope* m_Outer;
};

}  // namespace orsanta
