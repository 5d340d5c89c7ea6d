// The built library as a host loads it.
#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "orsanta/orsanta.h"
#include "program/real_time.h"
#include "simulator/simulator.h"

namespace orsanta {
namespace {

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

constexpr int Boards[] = {20, 21};  // of the stations 1 and 2

template <class Function>
Function* Find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

// One cycle of each station. Returns the temperatures that they recorded.
std::vector<double> Work(void* library) {
  const VCM_Resource_struct records[] = {{1, 1, 1, 2, 3, 1}, {2, 2, 2, 4, 5, 1}};
  Find<decltype(ORSA_resource_alloc)>(library, "ORSA_resource_alloc")(records, 2);
  Find<decltype(Orsanta_dll_init)>(library, "Orsanta_dll_init")(0);
  for (const int station : {1, 2}) Find<decltype(do_test)>(library, "do_test")(station, ORSANTA_TASK_MEASURE);
  auto* const recorded = Find<int(int, double*, int)>(library, "Recorded_Temperatures");
  std::vector<double> temperatures(2);
  for (const int station : {1, 2})
    for (int n = 0; recorded(station, &temperatures[station - 1U], 1) < 1 && n < 2000; ++n) usleep(10000);
  Find<decltype(Orsanta_dll_uninit)>(library, "Orsanta_dll_uninit")();
  return temperatures;
}

// A host that loads the library, works, stops and unloads it, and does it all again in the same process.
TEST_F(Real_Time, Every_Load_Of_The_Library_Reads_The_Boards_And_Leaves_No_Thread) {
  const C_Temp_Folder folder;
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  simulator::Settings settings;
  settings.drives = 2;
  settings.temperature_boards = {Boards[0], Boards[1]};
  simulator::Reset(settings);
  // No question at the first start: a thread that once ran a dialog holds the library until it ends.
  std::ofstream("全局电机参数") << "orsanta store 1\nC_InitDlg Num 0 = int 2\nend\n";
  for (const int station : {1, 2}) {
    simulator::Place_Part(station, 4.0);
    std::ofstream("音圈电机" + std::to_string(station) + "参数")
        << "orsanta store 1\nC_VoiceMotor Val_TempSensorCanID 0 = double " << Boards[station - 1] << "\nend\n";
  }
  const auto threads = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
  const auto threads_before = threads();
  for (const double celsius : {31.5, 18.0}) {
    for (const int board : Boards) simulator::Set_Temperature(board, celsius + board);
    void* const library = dlopen(LIBRARY_WITH_INSIDES, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto near = [celsius](int board) { return testing::DoubleNear(celsius + board, 0.1); };
    EXPECT_THAT(Work(library), testing::ElementsAre(near(Boards[0]), near(Boards[1])));
    EXPECT_EQ(threads(), threads_before);
    dlclose(library);
    EXPECT_EQ(dlopen(LIBRARY_WITH_INSIDES, RTLD_NOW | RTLD_NOLOAD), nullptr) << "is still loaded";
  }
}

}  // namespace
}  // namespace orsanta
