// orsanta panel: the operator's panel on the simulator, with the simulator strip under it, in which parts are placed
// and IO inputs pressed. The strip is the program orsanta_strip, which needs Qt; this program needs none.
#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "commands.h"
#include "helper_program.h"
#include "orsanta/orsanta.h"
#include "simulator_loaded.h"
#include "simulator_room.h"

namespace app {
namespace {

namespace fs = std::filesystem;

constexpr double Block_Mm = 5.0;  // the reference block, which lies under every probe at first
constexpr int State_Ms = 200;     // between two states sent to the strip
constexpr int Io_Channels = 8;    // of the IO card; stations beyond have none
constexpr const char* Strip_Program = "orsanta_strip";
// Pixels at the bottom of the screen, which the panel leaves to the strip; both take it from the environment.
constexpr const char* Strip_Height = "46";
constexpr int Poll_Ms = 20;  // while the strip is to end
constexpr int Longest_End_Ms = 2000;
constexpr int Not_Started = 127;  // status of a child that found no program

struct C_Panel {
  int stations = 2;
  uint64_t seed = 1;
  std::string folder;
};

// The child process of the strip, with a pipe either way.
class C_Strip {
 public:
  // argument: the strip's.
  explicit C_Strip(const std::string& argument) {
    const std::string program = Helper_Program(Strip_Program);
    int to_strip[2], from_strip[2];
    if (pipe2(to_strip, O_CLOEXEC) != 0) return;
    if (pipe2(from_strip, O_CLOEXEC) != 0) {
      close(to_strip[0]);
      close(to_strip[1]);
      return;
    }
    m_Pid = fork();
    if (m_Pid == 0) {
      dup2(to_strip[0], STDIN_FILENO);
      dup2(from_strip[1], STDOUT_FILENO);
      execl(program.c_str(), program.c_str(), argument.c_str(), static_cast<char*>(nullptr));
      _exit(Not_Started);
    }
    close(to_strip[0]);
    close(from_strip[1]);
    m_In = to_strip[1];
    m_Out = from_strip[0];
    fcntl(m_In, F_SETFL, O_NONBLOCK);  // a strip that does not read must not hold up the panel
  }
  ~C_Strip() {
    Wait();
    if (m_Out >= 0) close(m_Out);
  }
  C_Strip(const C_Strip&) = delete;
  C_Strip& operator=(const C_Strip&) = delete;

  // One line to the strip; false when it has gone. A strip that does not read misses the line: a line is too short to
  // be written in part.
  bool Tell(const std::string& line) const {
    const std::string whole = line + "\n";
    return write(m_In, whole.data(), whole.size()) >= 0 || errno == EAGAIN;
  }
  // The next lines from the strip; false when it has gone.
  bool Read(std::string& text) const {
    char bytes[512];
    const ssize_t got = read(m_Out, bytes, sizeof bytes);
    if (got <= 0) return false;
    text.append(bytes, static_cast<size_t>(got));
    return true;
  }
  // Ends the strip's input, at which it ends itself.
  void Hang_Up() {
    if (m_In >= 0) close(m_In);
    m_In = -1;
  }
  // Waits for its end, which it brings about where the strip does not end by itself; returns its status.
  int Wait() {
    Hang_Up();
    if (m_Pid <= 0) return m_Status;
    int status = 0;
    for (int waited_ms = 0; waitpid(m_Pid, &status, WNOHANG) == 0; waited_ms += Poll_Ms) {
      if (waited_ms == Longest_End_Ms) kill(m_Pid, SIGKILL);
      std::this_thread::sleep_for(std::chrono::milliseconds(Poll_Ms));
    }
    m_Pid = 0;
    m_Status = WIFEXITED(status) ? WEXITSTATUS(status) : Failed;
    return m_Status;
  }

