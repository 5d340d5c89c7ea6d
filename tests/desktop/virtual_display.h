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
  // Starts the server and sets DISPLAY. size: of the screen, pixels. False when there is none to start.
  static bool Start(const std::string& size = "1280x800") {
    // It tells its process and then, when it can be used, its number, and ends with the test whatever ends that.
    const std::string command =
        "echo $$; exec setpriv --pdeathsig TERM Xvfb -displayfd 1 -screen 0 " + size + "x24 -nolisten tcp -noreset";
    theServer = popen(command.c_str(), "re");
    int number = 0;
    if (fscanf(theServer, "%d %d", &thePid, &number) != 2) return false;
    setenv("DISPLAY", std::string(":").append(std::to_string(number)).c_str(), 1);
    unsetenv("WAYLAND_DISPLAY");
    unsetenv("QT_QPA_PLATFORM");
    // No services of a desktop: without an address the windows' library has a program look for some, which may not end.
    setenv("DBUS_SESSION_BUS_ADDRESS", "disabled:", 1);
    // Where the desktop gives no folder for running programs, the windows' library makes one and leaves it.
    if (theFolder.empty()) theFolder = (std::filesystem::temp_directory_path() / "orsanta_XXXXXX").string();
    if (mkdtemp(theFolder.data()) != nullptr) setenv("XDG_RUNTIME_DIR", theFolder.c_str(), 1);
    std::atexit(Stop);  // after the front's own end, which is registered later
    return true;
  }
  // The one that the tests of a process share.
  static bool Is_There() {
    static const bool is_there = Start();
    return is_there;
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

// What manages the windows of the test's display, for as long as the object lives.
class C_Managed_Desk {
 public:
  C_Managed_Desk() {
    char line[256] = "";
    while (!m_Works && fgets(line, sizeof line, m_Manager) != nullptr) m_Works = std::string(line) == "ready\n";
  }
  ~C_Managed_Desk() {
    if (m_Works && std::system("openbox --exit") != 0) fputs("openbox does not end\n", stderr);
    pclose(m_Manager);
  }
  C_Managed_Desk(const C_Managed_Desk&) = delete;
  C_Managed_Desk& operator=(const C_Managed_Desk&) = delete;

  // False where the program is missing.
  bool Works() const { return m_Works; }

 private:
  FILE* m_Manager =
      popen("exec setpriv --pdeathsig TERM openbox --sm-disable --startup 'echo ready' 2>/dev/null", "re");
  bool m_Works = false;
};

}  // namespace orsanta
