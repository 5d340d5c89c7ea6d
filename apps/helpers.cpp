// orsanta selftest and orsanta doctor: programs of their own, since they stand on the library's layers and not on its
// header. They take the place of this one.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "commands.h"
#include "helper_program.h"

namespace app {
namespace {

// argument: of the program; null for none. Returns only where the program cannot be run.
int Become(const char* name, const char* argument = nullptr) {
  const std::string program = Helper_Program(name);
  execl(program.c_str(), name, argument, static_cast<char*>(nullptr));
  std::fprintf(stderr, "orsanta: %s cannot be run: %s; install it together with orsanta\n", program.c_str(),
               std::strerror(errno));
  return Failed;
}

}  // namespace

void Add_Selftest(CLI::App& program, int& exit_status) {
  program
      .add_subcommand(
          "selftest",
          "Tests the drive with CAN id 1 from ten workers at once: mapping, homing, stroke. It passes when\n"
          "one of them gets through; the others find the drive in use and say so.\n"
          "Example: orsanta selftest")
      ->callback([&exit_status] { exit_status = Become("orsanta_selftest"); });
}

void Add_Doctor(CLI::App& program, int& exit_status) {
  auto folder = std::make_shared<std::string>(".");
  CLI::App* command = program.add_subcommand(
      "doctor",
      "Checks the machine: the client library, the motion server, the devices on the bus, the display, the\n"
      "priorities, the working folder and its stores. Run it while no host runs: it asks the motion server.\n"
      "Exit status 1 where something is missing without which the gauge cannot measure.\n"
      "Example: orsanta doctor --folder /var/lib/gauge");
  command->add_option("--folder", *folder, "the working folder of the host")->capture_default_str();
  command->callback([folder, &exit_status] { exit_status = Become("orsanta_doctor", folder->c_str()); });
}

}  // namespace app
