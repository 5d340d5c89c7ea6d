// The built library and the built program, as a host and a person at the terminal meet them, in real time.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <set>
#include <sstream>
#include <thread>

#include "common/temp_folder.h"
#include "orsanta/orsanta.h"

namespace orsanta {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string Read_File(const std::string& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

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

TEST(Built_Library, ShowsTheFunctionsOfItsHeaderAndNothingElse) {
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

// The way a host that links nothing does it. The bare anvil of the bench stands for the reference block.
TEST(Built_Library, MeasuresForAHostThatLoadsIt) {
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  const C_Temp_Folder folder;
  void* library = dlopen(BUILT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(library, nullptr) << dlerror();
#define LOADED(name) const auto name = reinterpret_cast<decltype(&::name)>(dlsym(library, #name))
  LOADED(Orsanta_dll_init);
  LOADED(Orsanta_dll_uninit);
  LOADED(Set_Ans_Offset);
  LOADED(Check_User_Zero);
  LOADED(do_test);
  LOADED(get_ans);
#undef LOADED
  Orsanta_dll_init(0);  // without a table: one station, by the default settings
  Set_Ans_Offset(1, 5.0);
  Check_User_Zero(1);
  ASSERT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  double thickness = 0.0, force = 0.0;
  int ready = 0;
  for (int polls = 0; ready == 0 && polls < 20000; ++polls) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    ready = get_ans(1, &thickness, &force);
  }
  EXPECT_EQ(ready, 1);
  EXPECT_NEAR(thickness, 5.0, 0.001);
  EXPECT_EQ(force, 200.0);
  Orsanta_dll_uninit();
  dlclose(library);
}

TEST(Readme, ItsProgramCompilesAndMeasures) {
  const C_Temp_Folder folder;
  const std::string readme = Read_File(SOURCE_FOLDER "/README.md");
  const size_t begin = readme.find("```c\n");
  ASSERT_NE(begin, std::string::npos);
  const size_t end = readme.find("\n```", begin);
  std::ofstream("host.c") << "#define _DEFAULT_SOURCE\n" << readme.substr(begin + 5, end - begin - 4);
  const C_Outcome compiled = Shell(C_COMPILE " -I" SOURCE_FOLDER "/include host.c -o host -L" BUILT_FOLDER
                                             " -lorsanta -ltremalink -Wl,-rpath," BUILT_FOLDER " 2>&1");
  ASSERT_EQ(compiled.status, 0) << compiled.output;
  const C_Outcome ran = Shell("./host");
  EXPECT_EQ(ran.status, 0);
  EXPECT_EQ(ran.output, "5.000 mm at 100 g\n");
}

TEST(Program, MeasuresAndWritesEachPart) {
  const C_Temp_Folder folder;
  const C_Outcome ran = Orsanta("measure --stations 2 --parts 2 --force 150 --csv parts.csv");
  EXPECT_EQ(ran.status, 0) << ran.output;
  EXPECT_THAT(ran.output, HasSubstr("PASS: 4 parts measured at 150 g"));
  const std::string csv = Read_File("parts.csv");
  EXPECT_THAT(csv, StartsWith("station,part,true_mm,measured_mm,error_um,cycle_ms,failed\n1,1,"));
  EXPECT_EQ(std::count(csv.begin(), csv.end(), '\n'), 5);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("."), {}), 1);  // no store is left
}

TEST(Program, SelfTestTellsEachWorkerAndAVerdict) {
  const C_Outcome ran = Orsanta("selftest");
  EXPECT_EQ(ran.status, 0) << ran.output;
  EXPECT_THAT(ran.output, HasSubstr("PASS"));
  for (int id = 1; id <= 10; ++id) EXPECT_THAT(ran.output, HasSubstr("ID:" + std::to_string(id) + "的驱动器测试"));
}

TEST(Program, AWrongArgumentGetsOneLineThatSaysWhatIsAllowed) {
  struct C_Case {
    const char* arguments;
    const char* told;
  };
  for (const C_Case& item :
       {C_Case{"", "measure"}, C_Case{"weigh", "measure"}, C_Case{"measure --stations 15", "1 to 14"},
        C_Case{"measure --stations 0", "1 to 14"}, C_Case{"measure --stations two", "1 to 14"},
        C_Case{"measure --parts 1.5", "whole number"}, C_Case{"measure --force nan", "1 to 1000"},
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
