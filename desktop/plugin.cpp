// The entry point of the plug-in.
#include <QCoreApplication>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "desktop/desktop_front.h"
#include "desktop/display.h"

namespace orsanta {

namespace {

std::atomic<C_Desktop_Front*> the_Front{nullptr};

class C_Exported_Front : public C_Desktop_Front {
 public:
  explicit C_Exported_Front(const std::string& platform) : C_Desktop_Front(platform) { the_Front = this; }
  ~C_Exported_Front() override { the_Front = nullptr; }
};

// A process that ends without taking its front down must not leave the Qt thread running into the end of Qt.
void Stop_At_Exit() {
  if (C_Desktop_Front* front = the_Front.load()) front->Stop();
}

}  // namespace

}  // namespace orsanta

extern "C" __attribute__((visibility("default"))) orsanta::C_Front* orsanta_make_front() {
  std::string reason;
  if (QCoreApplication::instance() != nullptr) {
    reason = "the host program runs a Qt application of its own";
  } else {
    const std::string platform = orsanta::Find_Display(reason);
    if (!platform.empty()) {
      auto* front = new orsanta::C_Exported_Front(platform);
      static const int registered = std::atexit(orsanta::Stop_At_Exit);
      static_cast<void>(registered);
      return front;
    }
  }
  fprintf(stderr, "orsanta: no windows: %s; messages go to this stream and dialogs count as cancelled\n",
          reason.c_str());
  return nullptr;
}
