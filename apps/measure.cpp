// orsanta measure: measures parts of known thickness on the simulator and tells how well the gauge did.
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <numeric>
#include <random>
#include <vector>

#include "commands.h"
#include "force_calibration.h"
#include "orsanta/orsanta.h"
#include "simulator_loaded.h"
#include "simulator_room.h"
#include "station_work.h"
#include "working_folder.h"

namespace app {
namespace {

using Clock = std::chrono::steady_clock;

constexpr double Block_Mm = 5.0;             // the reference block
constexpr double Thinnest_Mm = 1.0;          // parts are from here
constexpr double Thickest_Mm = 6.0;          // to here
constexpr double No_Measurement_Um = 100.0;  // an error beyond this is no measurement: a result in-band of a failure

std::atomic<bool> theInterrupted{false};

struct C_Part {
  double true_mm = 0.0;
  double measured_mm = 0.0;
  double true_force = 0.0;  // on the part, g
  double cycle_ms = 0.0;    // from do_test to the get_ans that has it
  bool tried = false;       // false when the run was interrupted before it
  bool measured = false;

  double Error_Um() const { return (measured_mm - true_mm) * 1000.0; }
  bool Good() const { return measured && std::abs(Error_Um()) <= No_Measurement_Um; }
  bool Failed() const { return tried && !Good(); }
};

struct C_Run {
  int stations = 2;
  int parts = 10;
  double force = 100.0;
  std::string csv;
  uint64_t seed = 1;

  std::vector<std::vector<C_Part>> results;  // by station
  std::atomic<int> done{0};                  // parts tried so far, all stations
};

void Correct_Reference(const C_Run& run, int station) {
  simulator::Place_Part(station, Block_Mm);
  Set_Force(station, run.force);
  Set_Ans_Offset(station, Block_Mm);
  Check_User_Zero(station);
}

// A landing presses with the current for the height of the landing before. Parts of one kind are of one height; these
// here are not, so that the first landing finds the height and the second one measures.
void Measure_Part(int station, C_Part& part) {
  part.tried = true;
  simulator::Place_Part(station, part.true_mm);
  if (!Measure(station, part.measured_mm) || !Lift(station)) return;
  const auto start = Clock::now();
  part.measured = Measure(station, part.measured_mm);
  part.cycle_ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
  part.true_force = simulator::True_Force(station);
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
  const auto work = [&run](int station) { Work_Station(run, station); };
  if (isatty(STDERR_FILENO) == 0) return On_All_Stations(run.stations, work);
  On_All_Stations(run.stations, work, [&run] { Show_Progress(run); });
  Show_Progress(run);
  std::fputc('\n', stderr);
}

// False when the stations could not be calibrated, or the run was interrupted first.
bool Run_System(C_Run& run) {
  // This command talks on the terminal: no window, even where there is a display.
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  const C_Working_Folder folder;
  const auto prepare = [&run] { Set_Up_Room(run.stations, run.seed); };
  if (!Calibrate_Forces(run.stations, prepare, [] { return theInterrupted.load(); })) return false;
  prepare();
  Orsanta_dll_init(0);
  Measure_All(run);
  Orsanta_dll_uninit();
  return true;
}

// Of a list of errors.
struct C_Errors {
  double mean = 0.0;
  double deviation = 0.0;
  double largest = 0.0;  // without its sign

