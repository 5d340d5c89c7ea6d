// C_Fiber: a function on a stack of its own. It runs while it is switched to and stands still otherwise, so that many
// of them take turns on one thread of the system, in a hundredth of the time that a hand-over between threads takes.
// For the simulated clock alone.
//
// The fibers of one set belong to one thread, which makes, runs and destroys them. What the system and the libraries
// keep for a thread, they share; but a fiber may stand still inside a catch block.
//
// Where a fiber stands still, its frames are a chain: each begins with the place of the next and an address in the
// function that waits. In gdb, inside a function that has a fiber at hand:
//
//   set $frame = fiber.m_Frame
//   while $frame
//     info symbol $frame[1]
//     set $frame = (void**)$frame[0]
//   end
#pragma once

#include <csetjmp>
#include <cstddef>
#include <functional>

#include "simulated_clock/sanitizer_fiber.h"
#include "support/time/uncopied.h"

namespace orsanta {

class C_Fiber : private C_Uncopied {
 public:
  // The calling thread, as it runs.
  C_Fiber() = default;
  // Begins with `body` when it is first switched to. The body returns the fiber that is to run after it; another one
  // then destroys this. Throws std::system_error when there is no memory for a stack.
  explicit C_Fiber(std::function<C_Fiber&()> body);
  ~C_Fiber();

  // Called on this fiber, while it runs: lets `next` run, and returns when a fiber switches back to this one.
  void Switch_To(C_Fiber& next);

 private:
  // What the C++ library keeps of the exceptions of a thread; layout: Itanium C++ ABI, __cxa_get_globals.
  struct C_Exceptions {
    void* caught = nullptr;
    unsigned int uncaught = 0;
  };

  [[noreturn]] void Begin();
  [[noreturn]] static void Run_New_Fiber() noexcept;

  std::function<C_Fiber&()> m_Body;  // until it begins
  void* m_Stack = nullptr;           // null: the thread's own
  std::jmp_buf m_Registers{};        // this and the next two: while the fiber stands still
  C_Exceptions m_Exceptions;
  void** m_Frame = nullptr;
  C_Sanitizer_Fiber m_Sanitizer;
};

}  // namespace orsanta
