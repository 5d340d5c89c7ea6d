// orsanta measure: measures parts of known thickness on the bench and tells how well the gauge did.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <numeric>
#include <random>
#include <thread>
#include <vector>

#include "bench/bench.h"
#include "bench_room.h"
#include "commands.h"
#include "orsanta/orsanta.h"
#include "working_folder.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double Block_Mm = 5.0;             // the reference block
constexpr double Thinnest_Mm = 1.0;          // parts are from here
constexpr double Thickest_Mm = 6.0;          // to here
constexpr double No_Measurement_Um = 100.0;  // an error beyond this is no measurement: a result in-band of a failure
constexpr int Task_Limit_Ms = 60000;         // longest wait for a task

std::atomic<bool> theInterrupted{false};

struct C_Part {
  double true_mm = 0.0;
  double measured_mm = 0.0;
  double cycle_ms = 0.0;  // from do_test to the get_ans that has it
  bool measured = false;

  double Error_Um() const { return (measured_mm - true_mm) * 1000.0; }
  bool Failed() const { return !measured || std::abs(Error_Um()) > No_Measurement_Um; }
};

struct C_Run {
  int stations = 2;
  int parts = 10;
  double force = 100.0;
  std::string csv;
  uint64_t seed = 1;

  std::vector<std::vector<C_Part>> results;  // by station
  std::atomic<int> done{0};                  // parts measured so far, all stations
};

