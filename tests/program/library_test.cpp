// The built library as a host loads it.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "orsanta/orsanta.h"
#include "program/real_time.h"
#include "simulator/simulator.h"

namespace orsanta {
namespace {

template <class Function>
Function* Find(void* library, const char* name) {
  return reinterpret_cast<Function*>(dlsym(library, name));
}

// A host that loads the library, works, stops and unloads it, and does it all again in the same process.
TEST_F(Real_Time, Every_Load_Of_The_Library_Measures_And_Leaves_No_Thread) {
  const C_Temp_Folder folder;
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  simulator::Settings settings;
  settings.temperature_boards = {20};
  simulator::Reset(settings);
  simulator::Place_Part(1, 4.0);
  // No question at the first start: a thread that once ran a dialog holds the library until it ends.
  std::ofstream("全局电机参数") << "orsanta store 1\nC_InitDlg Num 0 = int 1\nend\n";
  std::ofstream("音圈电机1参数") << "orsanta store 1\nC_VoiceMotor Val_TempSensorCanID 0 = double 20\nend\n";
  const VCM_Resource_struct record = {1, 1, 1, 2, 3, 1};
  const auto threads = [] { return std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}); };
  const auto threads_before = threads();
  for (int load = 0; load < 2; ++load) {
    void* const library = dlopen(BUILT_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    Find<decltype(ORSA_resource_alloc)>(library, "ORSA_resource_alloc")(&record, 1);
    Find<decltype(Orsanta_dll_init)>(library, "Orsanta_dll_init")(0);
    Find<decltype(do_test)>(library, "do_test")(1, ORSANTA_TASK_MEASURE);
    auto* const answer = Find<decltype(get_ans)>(library, "get_ans");
    double thickness = 0.0, force = 0.0;
    for (int n = 0; answer(1, &thickness, &force) == 0 && n < 2000; ++n) usleep(10000);
    EXPECT_NEAR(thickness, -5.0, 0.001) << "on an anvil at 9 mm, against a reference at 0";
    Find<decltype(Orsanta_dll_uninit)>(library, "Orsanta_dll_uninit")();
    EXPECT_EQ(threads(), threads_before);
    dlclose(library);
    EXPECT_EQ(dlopen(BUILT_LIBRARY, RTLD_NOW | RTLD_NOLOAD), nullptr) << "is still loaded";
  }
}

}  // namespace
}  // namespace orsanta
