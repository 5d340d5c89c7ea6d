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

void Watch_Thread() {
  thread_local const C_Main_Thread_End end;
  static_cast<void>(end);
}

class C_Exported_Front : public C_Desktop_Front {
 public:
  C_Exported_Front() {
    if (!the_Qt_Runs.exchange(true)) std::atexit([] { C_Qt_Thread::Get().Halt(); });
  }

  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override {
    Watch_Thread();
    return C_Desktop_Front::Open_Dialog(model, listener);
  }
  void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) override {
    Watch_Thread();
    C_Desktop_Front::Post_Message(model, listener);
  }
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override {
    Watch_Thread();
    C_Desktop_Front::Draw_Chart(chart, model);
  }
};

}  // namespace

}  // namespace orsanta

extern "C" __attribute__((visibility("default"))) orsanta::C_Front* orsanta_make_front() {
  std::string reason = "the host program runs a Qt application of its own";
  if (QCoreApplication::instance() == nullptr || orsanta::the_Qt_Runs) {
    orsanta::Watch_Thread();
    auto front = std::make_unique<orsanta::C_Exported_Front>();
    if (front->Start(reason)) return front.release();
  }
  fprintf(stderr, "orsanta: no windows: %s; messages go to this stream and dialogs count as cancelled\n",
          reason.c_str());
  return nullptr;
}
