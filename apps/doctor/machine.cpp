// What the machine grants: a display for the panel, and priorities for the threads that may not be late.
#include <dlfcn.h>
#include <link.h>
#include <sched.h>
#include <sys/resource.h>

#include <filesystem>
#include <string>
#include <thread>

#include "checks.h"
#include "support/system/environment.h"
#include "support/system/priority.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;

constexpr const char* Desktop_Front = "liborsanta_desktop.so";
constexpr const char* No_Panel = "; messages go to the error stream, and there is no panel";

// The folder of the loaded liborsanta.so, empty when it is not loaded.
fs::path Library_Folder() {
  fs::path folder;
  dl_iterate_phdr(
      [](dl_phdr_info* module, size_t, void* out) {
        const fs::path path = module->dlpi_name;
        if (path.filename().string().starts_with("liborsanta.so")) *static_cast<fs::path*>(out) = path.parent_path();
        return 0;
      },
      &folder);
  return folder;
}

bool Real_Time_Granted() {
  bool granted = false;
  std::thread([&granted] {
    orsanta::SetThreadPriority(orsanta::Priority_Time_Critical);
    granted = (sched_getscheduler(0) & ~SCHED_RESET_ON_FORK) == SCHED_RR;
  }).join();
  return granted;
}

}  // namespace

void Check_Display(C_Findings& findings) {
  if (!orsanta::Has_Display()) {
    return findings.Note("display", std::string("none: DISPLAY and WAYLAND_DISPLAY are not set") + No_Panel);
  }
  std::error_code none;
  const fs::path library = Library_Folder();
  fs::path front = library / "orsanta" / Desktop_Front;
  if (!fs::exists(front, none)) front = library / Desktop_Front;
  if (!fs::exists(front, none)) {
    return findings.Note("display", std::string("the desktop front is not installed (orsanta-desktop)") + No_Panel);
  }
  if (dlopen(front.c_str(), RTLD_NOW | RTLD_LOCAL) == nullptr) {
    return findings.Note("display", std::string("the desktop front cannot be loaded: ") + dlerror() + No_Panel);
  }
  findings.Good("display", "set, and the desktop front is " + front.string());
}

void Check_Priorities(C_Findings& findings) {
  if (Real_Time_Granted()) {
    findings.Good("priorities", "a real-time class is granted");
  } else {
    findings.Note("priorities",
                  "no real-time class is granted: on a busy machine samples may be late; give the account of the host "
                  "RLIMIT_RTPRIO of 11 or more and RLIMIT_NICE for nice -20");
  }
}

}  // namespace doctor
