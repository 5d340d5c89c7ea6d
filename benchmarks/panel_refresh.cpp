// What the panel costs while nobody touches it: the refresh of its displays, their drawing on a real (virtual) display,
// and a chart of 50,000 points. Targets: fourteen displays under 2 % of one core; a million refreshes leave the memory
// where it was. Drawing needs Xvfb; without it those parts are skipped.
#include <benchmark/benchmark.h>
#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <thread>

#include "common/resources.h"
#include "host/motor_base.h"
#include "simulator/simulator.h"
#include "station/voice_motor.h"
#include "support/dialog/front.h"
#include "support/system/wide_string.h"
#include "tests/desktop/virtual_display.h"
#include "ui/panel.h"

namespace orsanta {
namespace {

constexpr int Stations = 14;
constexpr int Refresh_Ms = 100;
constexpr int Status_Id = 11;
constexpr int Id_Span = 50;

// Answers everything at once, so that a panel can be constructed without a person.
class C_Absent_Person : public C_Front {
 public:
  int Open_Dialog(const C_Dialog_Model&, C_Dialog_Listener& listener) override {
    listener.On_Dialog_Event(C_Dialog_Event());
    return 1;
  }
  void Close_Dialog(int) override {}
  void Set_Control_Text(int, int, const std::wstring&) override {}
  void Refuse_Entry(int, int, const std::wstring&) override {}
  void Set_Command(int, int, C_Command_State) override {}
  void Refuse_Press(int, int, const std::wstring&) override {}
  void Post_Message(const C_Message_Model&, C_Message_Listener& listener) override { listener.On_Answer(1); }
  void Draw_Chart(unsigned, const C_Chart_Model&) override {}
  bool Is_Chart_Open(unsigned) override { return false; }
  void Close_Chart(unsigned) override {}
  void Raise_Chart(unsigned) override {}
  void Show_Stations(const std::vector<C_Station_Tile>&) override {}
};

long Resident_Kb() {
  long pages = 0, resident = 0;
  FILE* file = std::fopen("/proc/self/statm", "r");
  if (file == nullptr || std::fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
  if (file != nullptr) std::fclose(file);
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

double Cpu_Seconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// A closed panel whose refresh can still be called.
struct C_System {
  C_System() {
    std::filesystem::current_path(std::filesystem::temp_directory_path());
    Replace_Front(std::make_unique<C_Absent_Person>());
    simulator::Reset();
    base = std::make_unique<C_VoiceMotorBase>(Numbered_Resources(Stations), 0, 115200, 0, 0);
    panel = std::make_unique<C_ORS_Dlg>(base.get());
  }
  ~C_System() {
    panel.reset();
    base.reset();
    Replace_Front(nullptr);
  }
  std::unique_ptr<C_VoiceMotorBase> base;
  std::unique_ptr<C_ORS_Dlg> panel;
};

// One refresh of one display; every tenth finds a new result.
void Refresh_Of_One_Display(benchmark::State& state) {
  C_System system;
  std::wstring text;
  int i = 0;
  const auto refresh = [&] {
    C_VoiceMotor& station = *system.base->StationList[i % Stations];
    if (i % 10 == 0) {
      station.Test_Ans = 2.0 + 1e-4 * (i % 1000);
      station.Ans_Valid = 1;
      station.Set_Test_Finish();
    }
    system.panel->OnCtrlDynamicDisp((i % Stations) * Id_Span + Status_Id, text, 0);
    ++i;
  };
  for (int warm = 0; warm < 10000; ++warm) refresh();
  system.base->LoopPaused = 1;  // only what the refresh itself takes is of interest
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const long before_kb = Resident_Kb();
  for (auto _ : state) refresh();
  state.counters["growth_kB"] = static_cast<double>(Resident_Kb() - before_kb);
}
BENCHMARK(Refresh_Of_One_Display)->Iterations(1000000);

class C_No_Events : public C_Dialog_Listener {
 public:
  void On_Dialog_Event(const C_Dialog_Event&) override {}
};

bool Has_Display() {
  static const bool is_there = C_Virtual_Display::Start();
  return is_there;
}

// All fourteen displays, and the stations at a glance above them, change at every refresh, which is more than measuring
// stations do.
void Drawing_Of_Fourteen_Displays(benchmark::State& state) {
  if (!Has_Display()) {
    state.SkipWithError("no Xvfb");
    return;
  }
  C_Dialog_Model model;
  model.title = L"Orsanta";
  model.shows_stations = true;
  std::vector<C_Station_Tile> tiles(Stations);
  for (int i = 0; i < Stations; ++i) {
    model.stations[i] = tiles[static_cast<size_t>(i)].station = i + 1;
    C_Control_Model display;
    display.kind = C_Control_Kind::Dynamic_Display;
    display.column = i;
    display.rows = 2;
    display.text_scale = 1.5F;
    model.controls.push_back(display);
  }
  C_No_Events listener;
  const int dialog = Front().Open_Dialog(model, listener);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const double cpu_before = Cpu_Seconds();
  const auto start = std::chrono::steady_clock::now();
  int number = 0;
  for (auto _ : state) {
    for (int i = 0; i < Stations; ++i) {
      C_Station_Tile& tile = tiles[static_cast<size_t>(i)];
      tile.thickness = Format_Text("%3.4f", 2.0 + 1e-4 * (number + i)).Text();
      Front().Set_Control_Text(dialog, i, tile.thickness + L"  mm\r\n1");
    }
    Front().Show_Stations(tiles);
    ++number;
    std::this_thread::sleep_for(std::chrono::milliseconds(Refresh_Ms));
  }
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  state.counters["percent_of_core"] = 100.0 * (Cpu_Seconds() - cpu_before) / wall.count();
  Front().Close_Dialog(dialog);
}
BENCHMARK(Drawing_Of_Fourteen_Displays)->Iterations(100)->Unit(benchmark::kMillisecond);

void Chart_Of_50000_Points(benchmark::State& state) {
  if (!Has_Display()) {
    state.SkipWithError("no Xvfb");
    return;
  }
  C_Chart_Model model;
  model.title = L"Orsanta";
  for (int i = 0; i < 50000; ++i) {
    model.x.push_back(i);
    model.y.push_back(2.0 + 1e-3 * std::sin(0.01 * i) + 1e-4 * ((i * 7919) % 13));
  }
  Front().Draw_Chart(1, model);
  std::this_thread::sleep_for(std::chrono::seconds(1));
  const double cpu_before = Cpu_Seconds();
  for (auto _ : state) {
    model.y[100] += 1e-5;
    Front().Draw_Chart(1, model);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
  }
  state.counters["cpu_ms_of_one_drawing"] =
      1000.0 * (Cpu_Seconds() - cpu_before) / static_cast<double>(state.iterations());
  Front().Close_Chart(1);
}
BENCHMARK(Chart_Of_50000_Points)->Iterations(20)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orsanta

BENCHMARK_MAIN();
