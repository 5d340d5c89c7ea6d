// orsanta_doctor [FOLDER]: checks the machine and a working folder, and says in plain words what is there and what is
// missing. It stands on the library's layers themselves, whose view of a machine it shows; `orsanta doctor` runs it.
#include <cstdio>
#include <filesystem>

#include "checks.h"
#include "orsanta/version.h"

int main(int argc, char** argv) {
  constexpr int Done = 0, Something_Bad = 1, Wrong_Argument = 2;
  if (argc > 1) {
    std::error_code error;
    std::filesystem::current_path(argv[1], error);
    if (error) {
      std::fprintf(stderr, "orsanta: --folder: %s cannot be entered: %s\n", argv[1], error.message().c_str());
      return Wrong_Argument;
    }
  }
  doctor::C_Findings findings;
  findings.Good("version", ORSANTA_VERSION);
  const bool bus_is_free = doctor::Check_Folder(findings);
  doctor::Check_Client(findings, bus_is_free);
  doctor::Check_Display(findings);
  doctor::Check_Priorities(findings);
  if (findings.Bad_Count() == 0) return Done;
  std::printf("The gauge cannot measure before what is BAD above is put right.\n");
  return Something_Bad;
}
