// A fiber begins by makecontext and setcontext. From then on _setjmp and _longjmp switch, since they leave the signal
// mask alone, for which swapcontext calls the system each time.
#undef _FORTIFY_SOURCE  // its longjmp takes another stack for an error

#include "simulated_clock/fiber.h"

#include <cxxabi.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <cerrno>
#include <exception>
#include <system_error>
#include <utility>

namespace orsanta {

namespace {

constexpr size_t Stack_Bytes = size_t{8} << 20;  // as a thread has; memory is taken for what is used

thread_local C_Fiber* the_new_fiber = nullptr;

void* New_Stack() {
  void* const stack = mmap(nullptr, Stack_Bytes, PROT_READ | PROT_WRITE,
                           MAP_PRIVATE | MAP_ANONYMOUS | MAP_STACK | MAP_NORESERVE, -1, 0);
  if (stack == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "stack");
  mprotect(stack, static_cast<size_t>(sysconf(_SC_PAGESIZE)), PROT_NONE);  // an overflow ends there
  return stack;
}

}  // namespace

C_Fiber::C_Fiber(std::function<C_Fiber&()> body)
    : m_Body(std::move(body)), m_Stack(New_Stack()), m_Sanitizer(m_Stack, Stack_Bytes) {}

C_Fiber::~C_Fiber() {
  if (m_Stack != nullptr) munmap(m_Stack, Stack_Bytes);
}

void C_Fiber::Switch_To(C_Fiber& next) {
  auto& exceptions = *reinterpret_cast<C_Exceptions*>(abi::__cxa_get_globals());
  m_Exceptions = std::exchange(exceptions, next.m_Exceptions);
  m_Frame = static_cast<void**>(__builtin_frame_address(0));
  m_Sanitizer.Leave_For(next.m_Sanitizer);
  if (_setjmp(m_Registers) == 0) {
    if (next.m_Body) next.Begin();
    _longjmp(next.m_Registers, 1);
  }
  m_Sanitizer.Arrive();
}

// Leaves its frame behind, unmarked, so that the address sanitizer does not find marks there when others use the place.
__attribute__((no_sanitize("address"))) void C_Fiber::Begin() {
  ucontext_t start;
  getcontext(&start);
  start.uc_stack.ss_sp = m_Stack;
  start.uc_stack.ss_size = Stack_Bytes;
  start.uc_link = nullptr;
  makecontext(&start, &Run_New_Fiber, 0);
  the_new_fiber = this;
  setcontext(&start);
  std::terminate();
}

// An exception that leaves the body ends the process, as it does on a thread.
void C_Fiber::Run_New_Fiber() noexcept {
  *static_cast<void**>(__builtin_frame_address(0)) = nullptr;  // the chain of frames ends here
  C_Fiber& self = *the_new_fiber;
  self.m_Sanitizer.Arrive();
  C_Fiber& next = std::exchange(self.m_Body, nullptr)();
  self.Switch_To(next);
  std::terminate();
}

}  // namespace orsanta
