// What the address and the thread sanitizer need to be told of a fiber (fiber.h), so that they follow it from stack to
// stack. In other builds it is nothing.
#pragma once

#include <cstddef>

#include "support/time/uncopied.h"

#if defined(__has_feature)
#define ORSANTA_HAS_SANITIZER(name) __has_feature(name)
#else
#define ORSANTA_HAS_SANITIZER(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || ORSANTA_HAS_SANITIZER(address_sanitizer)

#include <pthread.h>
#include <sanitizer/asan_interface.h>
#include <sanitizer/common_interface_defs.h>

namespace orsanta {

class C_Sanitizer_Fiber : private C_Uncopied {
 public:
  // The calling thread.
  C_Sanitizer_Fiber() {
    pthread_attr_t attributes;
    pthread_getattr_np(pthread_self(), &attributes);
    pthread_attr_getstack(&attributes, &m_Stack, &m_Size);
    pthread_attr_destroy(&attributes);
  }
  // A new fiber on this stack. What lay there before may have left its marks of frames that were never returned from.
  C_Sanitizer_Fiber(void* stack, size_t size) : m_Stack(stack), m_Size(size) {
    __asan_unpoison_memory_region(stack, size);
  }

  // This one's last call before the switch to `next`, and its first after a switch to it.
  void Leave_For(C_Sanitizer_Fiber& next) { __sanitizer_start_switch_fiber(&m_Locals, next.m_Stack, next.m_Size); }
  void Arrive() { __sanitizer_finish_switch_fiber(m_Locals, nullptr, nullptr); }

 private:
  void* m_Stack = nullptr;
  size_t m_Size = 0;
  void* m_Locals = nullptr;  // those that the sanitizer keeps elsewhere
};

}  // namespace orsanta

#elif defined(__SANITIZE_THREAD__) || ORSANTA_HAS_SANITIZER(thread_sanitizer)

#include <sanitizer/tsan_interface.h>

namespace orsanta {

class C_Sanitizer_Fiber {
 public:
  C_Sanitizer_Fiber() : m_Fiber(__tsan_get_current_fiber()) {}
  C_Sanitizer_Fiber(void*, size_t) : m_Fiber(__tsan_create_fiber(0)), m_Is_New(true) {}
  ~C_Sanitizer_Fiber() {
    if (m_Is_New) __tsan_destroy_fiber(m_Fiber);
  }

  void Leave_For(C_Sanitizer_Fiber& next) { __tsan_switch_to_fiber(next.m_Fiber, 0); }
  void Arrive() {}

 private:
  void* m_Fiber;
  bool m_Is_New = false;
};

}  // namespace orsanta

#else

namespace orsanta {

struct C_Sanitizer_Fiber {
  C_Sanitizer_Fiber() = default;
  C_Sanitizer_Fiber(void*, size_t) {}
  void Leave_For(C_Sanitizer_Fiber&) {}
  void Arrive() {}
};

}  // namespace orsanta

#endif
