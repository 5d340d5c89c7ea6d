// A campaign: whole systems under random hosts, operators and faults, many seeds, each some lives long. A seed replays
// its run exactly. Ends with status 1 when something was found that must not be.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstring>
#include <iostream>
#include <new>
#include <random>
#include <thread>
#include <vector>

#include "campaign/faulty_disk.h"
#include "campaign/life.h"
#include "common/temp_folder.h"
#include "support/store/store_access.h"
#include "support/system/wide_string.h"

namespace orsanta::campaign {

namespace {

constexpr int Lives = 5;                  // of a seed
constexpr unsigned Longest_Life_S = 900;  // of real time

C_Record& Shared_Record() {
  void* const memory = mmap(nullptr, sizeof(C_Record), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return *new (memory) C_Record;
}

// Runs a function in a child that writes to the file run.log. Returns its wait status.
template <class Function>
int Child(Function function) {
  const pid_t child = fork();
  if (child == 0) {
    const int log = open("run.log", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    close(log);
    alarm(Longest_Life_S);
    function();
    _exit(0);
  }
  int status = -1;
  waitpid(child, &status, 0);
  return status;
}

std::string Last_Lines(const std::string& text, size_t bytes = 3000) {
  return text.substr(text.size() > bytes ? text.size() - bytes : 0);
}

// The set force that a store holds; NaN where it holds none.
double Stored_Force(const C_Store_Content& content) {
  for (const C_Store_Entry& entry : content.entries) {
    double force = 0.0;
    if (entry.key != "Val_Force_Set[0]" || entry.bytes.size() != sizeof force) continue;
    std::memcpy(&force, entry.bytes.data(), sizeof force);
    return force;
  }
  return __builtin_nan("");
}

// A store is whole and holds a state that was given to a save, none older than the last one that had surely reached the
// disk. What the next life takes up is that state alone.
void Check_Store(int station, C_Record& record) {
  C_Saves& saves = record.saves[station];
  if (saves.count == 0) return;
  const C_Store_Reading reading = Read_Store(Format_Utf8("音圈电机%d参数", station));
  const double lost_from = record.power_cut ? record.life_end_ms - C_Faulty_Disk::Longest_Unflushed_Ms : 1e300;
  const auto is_sure = [&](const C_Saved_State& state) {
    return state.returned_ms >= 0.0 && !state.failed && state.returned_ms < lost_from;
  };
  const double force = Stored_Force(reading.content);
  int place = saves.count - 1;
  while (place > 0 && saves.states[place].force != force && !is_sure(saves.states[place])) --place;
  C_Saved_State found = saves.states[place];
  if (reading.report.state == C_Store_State::Missing && !is_sure(found)) {
    saves.count = 0;
  } else if (reading.report.state != C_Store_State::Whole) {
    record.Find(Format_Utf8("station %d: its store is not whole", station));
  } else if (found.force != force && (is_sure(found) || saves.count == C_Saves::Limit)) {
    record.Find(
        Format_Utf8("station %d: its store has lost what a save was told: %g g for %g g", station, force, found.force));
  } else {
    found.referenced = found.referenced && found.force == force && is_sure(found);
    found.returned_ms = 0.0;
    found.force = force;
    saves.states[0] = found;
    saves.count = 1;
  }
}

void Run_Seed(uint64_t seed, int stations, int cycles, C_Record& record) {
  const C_Temp_Folder folder;
  std::mt19937_64 random(seed);
  C_Life_Plan plan;
  plan.stations = stations > 0 ? stations : std::uniform_int_distribution(1, Most_Stations)(random);
  plan.cycles = std::max(cycles / Lives, 1);
  for (C_Saves& saves : record.saves) saves.count = 0;
  for (int life = 0; life < Lives && record.findings[0] == 0; ++life) {
    plan.seed = random();
    const double pauses[] = {0.0, 20000.0, 5000.0, 1000.0};
    plan.fault_pause_ms = pauses[random() % 4] / plan.stations;
    const int status = Child([&] { Live(plan, record); });
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) record.Find(Format_Utf8("ended with wait status %d", status));
    for (int n = 1; n <= plan.stations; ++n) Check_Store(n, record);
    if (record.findings[0] != 0)
      std::cout << Format_Utf8("seed %llu, life %d, %d stations: %s%s\n", static_cast<unsigned long long>(seed), life,
                               plan.stations, record.findings, Last_Lines(File_Text("run.log")).c_str())
                << std::flush;
  }
  std::memset(record.findings, 0, sizeof record.findings);
}

void Add(C_Record& sum, const C_Record& one) {
  sum.cycles += one.cycles;
  for (int o = 0; o < Outcome_Count; ++o) {
    sum.clean[o] += one.clean[o];
    for (int f = 0; f < Fault_Count; ++f) sum.under_fault[f][o] += one.under_fault[f][o];
  }
  sum.worst_clean_um = std::max(sum.worst_clean_um, one.worst_clean_um);
  sum.longest_stop_ms = std::max(sum.longest_stop_ms, one.longest_stop_ms);
  sum.simulated_ms += one.simulated_ms;
  sum.starts += one.starts;
  sum.stops += one.stops;
  sum.kills += one.kills;
  sum.saves_made += one.saves_made;
  sum.presses += one.presses;
  sum.finding_count += one.finding_count;
}

void Print(const C_Record& sum) {
  const auto row = [](const char* name, const long(&counts)[Outcome_Count]) {
    std::cout << Format_Utf8("%-26s", name);
    for (const long count : counts) std::cout << Format_Utf8("%16ld", count);
    std::cout << '\n';
  };
  std::cout << Format_Utf8("%-26s", "cycles");
  for (const char* name : Outcome_Names) std::cout << Format_Utf8("%16s", name);
  std::cout << '\n';
  row("without a fault", sum.clean);
  for (int f = 0; f < Fault_Count; ++f) row(Fault_Names[f], sum.under_fault[f]);
  std::cout << Format_Utf8(
      "%ld cycles in %.1f simulated hours, worst error without a fault %.2f um\n"
      "%ld starts, %ld stops (longest %.0f ms), %ld kills and power cuts, %ld saves, %ld presses on the panel\n"
      "%d findings\n",
      sum.cycles, sum.simulated_ms / 3.6e6, sum.worst_clean_um, sum.starts, sum.stops, sum.longest_stop_ms, sum.kills,
      sum.saves_made, sum.presses, sum.finding_count);
}

}  // namespace

int Main(int count, char** arguments) {
  CLI::App app("Whole systems under random hosts, operators and faults.");
  uint64_t seed = 1, seeds = 10;
  int cycles = 1000, stations = 0;
  unsigned jobs = std::thread::hardware_concurrency();
  app.add_option("--seed", seed, "The first seed");
  app.add_option("--seeds", seeds, "How many seeds");
  app.add_option("--cycles", cycles, "About so many cycles a seed");
  app.add_option("--stations", stations, "Stations; 0 for a number from 1 to 14 by the seed")->check(CLI::Range(0, 14));
  app.add_option("--jobs", jobs, "Seeds that run side by side")->check(CLI::Range(1U, 64U));
  CLI11_PARSE(app, count, arguments);

  std::vector<std::pair<pid_t, C_Record*>> workers;
  for (unsigned job = 0; job < jobs; ++job) {
    C_Record& record = Shared_Record();
    const pid_t worker = fork();
    if (worker == 0) {
      for (uint64_t s = seed + job; s < seed + seeds; s += jobs) Run_Seed(s, stations, cycles, record);
      return 0;
    }
    workers.emplace_back(worker, &record);
  }
  C_Record sum;
  bool all_ended = true;
  for (const auto& [worker, record] : workers) {
    int status = -1;
    waitpid(worker, &status, 0);
    all_ended = all_ended && status == 0;
    Add(sum, *record);
  }
  Print(sum);
  return all_ended && sum.finding_count == 0 ? 0 : 1;
}

}  // namespace orsanta::campaign

int main(int count, char** arguments) {
  return orsanta::campaign::Main(count, arguments);
}
