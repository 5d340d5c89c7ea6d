// An X server of the test's own, for as long as the process lives, so that tests of real windows need no desktop.
#pragma once

#include <signal.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <system_error>

namespace orsanta {

class C_Virtual_Display {
 public:
  // Starts the server and sets DISPLAY. False when there is none to start.
  static bool Start() {
    // It tells its process and then, when it can be used, its number, and ends with the test whatever ends that.
    theServer = popen(
        "echo $$; exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -screen 0 1280x800x24 -nolisten tcp -noreset", "re");
    int number = 0;
    if (fscanf(theServer, "%d %d", &thePid, &number) != 2) return false;
    setenv("DISPLAY", (":" + std::to_string(number)).c_str(), 1);
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
    pclose(theServer);
    thePid = 0;
    std::error_code ignored;
    std::filesystem::remove_all(theFolder, ignored);
  }

 private:
  static inline FILE* theServer = nullptr;
  static inline pid_t thePid = 0;
  static inline std::string theFolder;
};

}  // namespace orsanta
