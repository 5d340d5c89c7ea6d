// Writes a file whole or not at all: at every instant, power cut included, the file has the old or the new content. Any
// thread.
#pragma once

#include <string>
#include <string_view>

namespace orsanta {

// Writes all the bytes to an open file. Returns 0 or the system's error number, with as much written as was possible.
// Takes no memory from the heap.
int Write_All(int file, std::string_view bytes);

// Writes the bytes to an open file, sets its rights, flushes it to the disk and closes it. Returns 0 or the system's
// error number; the file is closed in either case.
int Write_Flush_Close(int file, const std::string& bytes, unsigned rights);

// Writes a new file in the folder of `path` (UTF-8), flushes it to the disk, and renames it over the old one.
// rights: of the file, as in 0600. Returns an empty text, or the reason when it could not be written; the old file then
// remains as it was.
std::string Write_Atomically(const std::string& path, const std::string& bytes, unsigned rights);

}  // namespace orsanta
