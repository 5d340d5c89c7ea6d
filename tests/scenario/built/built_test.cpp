// The built library and the built program, as a host and a person at the terminal meet them, in real time.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <vector>

#include "common/temp_folder.h"

namespace orsanta {
namespace {

using ::testing::HasSubstr;

struct C_Outcome {
  int status = -1;
  std::string output;  // standard output, and the error stream where the command joins it
};

C_Outcome Shell(const std::string& command) {
  C_Outcome outcome;
  FILE* pipe = popen(("env -u DISPLAY -u WAYLAND_DISPLAY " + command).c_str(), "r");
  if (pipe == nullptr) return outcome;
  std::array<char, 4096> part;
  for (size_t count; (count = fread(part.data(), 1, part.size(), pipe)) > 0;) outcome.output.append(part.data(), count);
  outcome.status = WEXITSTATUS(pclose(pipe));
  return outcome;
}

C_Outcome Orsanta(const std::string& arguments) {
  return Shell(std::string(BUILT_PROGRAM) + " " + arguments + " 2>&1");
}

TEST(Built_Library, Shows_The_Functions_Of_Its_Header_And_Nothing_Else) {
  std::set<std::string> declared;
  std::ifstream header(SOURCE_FOLDER "/include/orsanta/orsanta.h");
  for (std::string line; std::getline(header, line);) {
    if (line.rfind("ORSANTA_API ", 0) != 0) continue;
    const std::string head = line.substr(0, line.find('('));
    declared.insert(head.substr(head.find_last_of(" *") + 1));
  }
  EXPECT_EQ(declared.size(), 18U);

  std::set<std::string> shown;
  std::istringstream symbols(Shell(SYMBOL_LISTER " -D --defined-only " BUILT_LIBRARY).output);
  for (std::string address, kind, name; symbols >> address >> kind >> name;) shown.insert(name);
  EXPECT_EQ(shown, declared);
}

struct C_Csv_Part {
  double true_mm = 0.0, measured_mm = 0.0, true_force_g = 0.0;
  int tried = 0, failed = 0;
};

std::vector<C_Csv_Part> Read_Parts(const std::string& path) {
  std::ifstream csv(path);
  std::string line;
  std::getline(csv, line);
  EXPECT_EQ(line, "station,part,true_mm,measured_mm,error_um,true_force_g,cycle_ms,tried,failed");
  std::vector<C_Csv_Part> parts;
  while (std::getline(csv, line)) {
    C_Csv_Part part;
    const bool full = std::sscanf(line.c_str(), "%*d,%*d,%lf,%lf,%*f,%lf,%*f,%d,%d", &part.true_mm, &part.measured_mm,
                                  &part.true_force_g, &part.tried, &part.failed) == 5;
    const bool empty =
        std::sscanf(line.c_str(), "%*d,%*d,%lf,,,,,%d,%d", &part.true_mm, &part.tried, &part.failed) == 3;
    EXPECT_TRUE(full || empty) << line;
    parts.push_back(part);
  }
  return parts;
}

TEST(Program, Measures_At_The_Force_That_It_Names_And_Tests_Itself) {
  const C_Temp_Folder folder;
  const C_Outcome ran = Orsanta("measure --stations 2 --parts=2 --force 50 --csv parts.csv");
  EXPECT_EQ(ran.status, 0) << ran.output;
  EXPECT_THAT(ran.output, HasSubstr("PASS: 4 parts measured at 50 g"));
  const std::vector<C_Csv_Part> parts = Read_Parts("parts.csv");
  EXPECT_EQ(parts.size(), 4U);
  for (const C_Csv_Part& part : parts) {
    EXPECT_EQ(part.tried - part.failed, 1);
    EXPECT_NEAR(part.measured_mm, part.true_mm, 0.001);
    EXPECT_NEAR(part.true_force_g, 50.0, 0.5);
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1);  // no store is left

  const C_Outcome tested = Orsanta("selftest");
  EXPECT_EQ(tested.status, 0) << tested.output;
  EXPECT_THAT(tested.output, HasSubstr("PASS"));
}

TEST(Program, An_Interrupted_Run_Tells_Which_Parts_Were_Not_Tried) {
  constexpr int Parts = 1000;
  const C_Temp_Folder folder;
  const C_Outcome ran =
      Shell("timeout --preserve-status -s INT 8 " BUILT_PROGRAM " measure --stations 1 --parts 1000 --csv parts.csv");
  EXPECT_EQ(ran.status, 1);
  const std::vector<C_Csv_Part> parts = Read_Parts("parts.csv");
  ASSERT_EQ(parts.size(), static_cast<size_t>(Parts));
  int tried = 0;
  for (const C_Csv_Part& part : parts) {
    tried += part.tried;
    EXPECT_EQ(part.failed, 0);
    EXPECT_NEAR(part.measured_mm, part.tried * part.true_mm, 0.001);
  }
  const std::string told = "INTERRUPTED: " + std::to_string(Parts - tried) + " of " + std::to_string(Parts) +
                           " parts were not tried, 0 failed";
  EXPECT_THAT(ran.output, HasSubstr(told));
}

TEST(Program, A_Wrong_Argument_Gets_One_Line_That_Says_What_Is_Allowed) {
  struct C_Case {
    const char* arguments;
    const char* told;
  };
  for (const C_Case& item :
       {C_Case{"", "measure"}, C_Case{"weigh", "measure"}, C_Case{"measure --stations 15", "1 to 14"},
        C_Case{"measure --stations 0", "1 to 14"}, C_Case{"measure --stations two", "1 to 14"},
        C_Case{"measure --parts=1.5", "whole number"}, C_Case{"measure --force nan", "1 to 1000"},
        C_Case{"measure --force", "--force"}, C_Case{"measure --speed 3", "--stations"},
        C_Case{"measure --csv /no/such/folder/x.csv", "/no/such/folder/x.csv"}}) {
    const C_Outcome ran = Orsanta(item.arguments);
    EXPECT_EQ(ran.status, 2) << item.arguments;
    EXPECT_THAT(ran.output, HasSubstr(item.told)) << item.arguments;
    EXPECT_EQ(std::count(ran.output.begin(), ran.output.end(), '\n'), 1) << ran.output;
  }
  for (const char* arguments : {"--help", "measure --help", "selftest --help"}) {
    const C_Outcome ran = Orsanta(arguments);
    EXPECT_EQ(ran.status, 0);
    EXPECT_THAT(ran.output, HasSubstr("Example: orsanta")) << arguments;
  }
}

}  // namespace
}  // namespace orsanta
