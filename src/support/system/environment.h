// What surrounds the library: its own path, the files beside it, and the display. Takes no memory from the heap, so
// that a failing process can ask too. Any thread.
#pragma once

#include <climits>

namespace orsanta {

// Path of the library or program that this code is part of, as it was loaded; empty when the system does not know it.
const char* Library_Path();

// Finds the file of that name beside the library, in the folder orsanta/ there, or else beside the program. path: where
// it is. False when it is at none of these places.
bool Find_Beside_Library(const char* file_name, char (&path)[PATH_MAX]);

// Whether the process was started with a display.
bool Has_Display();

}  // namespace orsanta
