// The entry point of the plug-in.
#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "desktop/desktop_front.h"

namespace orsanta {

namespace {

std::atomic<bool> the_Qt_Runs{false};

// Halts the Qt thread when the process ends. Qt makes static objects whenever it first needs them, so that an exit
// handler of ours would run after the ends of some of them, under a thread that still draws. What runs before all exit
// handlers is the end of the main thread's own objects; hence this one. Where the main thread never used the front, the
// handler below comes as early as it can.
struct C_Main_Thread_End {
  ~C_Main_Thread_End() {
    if (gettid() == getpid()) C_Qt_Thread::Get().Halt();
  }
};

class C_Exported_Front : public C_Desktop_Front {
 public:
  C_Exported_Front() {
    if (!the_Qt_Runs.exchange(true)) std::atexit([] { C_Qt_Thread::Get().Halt(); });
  }

  void On_Used() override {
    thread_local const C_Main_Thread_End end;
    static_cast<void>(end);
  }
};

}  // namespace

}  // namespace orsanta

extern "C" __attribute__((visibility("default"))) orsanta::C_Front* orsanta_make_front() {
  std::string reason = "the host program runs a Qt application of its own";
  if (QCoreApplication::instance() == nullptr || orsanta::the_Qt_Runs) {
    auto front = std::make_unique<orsanta::C_Exported_Front>();
    if (front->Start(reason)) return front.release();
  }
  fprintf(stderr, "orsanta: no windows: %s; messages go to this stream and dialogs count as cancelled\n",
          reason.c_str());
  return nullptr;
}