  explicit C_Errors(const std::vector<double>& errors) {
    if (errors.empty()) return;
    const auto count = static_cast<double>(errors.size());
    mean = std::accumulate(errors.begin(), errors.end(), 0.0) / count;
    double squares = 0.0;
    for (const double error : errors) {
      squares += (error - mean) * (error - mean);
      largest = std::max(largest, std::abs(error));
    }
    if (errors.size() > 1) deviation = std::sqrt(squares / (count - 1.0));
  }
};

double Median(std::vector<double> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

struct C_Summary {
  int parts = 0;
  int failures = 0;
  int not_tried = 0;
  C_Errors error_um;
  C_Errors force_percent;  // true force against the set one
  double median_cycle_ms = 0.0;
};

C_Summary Summarise(const std::vector<C_Part>& parts, double set_force) {
  std::vector<double> errors, force_errors, cycles;
  int failures = 0, not_tried = 0;
  for (const C_Part& part : parts) {
    failures += part.Failed() ? 1 : 0;
    not_tried += part.tried ? 0 : 1;
    if (!part.Good()) continue;
    errors.push_back(part.Error_Um());
    force_errors.push_back((part.true_force / set_force - 1.0) * 100.0);
    cycles.push_back(part.cycle_ms);
  }
  return {static_cast<int>(parts.size()), failures,      not_tried, C_Errors(errors),
          C_Errors(force_errors),         Median(cycles)};
}

void Print_Row(const std::string& name, const C_Summary& s) {
  std::printf("%-8s %6d %7d %9d %11.3f %8.3f %11.3f %11.2f %11.2f %9.1f\n", name.c_str(), s.parts, s.failures,
              s.not_tried, s.error_um.mean, s.error_um.deviation, s.error_um.largest, s.force_percent.mean,
              s.force_percent.largest, s.median_cycle_ms);
}

int Print_Results(const C_Run& run) {
  std::printf("%-8s %6s %7s %9s %11s %8s %11s %11s %11s %9s\n", "", "", "", "", "mean error", "std dev", "largest",
              "mean force", "largest", "median");
  std::printf("%-8s %6s %7s %9s %11s %8s %11s %11s %11s %9s\n", "station", "parts", "failed", "not tried", "um", "um",
              "error um", "error %", "error %", "cycle ms");
  std::vector<C_Part> all;
  for (size_t i = 0; i < run.results.size(); ++i) {
    Print_Row(std::to_string(i + 1), Summarise(run.results[i], run.force));
    all.insert(all.end(), run.results[i].begin(), run.results[i].end());
  }
  const C_Summary total = Summarise(all, run.force);
  Print_Row("total", total);
  if (total.not_tried > 0) {
    std::printf("INTERRUPTED: %d of %d parts were not tried, %d failed\n", total.not_tried, total.parts,
                total.failures);
  } else if (total.failures > 0) {
    std::printf("FAIL: %d of %d parts gave no thickness; the messages above say why\n", total.failures, total.parts);
  } else {
    std::printf("PASS: %d parts measured at %g g, largest error %.3f um, true force within %.2f %%, no failure\n",
                total.parts, run.force, total.error_um.largest, total.force_percent.largest);
  }
  return total.not_tried + total.failures > 0 ? Failed : Done;
}

// A part that was not tried has empty places.
void Write_Csv(const C_Run& run, std::ofstream& file) {
  file << "station,part,true_mm,measured_mm,error_um,true_force_g,cycle_ms,tried,failed\n";
  char line[160];
  for (size_t i = 0; i < run.results.size(); ++i) {
    for (size_t k = 0; k < run.results[i].size(); ++k) {
      const C_Part& part = run.results[i][k];
      const int used = std::snprintf(line, sizeof line, "%zu,%zu,%.6f,", i + 1, k + 1, part.true_mm);
      if (part.tried) {
        std::snprintf(line + used, sizeof line - static_cast<size_t>(used), "%.6f,%.3f,%.2f,%.3f,1,%d\n",
                      part.measured_mm, part.Error_Um(), part.true_force, part.cycle_ms, part.Failed() ? 1 : 0);
      } else {
        std::snprintf(line + used, sizeof line - static_cast<size_t>(used), ",,,,0,0\n");
      }
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
  if (!Run_System(run) && !theInterrupted) return Failed;
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
      "Calibrates the force, then measures parts of known thickness on the simulator, on all stations at once, and "
      "prints\n"
      "the errors of thickness and force. Each part is landed on twice: the force is set for the height of the "
      "landing\n"
      "before, so that the first landing finds the height and the second one measures.\n"
      "Example: orsanta measure --stations 4 --parts 50 --force 100 --csv parts.csv");
  command->add_option("--stations", run->stations, "how many stations")
      ->check(Whole_Number(1, Max_Stations))
      ->capture_default_str();
  command->add_option("--parts", run->parts, "parts for each station")
      ->check(Whole_Number(1, 100000))
      ->capture_default_str();
  command->add_option("--force", run->force, "set force in grams")->check(Number(1.0, 1000.0))->capture_default_str();
  command->add_option("--csv", run->csv, "file for one line with each part");
  command->add_option("--seed", run->seed, "seed of the parts and of the simulator's noise")
      ->check(Whole_Number(0, 1000000000))
      ->capture_default_str();
  command->callback([run, &exit_status] { exit_status = Need_Simulator("measure") ? Run_Measure(*run) : Failed; });
}

}  // namespace app
