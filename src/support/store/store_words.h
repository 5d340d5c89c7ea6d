// What the operator is told about a store: what is wrong, with the file's whole path, and what to do. Any thread.
#pragma once

#include <string>

#include "support/store/store_access.h"

namespace orsanta {

// About a store that was read; an empty text where there is nothing to tell. copy: of a store with faults.
std::wstring Reading_Message(const std::string& name, const C_Store_Reading& reading, const C_Store_Copy& copy);
// About a store that was to be written; an empty text where there is nothing to tell.
std::wstring Writing_Message(const std::string& name, const C_Store_Writing& writing);
// About a store that is not written because it belongs to another process. process: its id, or -1 where it runs on
// another computer or in another container.
std::wstring Owner_Message(const std::string& name, int process);

}  // namespace orsanta
