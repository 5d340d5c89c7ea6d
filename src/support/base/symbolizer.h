// The stack of a thread as text, for the dump. It reads the modules' own symbol tables, since most of the library's
// functions are not among those that the dynamic linker knows. Nothing here takes memory from the heap, apart from the
// demangler, so that it works while the process ends for want of memory.
#pragma once

#include <cstddef>

namespace orsanta {

// Where execution was: return addresses, the innermost first.
struct C_Stack {
  static constexpr int Deepest = 64;
  void* address[Deepest] = {};
  int depth = 0;

  // The calling thread's stack, from the caller of this function on.
  void Capture();
};

// Writes one line of the stack, closed by a zero: the function with its distance and its module, or the module alone
// with the distance from its start when the module has no symbols for it.
void Frame_Text(const void* return_address, char* out, size_t room);

}  // namespace orsanta