 private:
  pid_t m_Pid = 0;
  int m_In = -1;
  int m_Out = -1;
  int m_Status = Failed;
};

// Tells in one line why not.
bool Can_Show_Windows() {
  const int status = C_Strip("--check").Wait();
  if (status == Not_Started) {
    std::fprintf(
        stderr,
        "orsanta: the panel needs Qt 6: %s is missing; install orsanta-desktop, or qt6-base-dev and build again\n",
        Helper_Program(Strip_Program).c_str());
  }
  return status == Done;
}

void Obey(const std::string& line) {
  std::istringstream words(line);
  std::string word;
  int station = 0;
  double value = 0.0;
  if (!(words >> word >> station)) return;
  if (word == "remove") return simulator::Remove_Part(station);
  if (!(words >> value)) return;
  if (word == "part") simulator::Place_Part(station, value);
  if (word == "input" && station < Io_Channels) simulator::Set_Input(station, static_cast<int>(value));
}

void Follow_Strip(const C_Strip& strip) {
  std::string text;
  while (strip.Read(text)) {
    for (size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      Obey(text.substr(0, end));
      text.erase(0, end + 1);
    }
  }
}

void Tell_States(const C_Strip& strip, int stations, const std::atomic<bool>& closing) {
  while (!closing) {
    for (int n = 1; n <= stations; ++n) {
      char line[80];
      std::snprintf(line, sizeof line, "state %d %.4f %.2f %d", n, simulator::True_Position(n),
                    simulator::True_Force(n), n < Io_Channels ? simulator::Get_Output(n) : 0);
      if (!strip.Tell(line)) return;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(State_Ms));
  }
}

void Set_Up_Simulator(const C_Panel& panel) {
  Set_Up_Room(panel.stations, panel.seed);
  for (int n = 1; n <= panel.stations; ++n) {
    simulator::Place_Part(n, Block_Mm);
    if (n < Io_Channels) simulator::Set_Input(n, 1);  // nobody asks for a measurement
  }
}

// Writes the store that the system would write after the questions of its very first start: they need not be asked,
// since the number of stations is given here.
void Answer_First_Start(int stations) {
  constexpr char Store[] = "全局电机参数";
  if (fs::exists(Store)) return;
  std::ofstream(Store) << "orsanta store 1\nC_InitDlg Num 0 = int " << stations << "\nend\n";
}

void Show_Panel(const C_Panel& panel) {
  Answer_First_Start(panel.stations);
  Set_Up_Simulator(panel);
  Orsanta_dll_init(1);
  {
    C_Strip strip(std::to_string(panel.stations));
    std::atomic<bool> closing{false};
    std::thread reader([&] { Follow_Strip(strip); });
    std::thread teller([&] { Tell_States(strip, panel.stations, closing); });
    show_dlg();
    closing = true;
    teller.join();
    strip.Wait();
    reader.join();
  }
  Orsanta_dll_uninit();
}

// Enters the folder for the stores: the one that was asked for, or a fresh one, whose name comes back.
fs::path Enter_Folder(const std::string& wanted) {
  if (!wanted.empty()) {
    fs::create_directories(wanted);
    fs::current_path(wanted);
    return {};
  }
  std::string name = (fs::temp_directory_path() / "orsanta-XXXXXX").string();
  if (mkdtemp(name.data()) == nullptr) throw fs::filesystem_error("no folder for the stores", fs::path(name), {});
  fs::current_path(name);
  return name;
}

int Run_Panel(const C_Panel& panel) {
  if (!Can_Show_Windows()) return Failed;
  setenv("ORSANTA_STRIP_HEIGHT", Strip_Height, 1);
  signal(SIGPIPE, SIG_IGN);  // a strip that was closed is noticed where it is written to
  const fs::path before = fs::current_path();
  fs::path passing;
  try {
    passing = Enter_Folder(panel.folder);
  } catch (const fs::filesystem_error& error) {
    std::fprintf(stderr, "orsanta: --folder cannot be used: %s\n", error.what());
    return Wrong_Argument;
  }
  Show_Panel(panel);
  fs::current_path(before);
  std::error_code ignored;
  if (!passing.empty()) fs::remove_all(passing, ignored);
  return Done;
}

}  // namespace

void Add_Panel(CLI::App& program, int& exit_status) {
  auto panel = std::make_shared<C_Panel>();
  CLI::App* command = program.add_subcommand(
      "panel",
      "Opens the operator's panel on the simulator, and a strip in which parts are placed and IO inputs pressed.\n"
      "The password is mocha. Needs a display. Example: orsanta panel --stations 4");
  command->add_option("--stations", panel->stations, "how many stations")
      ->check(Whole_Number(1, Max_Stations))
      ->capture_default_str();
  command->add_option("--seed", panel->seed, "seed of the simulator's noise")
      ->check(Whole_Number(0, 1000000000))
      ->capture_default_str();
  command->add_option("--folder", panel->folder, "folder that keeps the settings; without it they go with the panel");
  command->callback([panel, &exit_status] { exit_status = Need_Simulator("panel") ? Run_Panel(*panel) : Failed; });
}

}  // namespace app
