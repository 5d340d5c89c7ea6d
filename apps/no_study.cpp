// orsanta study where the studies are not built: says how to get them.
#include <cstdio>

#include "commands.h"

namespace app {

void Add_Study(CLI::App& program, int& exit_status) {
  CLI::App* command = program.add_subcommand("study", "Measurement-system studies; not in this build.");
  command->prefix_command();
  command->callback([&exit_status] {
    std::fprintf(stderr,
                 "orsanta: this build has no studies; configure it with ORSANTA_STUDY=ON, as scripts/run study does\n");
    exit_status = Failed;
  });
}

}  // namespace app
