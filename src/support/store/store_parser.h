// Reads the form of a store's file (store_format.h) and reports, line by line, what it cannot take. No file is touched
// here, and no call depends on the locale or keeps state: any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/store/store_format.h"

namespace orsanta {

struct C_Store_Fault {
  int line = 0;       // from 1
  std::wstring text;  // what is wrong there, for the operator
};

enum class C_Store_State {
  Missing,
  Whole,
  Faulty,  // some lines cannot be taken, all others can
  Broken,  // it is no store or not the whole of one, so that nothing of it can be taken
  Unread,  // there is one, but the system does not deliver its bytes
};

// Takes what can be taken of a file: Whole, Faulty or Broken. A line that cannot be read costs only its own entry, an
// element of an array the array, and a place that occurs twice both entries. faults: what was not taken, by lines.
C_Store_State Parse_Store(std::string_view text, C_Store_Content& content, std::vector<C_Store_Fault>& faults);

}  // namespace orsanta
