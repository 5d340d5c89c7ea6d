// The entry point of the plug-in.
#include <unistd.h>

#include <QCoreApplication>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "desktop/desktop_front.h"
#include "desktop/display.h"

namespace orsanta {

namespace {

std::atomic<C_Desktop_Front*> the_Front{nullptr};

// Ends the Qt thread when the process ends. Qt makes static objects whenever it first needs them, so that an exit
// handler of ours would run after the ends of some of them, under a thread that still draws. What runs before all exit
// handlers is the end of the main thread's own objects; hence this one. Where the main thread never used the front, the
// handler below at least brings the Qt thread to rest.
struct C_Main_Thread_End {
  ~C_Main_Thread_End() {
    C_Desktop_Front* front = the_Front.load();
    if (front != nullptr && gettid() == getpid()) front->Stop();
  }
};

void Rest_At_Exit() {
  if (C_Desktop_Front* front = the_Front.load()) front->Rest();
}

class C_Exported_Front : public C_Desktop_Front {
 public:
  explicit C_Exported_Front(const std::string& platform) : C_Desktop_Front(platform) {
    the_Front = this;
    static const int registered = std::atexit(Rest_At_Exit);
    static_cast<void>(registered);
  }
  ~C_Exported_Front() override { the_Front = nullptr; }

  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Sink& sink) override {
    Watch_Thread();
    return C_Desktop_Front::Open_Dialog(model, sink);
  }
  void Post_Message(const C_Message_Model& model, C_Message_Sink& sink) override {
    Watch_Thread();
    C_Desktop_Front::Post_Message(model, sink);
  }
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override {
    Watch_Thread();
    C_Desktop_Front::Draw_Chart(chart, model);
  }

 private:
  static void Watch_Thread() {
    thread_local const C_Main_Thread_End end;
    static_cast<void>(end);
  }
};

}  // namespace

}  // namespace orsanta

extern "C" __attribute__((visibility("default"))) orsanta::C_Front* orsanta_make_front() {
  std::string reason;
  if (QCoreApplication::instance() != nullptr) {
    reason = "the host program runs a Qt application of its own";
  } else {
    const std::string platform = orsanta::Find_Display(reason);
    if (!platform.empty()) {
      return new orsanta::C_Exported_Front(platform);
    }
  }
  fprintf(stderr, "orsanta: no windows: %s; messages go to this stream and dialogs count as cancelled\n",
          reason.c_str());
  return nullptr;
}
