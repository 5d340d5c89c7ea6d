// An X server of the test's own, for as long as the process lives, so that tests of real windows need no desktop.
#pragma once

#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace orsanta {

class C_Virtual_Display {
 public:
  // Starts the server and sets DISPLAY. False when there is none to start.
  static bool Start() {
    int ends[2];
    if (pipe(ends) != 0) return false;
    thePid = fork();
    if (thePid == 0) {
      prctl(PR_SET_PDEATHSIG, SIGTERM);
      close(ends[0]);
      const std::string descriptor = std::to_string(ends[1]);
      execlp("Xvfb", "Xvfb", "-displayfd", descriptor.c_str(), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
             "-noreset", static_cast<char*>(nullptr));
      _exit(127);
    }
    close(ends[1]);
    std::string number;
    char letter = 0;
    while (read(ends[0], &letter, 1) == 1 && letter != '\n') number += letter;
    close(ends[0]);
    if (number.empty()) return false;
    setenv("DISPLAY", (":" + number).c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    unsetenv("QT_QPA_PLATFORM");
    // Where the desktop gives no folder for running programs, the windows' library makes one and leaves it.
    if (theFolder.empty()) theFolder = (std::filesystem::temp_directory_path() / "orsanta_XXXXXX").string();
    if (mkdtemp(theFolder.data()) != nullptr) setenv("XDG_RUNTIME_DIR", theFolder.c_str(), 1);
    std::atexit(Stop);  // after the front's own end, which is registered later
    return true;
  }
  static void Stop() {
    if (thePid <= 0) return;
    kill(thePid, SIGKILL);
    waitpid(thePid, nullptr, 0);
    thePid = 0;
    std::error_code ignored;
    std::filesystem::remove_all(theFolder, ignored);
  }

 private:
  static inline pid_t thePid = 0;
  static inline std::string theFolder;
};

}  // namespace orsanta
