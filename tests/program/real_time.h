// Tests that measure in real time. The commands spend it waiting: all run side by side, from the first of the tests on.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "common/command.h"
#include "common/temp_folder.h"

namespace orsanta {

// A command line with the client library of a machine in place of the simulator.
inline std::string On_Machine(const std::string& line) {
  return "export LD_LIBRARY_PATH=" MACHINE_FOLDER "; " + line + " 2>&1";
}

class Real_Time : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { runs = std::make_unique<C_Runs>(); }
  static void TearDownTestSuite() { runs.reset(); }

  // In a folder of its own, where its temporary files are too.
  static std::string In(const std::string& folder, const std::string& line) {
    return "mkdir " + folder + " && cd " + folder + " && export TMPDIR=$PWD && " + line + " 2>&1";
  }

  struct C_Runs {
    C_Temp_Folder folder;
    C_Command begun{
        In("machine", "printf '\\n\\n\\n\\nq\\n' | (" +
                          On_Machine(BUILT_PROGRAM " study type1 --reference 5 --tolerance 20 --block 5 --out out "
                                                   "--language en") +
                          ")")};
    C_Command measured{In("measured", BUILT_PROGRAM " measure --stations 2 --parts=2 --force 50 --csv parts.csv")};
    C_Command interrupted{In("interrupted", "timeout --preserve-status -s INT 7 " BUILT_PROGRAM
                                            " measure --stations 1 --parts 1000 --force 50 --csv parts.csv")};
    C_Command tested{In("tested", BUILT_PROGRAM " selftest")};
    C_Command grr{In("grr", BUILT_PROGRAM
                     " study grr --parts 2 --appraisers 2 --trials 2 --tolerance 20 --placement-error 0.5 "
                     "--appraiser-error 20 --out out --language en")};
    C_Command force{In("force", BUILT_PROGRAM " study force --heights 1,7 --forces 400 --out out")};
  };
  static inline std::unique_ptr<C_Runs> runs;
};

}  // namespace orsanta