bool Poll(const std::function<bool()>& condition) {
  const auto limit = Clock::now() + std::chrono::milliseconds(Task_Limit_Ms);
  while (!condition()) {
    if (Clock::now() > limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

void Start_System(const C_Run& run) {
  // This command talks on the terminal: no window, even where there is a display.
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  Set_Up_Room(run.stations, run.seed);
  Orsanta_dll_init(0);
}

bool Lift(int station) {
  return do_test(station, ORSANTA_TASK_FORCE_BACK) == 1 && Poll([=] { return Get_Force_Back_Finish(station) == 1; });
}

void Correct_Reference(const C_Run& run, int station) {
  bench::Place_Part(station, Block_Mm);
  Set_Force(station, run.force);
  Set_Ans_Offset(station, Block_Mm);
  Check_User_Zero(station);
}

void Measure_Part(int station, C_Part& part) {
  bench::Place_Part(station, part.true_mm);
  const auto start = Clock::now();
  double force = 0.0;
  part.measured = do_test(station, ORSANTA_TASK_MEASURE) == 1 &&
                  Poll([&] { return get_ans(station, &part.measured_mm, &force) == 1; });
  part.cycle_ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  if (!Lift(station)) part.measured = false;
}

void Work_Station(C_Run& run, int station) {
  Correct_Reference(run, station);
  for (C_Part& part : run.results[static_cast<size_t>(station - 1)]) {
    if (theInterrupted) return;
    Measure_Part(station, part);
    ++run.done;
  }
}

void Choose_Parts(C_Run& run) {
  std::mt19937_64 random(run.seed);
  std::uniform_real_distribution<double> thickness(Thinnest_Mm, Thickest_Mm);
  run.results.assign(static_cast<size_t>(run.stations), std::vector<C_Part>(static_cast<size_t>(run.parts)));
  for (auto& parts : run.results) {
    for (C_Part& part : parts) part.true_mm = thickness(random);
  }
}

void Show_Progress(const C_Run& run) {
  constexpr int Width = 40;
  const int total = run.stations * run.parts;
  const int filled = Width * run.done / total;
  std::fprintf(stderr, "\r[%s%s] %d of %d parts", std::string(static_cast<size_t>(filled), '#').c_str(),
               std::string(static_cast<size_t>(Width - filled), '.').c_str(), run.done.load(), total);
}

void Measure_All(C_Run& run) {
  std::atomic<int> working{run.stations};
  std::vector<std::thread> threads;
  for (int n = 1; n <= run.stations; ++n) {
    threads.emplace_back([&run, &working, n] {
      Work_Station(run, n);
      --working;
    });
  }
  if (isatty(STDERR_FILENO) != 0) {
    while (working > 0) {
      Show_Progress(run);
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    Show_Progress(run);
    std::fputc('\n', stderr);
  }
  for (std::thread& thread : threads) thread.join();
}

struct C_Summary {
  int parts = 0;
  int failures = 0;
  double mean_um = 0.0;
  double deviation_um = 0.0;
  double largest_um = 0.0;
  double median_cycle_ms = 0.0;
};

C_Summary Summarise(const std::vector<C_Part>& parts) {
  C_Summary summary;
  std::vector<double> errors, cycles;
  for (const C_Part& part : parts) {
    if (part.Failed()) continue;
    errors.push_back(part.Error_Um());
    cycles.push_back(part.cycle_ms);
    summary.largest_um = std::max(summary.largest_um, std::abs(part.Error_Um()));
  }
  summary.parts = static_cast<int>(parts.size());
  summary.failures = summary.parts - static_cast<int>(errors.size());
  if (errors.empty()) return summary;
  const auto count = static_cast<double>(errors.size());
  summary.mean_um = std::accumulate(errors.begin(), errors.end(), 0.0) / count;
  double squares = 0.0;
  for (const double error : errors) squares += (error - summary.mean_um) * (error - summary.mean_um);
  if (errors.size() > 1) summary.deviation_um = std::sqrt(squares / (count - 1.0));
  const auto middle = cycles.begin() + static_cast<std::ptrdiff_t>(cycles.size() / 2);
  std::nth_element(cycles.begin(), middle, cycles.end());
  summary.median_cycle_ms = *middle;
  return summary;
}

void Print_Row(const std::string& name, const C_Summary& s) {
  std::printf("%-8s %6d %14.3f %13.3f %16.3f %16.1f %9d\n", name.c_str(), s.parts, s.mean_um, s.deviation_um,
              s.largest_um, s.median_cycle_ms, s.failures);
}

int Print_Results(const C_Run& run) {
  std::printf("%-8s %6s %14s %13s %16s %16s %9s\n", "station", "parts", "mean error um", "std dev um",
              "largest error um", "median cycle ms", "failures");
  std::vector<C_Part> all;
  for (size_t i = 0; i < run.results.size(); ++i) {
    Print_Row(std::to_string(i + 1), Summarise(run.results[i]));
    all.insert(all.end(), run.results[i].begin(), run.results[i].end());
  }
  const C_Summary total = Summarise(all);
  Print_Row("total", total);
  if (theInterrupted) {
    std::printf("INTERRUPTED: %d of %d parts were not measured\n", total.failures, total.parts);
  } else if (total.failures > 0) {
    std::printf("FAIL: %d of %d parts gave no thickness; the messages above say why\n", total.failures, total.parts);
  } else {
    std::printf("PASS: %d parts measured at %g g, largest error %.3f um, no failure\n", total.parts, run.force,
                total.largest_um);
  }
  return total.failures > 0 ? Failed : Done;
}

void Write_Csv(const C_Run& run, std::ofstream& file) {
  file << "station,part,true_mm,measured_mm,error_um,cycle_ms,failed\n";
  char line[160];
  for (size_t i = 0; i < run.results.size(); ++i) {
    for (size_t k = 0; k < run.results[i].size(); ++k) {
      const C_Part& part = run.results[i][k];
      std::snprintf(line, sizeof line, "%zu,%zu,%.6f,%.6f,%.3f,%.3f,%d\n", i + 1, k + 1, part.true_mm, part.measured_mm,
                    part.Error_Um(), part.cycle_ms, part.Failed() ? 1 : 0);
      file << line;
    }
  }
}

int Run_Measure(C_Run& run) {
  std::ofstream csv;
  if (!run.csv.empty()) {
    csv.open(run.csv, std::ios::trunc);
    if (!csv) {
      std::fprintf(stderr, "orsanta: --csv cannot write \"%s\"; give a file in a folder that you may write to\n",
                   run.csv.c_str());
      return Wrong_Argument;
    }
  }
  std::signal(SIGINT, [](int) { theInterrupted = true; });
  Choose_Parts(run);
  {
    const C_Working_Folder folder;
    Start_System(run);
    Measure_All(run);
    Orsanta_dll_uninit();
  }
  const int status = Print_Results(run);
  if (!run.csv.empty()) {
    Write_Csv(run, csv);
    csv.close();
    if (!csv) {
      std::fprintf(stderr, "orsanta: the file \"%s\" could not be written whole; is the disk full?\n", run.csv.c_str());
      return Failed;
    }
  }
  return status;
}

}  // namespace

void Add_Measure(CLI::App& program, int& exit_status) {
  auto run = std::make_shared<C_Run>();
  CLI::App* command = program.add_subcommand(
      "measure",
      "Measures parts of known thickness on the bench, on all stations at once, and prints the errors.\n"
      "Example: orsanta measure --stations 4 --parts 50 --force 100 --csv parts.csv");
  command->add_option("--stations", run->stations, "how many stations")
      ->check(Whole_Number(1, Max_Stations))
      ->capture_default_str();
  command->add_option("--parts", run->parts, "parts for each station")
      ->check(Whole_Number(1, 100000))
      ->capture_default_str();
  command->add_option("--force", run->force, "set force in grams")->check(Number(1.0, 1000.0))->capture_default_str();
  command->add_option("--csv", run->csv, "file for one line with each part");
  command->add_option("--seed", run->seed, "seed of the parts and of the bench's noise")
      ->check(Whole_Number(0, 1000000000))
      ->capture_default_str();
  command->callback([run, &exit_status] { exit_status = Run_Measure(*run); });
}

}  // namespace app
