// orsanta selftest: the drive's self-test. It is a program of its own beside this one, which takes its place.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "commands.h"

namespace app {
namespace {

int Run_Selftest() {
  const std::string program =
      (std::filesystem::read_symlink("/proc/self/exe").parent_path() / "orsanta_selftest").string();
  execl(program.c_str(), "orsanta_selftest", static_cast<char*>(nullptr));
  std::fprintf(stderr, "orsanta: %s cannot be run: %s; it is installed beside orsanta\n", program.c_str(),
               std::strerror(errno));
  return Failed;
}

}  // namespace

void Add_Selftest(CLI::App& program, int& exit_status) {
  CLI::App* command = program.add_subcommand(
      "selftest",
      "Tests the drive with CAN id 1 from ten workers at once: mapping, homing, stroke. It passes when one of\n"
      "them gets through; the others find the drive in use and say so.\n"
      "Example: orsanta selftest");
  command->callback([&exit_status] { exit_status = Run_Selftest(); });
}

}  // namespace app
