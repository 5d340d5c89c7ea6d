// A life: the system starts on the stores that the life before has left, every station is worked in its own way (by a
// host, by inputs of the IO card, by bytes of a serial line, from the panel), faults come and go, and it ends.
//
// Usage: campaign_life SEED STATIONS CYCLES FAULT_PAUSE_MS PACE_MS, in a folder of its own. About so many cycles, all
// stations together; a fault every so many ms, none for 0. With a pace it is a day in production: a station begins a
// cycle every so many ms, hosts only measure, nobody plays with the panel, and the life ends by a kill; else one cycle
// follows the other. Prints what it counts, "name<tab>value", and what it finds that must not be, "FOUND ..."; a log
// goes to the error stream.
//
// Exactly one thread runs at a time, under the simulated clock: so what is shared here needs no lock.
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <list>
#include <map>
#include <memory>
#include <random>

#include "campaign/faults.h"
#include "campaign/faulty_disk.h"
#include "campaign/random_operator.h"
#include "campaign/saves.h"
#include "common/pty.h"
#include "common/resources.h"
#include "orsanta/orsanta.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "station/debug_com.h"
#include "support/threads/thread.h"

namespace orsanta::campaign {

namespace {

constexpr double Block_Mm = 5.0;
constexpr double Right_Um = 1.0;
// A part that vibrates within the settling band holds still for the gauge: it takes the mean of some periods.
constexpr double Half_Settling_Band_Um = 2.5;
constexpr double Least_Part_Mm = 1.0;
constexpr double Greatest_Part_Mm = 6.0;
constexpr double Mean_Cycle_Ms = 900.0;
// The longest that a measuring task may take once no fault is in force: what waits before it, two landings whose waits
// all run out, and two lift-offs with their attempts.
constexpr double Longest_Wait_Ms = 90000.0;
// A stop works off what is queued: with a drive that has never answered a lift-off waits half a minute, and hosts ask
// again.
constexpr double Longest_Stop_Ms = 5.0 * Longest_Wait_Ms;
// What an operator leaves queued may run into the longest wait of a drive, of 200 s, several times.
constexpr double Longest_Stop_Of_Operator_Ms = 2000000.0;

enum class Role { Host, Card, Line, Panel };
constexpr const char* Role_Names[] = {"host", "IO card", "serial line", "panel"};

// How a measuring task ended.
enum class Outcome { Right, Not_Valid, Wrong_And_Told, Wrong_Silently };
constexpr const char* Outcome_Names[] = {"right", "not valid", "wrong, told", "wrong, silently"};

struct C_Plan {
  uint64_t seed;
  int stations;
  int cycles;
  double fault_pause_ms;
  double pace_ms;
};

// What a life leaves for the next one.
struct C_Memory {
  static constexpr int Most_Stations = 14;
  C_Saves saves[Most_Stations + 1];
  int played_with = 0;  // the station whose settings an operator has left, whatever they are; 0 for none

  void Read() {
    std::ifstream from("campaign.memory");
    from >> played_with;
    for (C_Saves& one : saves) one.Read(from);
  }
  void Write() const {
    std::ofstream to("campaign.memory");
    to << played_with << '\n';
    for (const C_Saves& one : saves) one.Write(to);
  }
};

class C_Life {
 public:
  explicit C_Life(const C_Plan& plan) : m_Plan(plan), m_Random(plan.seed), m_Clock(plan.seed) {
    m_Memory.Read();
    simulator::Settings room;
    room.seed = plan.seed;
    room.drives = plan.stations;
    const double paces[] = {0.0, 0.0, 0.05, 0.5};
    room.instruction_ms = paces[Draw(0, 3)];
    room.refused_connects = Draw(0, 9) == 0 ? Draw(1, 5) : 0;
    simulator::Reset(room);
    m_Io_Mode = Draw(0, 1);
    m_Lines.resize(static_cast<size_t>(plan.stations) + 1);
    m_Has_Panel = Draw(0, 3) == 0 && !Is_Production();
    for (int n = 1; n <= plan.stations; ++n) Choose_Role(n);

    auto disk = std::make_unique<C_Faulty_Disk>();
    m_Disk = disk.get();
    Replace_Disk(std::move(disk));
    auto front = std::make_unique<C_Random_Operator>(plan.seed, plan.stations - 1);
    m_Front = front.get();
    Replace_Front(std::move(front));
    std::vector<C_Pty*> lines;
    for (const auto& line : m_Lines) lines.push_back(line.get());
    m_Faults = std::make_unique<C_Faults>(plan.seed, plan.stations, *m_Disk, lines);
  }

  [[noreturn]] void Run() {
    const auto files = Open_Files();
    const double length = m_Plan.cycles * std::max(Mean_Cycle_Ms, m_Plan.pace_ms) / m_Plan.stations;
    m_End_Ms = Now_Ms() + length + 3000.0;
    if (Is_Production())
      Kill_After(static_cast<int>(length) - Draw(0, static_cast<int>(m_Plan.pace_ms)), End_By_Kill(Draw(0, 1) == 0));
    else if (Draw(0, 2) == 0)
      Plan_A_Kill(length);
    if (m_Plan.fault_pause_ms > 0.0)
      m_Fault_Thread.Start("faults", [this] { m_Faults->Run(m_End_Ms, m_Plan.fault_pause_ms); });
    Start();
    for (int n = 1; n <= m_Plan.stations; ++n)
      m_Workers.emplace_back().Start("worker " + std::to_string(n), [this, n] { Work(n); });
    int n = 0;
    for (C_Thread& worker : m_Workers) {
      ++n;
      if (!worker.Join(m_End_Ms - Now_Ms() + 10.0 * Longest_Wait_Ms))
        Find(n, Format_Utf8("its worker does not end (%s)", Role_Names[static_cast<int>(m_Roles[n])]));
    }
    m_Fault_Thread.Join();
    Stop();
    m_Workers.clear();
    for (auto& line : m_Lines) line.reset();
    m_Killer.Join();
    if (m_Clock.Threads() > 1) Find(0, Format_Utf8("%zu threads are left behind", m_Clock.Threads() - 1));
    if (Open_Files() > files) Find(0, Format_Utf8("%td files are left behind", Open_Files() - files));
    End();
  }

 private:
  // --- The system ---

  // The operator holds the loop at times, and with it what the inputs and lines of all stations ask for.
  void Choose_Role(int n) {
    const bool panel = m_Has_Panel && n == m_Plan.stations;
    Role role = panel ? Role::Panel : Role::Host;
    if (!m_Has_Panel && m_Io_Mode == 1 && n < 8 && Draw(0, 2) == 0) role = Role::Card;
    if (!m_Has_Panel && Draw(0, 9) == 0) role = Role::Line;
    m_Roles[n] = role;
    std::filesystem::remove(Format_Utf8("电机%d串口参数", n));
    if (panel || m_Memory.played_with == n) {
      std::filesystem::remove(Format_Utf8("音圈电机%d参数", n));
      m_Memory.saves[n].Clear();
      m_Memory.played_with = panel ? n : 0;
    }
    if (role != Role::Line) return;
    std::filesystem::remove("COM" + std::to_string(n));  // of a life that was killed
    m_Lines[static_cast<size_t>(n)] = std::make_unique<C_Pty>(n);
    C_VoiceDebugCom settings(n);
    settings.ValComNum = n;
    settings.Save();
  }
  void Start() {
    const auto records = Numbered_Resources(m_Plan.stations);
    for (int bit = 0; bit < 8; ++bit) simulator::Set_Input(bit, 1);
    ORSA_resource_alloc(records.begin(), records.GetSize());
    m_Start_Ms = Now_Ms();
    Orsanta_dll_init(m_Io_Mode);
    ++m_Counts["starts"];
    Sleep(1000);
  }
  void Stop() {
    const double from = Now_Ms();
    C_Thread stop;
    stop.Start("stop", [] { Orsanta_dll_uninit(); });
    if (!stop.Join(m_Has_Panel ? Longest_Stop_Of_Operator_Ms : Longest_Stop_Ms)) {
      Find(0, "the stop does not end");
      End();
    }
    ++m_Counts["stops"];
    m_Counts["longest stop, ms"] = Now_Ms() - from;
  }
  // At a time, or in the middle of a step on the disk.
  void Plan_A_Kill(double length) {
    const auto end = End_By_Kill(Draw(0, 1) == 0);
    if (Draw(0, 1) == 0) return m_Disk->End_In_Step(Draw(1, 60), end);
    Kill_After(Draw(1, static_cast<int>(length) + 3000), end);
  }
  std::function<void()> End_By_Kill(bool is_power_cut) {
    return [this, is_power_cut] {
      const double lost_from_ms = Now_Ms() - C_Faulty_Disk::Longest_Unflushed_Ms;
      if (is_power_cut) m_Disk->Cut_Power(Draw(static_cast<int>(lost_from_ms), static_cast<int>(Now_Ms())));
      ++m_Counts[is_power_cut ? "power cuts" : "kills"];
      End(is_power_cut ? lost_from_ms : Never_Ms);
    };
  }
  void Kill_After(int after_ms, const std::function<void()>& end) {
    m_Killer.Start("killer", [this, after_ms, end] {
      for (const double at = Now_Ms() + after_ms; Now_Ms() < at && !Has_Ended();) Sleep(10);
      if (!Has_Ended()) end();
    });
  }
  bool Is_Production() const { return m_Plan.pace_ms > 0.0; }
  bool Has_Ended() const { return Now_Ms() >= m_End_Ms; }
  // lost_from_ms: what was saved from then on may not have reached the disk.
  [[noreturn]] void End(double lost_from_ms = Never_Ms) {
    m_Counts["simulated hours"] = Now_Ms() / 3.6e6;
    for (const auto& [caption, times] : m_Front->Pressed()) m_Counts["presses on the panel"] += times;
    m_Disk->Set_Fault(Disk_Fault::None);
    for (int n = 1; n <= m_Plan.stations; ++n) {
      const std::string wrong = m_Memory.saves[n].Check_Store(n, lost_from_ms);
      if (!wrong.empty()) Find(n, wrong);
    }
    m_Memory.Write();
    for (const auto& [name, value] : m_Counts) std::cout << name << '\t' << value << '\n';
    std::cout.flush();
    _exit(0);
  }
  void Find(int station, const std::string& what) {
    const std::string line = Format_Utf8("FOUND at %.0f ms, station %d: %s", Now_Ms(), station, what.c_str());
    std::cout << line << std::endl;
    Log(station, line);
  }

  // --- Waiting ---

  // Waits for a condition. Time counts only while no fault is in force that can hold the station up, and a margin
  // after. Returns false when it ran out.
  bool Wait(int n, const std::function<bool()>& condition, double limit_ms = Longest_Wait_Ms, int poll_ms = 2) {
    double waited = 0.0;
    while (!condition()) {
      if (waited > limit_ms) return false;
      const double from = Now_Ms();
      Sleep(poll_ms);
      if (!m_Faults->Met_Any(n, Now_Ms() - 1.0)) waited += Now_Ms() - from;
    }
    return true;
  }
  bool Wait_Result(int n, double& thickness) {
    double force = 0.0;
    if (Wait(n, [&] { return get_ans(n, &thickness, &force) == 1; })) return true;
    Find(n, "no result of an accepted task");
    return false;
  }
  void Expect_No_Result(int n) {
    double thickness = 0.0, force = 0.0;
    if (get_ans(n, &thickness, &force) != 0) Find(n, Format_Utf8("a result that no task gave, %g", thickness));
  }

  // --- The stations' workers ---

  void Work(int n) {
    if (m_Roles[n] == Role::Panel) return show_dlg();
    Take_Up(n);
    std::mt19937_64 random(m_Plan.seed * 100 + static_cast<uint64_t>(n));
    for (double next_ms = Now_Ms(); !Has_Ended(); next_ms += m_Plan.pace_ms) {
      if (Now_Ms() < next_ms) Sleep(static_cast<int>(next_ms - Now_Ms()));
      const int dice = std::uniform_int_distribution(Is_Production() ? 24 : 0, 999)(random);
      if (dice < 10 || !m_Is_Referenced[n])
        Set_Up(n, random);
      else if (dice < 14)
        Log(n, GoZero(n) == 1 ? "zero" : "no zero");
      else if (dice < 20)
        Sleep(std::uniform_int_distribution(1, 5000)(random));
      else if (dice < 24)
        do_test(n, 99);  // no such task: taken, and nothing comes of it
      else if (m_Roles[n] == Role::Card)
        Cycle_By_Input(n, random);
      else if (m_Roles[n] == Role::Line)
        Cycle_By_Line(n, random);
      else
        Cycle_By_Host(n, random);
      Expect_No_Result(n);
    }
  }
  // What the store gave back is measured with as it is.
  void Take_Up(int n) {
    // A card that was missing at the start stays unused.
    if (m_Roles[n] == Role::Card && GetIO(n) < 0) m_Roles[n] = Role::Host;
    Log(n, Role_Names[static_cast<int>(m_Roles[n])]);
    m_From_Ms[n] = m_Start_Ms;
    double offset = 0.0;
    Get_Ans_Offset(n, &offset);
    // A drive that was not on the bus at the start stays unused.
    const bool is_lost = m_Faults->Met(n, Fault::Absent, m_Start_Ms);
    m_Is_Referenced[n] = !is_lost && m_Memory.saves[n].Is_Referenced() && offset == Block_Mm;
  }
  // A new force, a new reference for it, all saved. After a fault on the way the station counts as set up once it goes
  // through without one.
  void Set_Up(int n, std::mt19937_64& random) {
    Log(n, "set up");
    Lift(n);
    simulator::Place_Part(n, Block_Mm);
    const double force = std::uniform_real_distribution(30.0, 300.0)(random);
    Set_Ans_Offset(n, Block_Mm);
    set_test_distance(n, std::uniform_real_distribution(8.5, 11.0)(random));
    m_Is_Referenced[n] = false;
    Save(n, force, [n, force] { Set_Force(n, force); });
    Set_Force2(n, force);
    const double from = Now_Ms();
    Check_User_Zero(n);
    const bool is_told = !m_Front->Boxes_Since(from).empty();
    Log(n, is_told ? "reference with a box" : "reference");
    m_Is_Referenced[n] = !is_told && !Can_Deceive(n) && !m_Faults->Met(n, Fault::Restless, m_From_Ms[n]);
    Save(n, force, [n] { Save_Parameter2file(n); });
  }
  void Save(int n, double force, const std::function<void()>& save) {
    C_Saved_State& state = m_Memory.saves[n].Add(force, m_Is_Referenced[n]);
    const double from = Now_Ms();
    save();
    state.returned_ms = Now_Ms();
    for (const std::string& box : m_Front->Boxes_Since(from)) state.failed |= box.find("参数") != std::string::npos;
    ++m_Counts["saves"];
  }
  double Place_Part(int n, std::mt19937_64& random) {
    const double part = std::uniform_real_distribution(Least_Part_Mm, Greatest_Part_Mm)(random);
    simulator::Place_Part(n, part);
    return part;
  }
  // A lift-off under a fault can end, with a message, while the probe is still down: the host sees to it again.
  void Lift(int n) {
    m_From_Ms[n] = Now_Ms();
    for (int tries = 0; tries < 10; ++tries) {
      if (do_test(n, ORSANTA_TASK_FORCE_BACK) != 1) return Find(n, "a lift-off was refused");
      if (!Wait(n, [n] { return Get_Force_Back_Finish(n) == 1; })) return Find(n, "no end of a lift-off");
      if (Is_Up(n)) return;
      if (!Is_Excused(n)) return Find(n, "the probe stays down");
    }
    Find(n, "the probe does not come up");
  }
  bool Is_Up(int n) {
    return Wait(
        n, [n] { return simulator::True_Position(n) < 0.5; }, 3000.0, 5);
  }
  bool Is_Excused(int n) const {
    return m_Faults->Met_Any(n, m_From_Ms[n]) || !m_Front->Boxes_Since(m_From_Ms[n]).empty();
  }
  void Cycle_By_Host(int n, std::mt19937_64& random) {
    const int codes[] = {ORSANTA_TASK_MEASURE, ORSANTA_TASK_MEASURE, ORSANTA_TASK_MEASURE, ORSANTA_TASK_MEASURE_SLOW,
                         ORSANTA_TASK_FORCE_DIFFERENCE};
    const int code = Is_Production() ? ORSANTA_TASK_MEASURE : codes[std::uniform_int_distribution(0, 4)(random)];
    const double part = Place_Part(n, random);
    if (do_test(n, code) != 1) return Find(n, "a task was refused");
    double thickness = 0.0;
    if (Wait_Result(n, thickness)) Judge(n, code == ORSANTA_TASK_FORCE_DIFFERENCE ? 0.0 : part, thickness);
    Lift(n);
  }
  // As a machine does: the input asks for a measurement, and for the way back once the result is there.
  void Cycle_By_Input(int n, std::mt19937_64& random) {
    const double part = Place_Part(n, random);
    simulator::Set_Input(n, 0);
    double thickness = 0.0;
    if (Wait_Result(n, thickness)) Judge(n, part, thickness);
    m_From_Ms[n] = Now_Ms();
    simulator::Set_Input(n, 1);
    if (!Wait(n, [n] { return Get_Force_Back_Finish(n) == 1; })) Find(n, "the probe does not go back");
    if (!Is_Up(n)) Lift(n);
  }
  void Cycle_By_Line(int n, std::mt19937_64& random) {
    const double part = Place_Part(n, random);
    double thickness = 0.0, force = 0.0;
    // A byte that was sent into a line that had gone is lost: a machine asks again.
    do {
      if (!m_Faults->Met(n, Fault::Line_Gone, Now_Ms())) m_Lines[static_cast<size_t>(n)]->Send("T");
    } while (!Wait(
                 n, [&] { return get_ans(n, &thickness, &force) == 1; }, 10000.0) &&
             !Has_Ended());
    if (Has_Ended()) return;
    Judge(n, part, thickness);
    m_From_Ms[n] = Now_Ms();
    if (!Wait(n, [n] { return Get_Force_Back_Finish(n) == 1; })) Find(n, "the probe does not go back");
    if (!Is_Up(n)) Lift(n);
  }

  // --- What a result is worth ---

  void Judge(int n, double truth, double thickness) {
    ++m_Counts["cycles"];
    const double error_um = std::abs(thickness - truth) * 1000.0;
    Log(n, Format_Utf8("result %.4f mm for %.4f mm", thickness, truth));
    const bool vibrates = m_Faults->Met(n, Fault::Restless, m_From_Ms[n]);
    const bool is_difference = truth == 0.0;
    const bool is_valid = is_difference ? std::abs(thickness) < Least_Part_Mm
                                        : thickness >= Least_Part_Mm - 0.5 && thickness <= Greatest_Part_Mm + 0.5;
    Outcome outcome = Outcome::Right;
    if (!is_valid)
      outcome = Outcome::Not_Valid;
    else if (!(error_um <= Right_Um + (vibrates ? Half_Settling_Band_Um : 0.0)))
      outcome = m_Front->Boxes_Since(m_From_Ms[n]).empty() ? Outcome::Wrong_Silently : Outcome::Wrong_And_Told;
    const std::string ending = Outcome_Names[static_cast<int>(outcome)];
    if (!m_Faults->Met_Any(n, m_From_Ms[n])) {
      ++m_Counts["without a fault/" + ending];
      double& worst = m_Counts["worst error without a fault, um"];
      worst = std::max(worst, error_um);
      if (outcome != Outcome::Right)
        Find(n, Format_Utf8("%s without a fault: %.4f mm for %.4f mm", ending.c_str(), thickness, truth));
    }
    std::string met;
    for (int fault = 0; fault < Fault_Count; ++fault) {
      if (!m_Faults->Met(n, static_cast<Fault>(fault), m_From_Ms[n])) continue;
      ++m_Counts[Fault_Names[fault] + ("/" + ending)];
      met += met.empty() ? Fault_Names[fault] : std::string(", ") + Fault_Names[fault];
    }
    if (outcome == Outcome::Wrong_Silently && !met.empty() && !Can_Deceive(n))
      Find(n, Format_Utf8("wrong and nobody told: %.4f mm for %.4f mm, with %s", thickness, truth, met.c_str()));
  }
  // Frozen samples, and a probe that does not move, hold still: a gauge cannot tell them from a part. And a drive that
  // is gone from the bus takes no command: one that comes back in time lands with the current limit of before.
  bool Can_Deceive(int n) const {
    for (const Fault fault : {Fault::Frozen, Fault::Stuck, Fault::Absent})
      if (m_Faults->Met(n, fault, m_From_Ms[n])) return true;
    return false;
  }
  static std::ptrdiff_t Open_Files() {
    const std::filesystem::directory_iterator entries("/proc/self/fd");
    return std::distance(begin(entries), end(entries));
  }
  int Draw(int least, int greatest) { return std::uniform_int_distribution(least, greatest)(m_Random); }

  static constexpr double Never_Ms = 1e300;

  const C_Plan m_Plan;
  C_Memory m_Memory;
  std::map<std::string, double> m_Counts;
  std::mt19937_64 m_Random;
  C_Simulated_Clock m_Clock;
  int m_Io_Mode = 0;
  bool m_Has_Panel = false;
  double m_Start_Ms = 0.0;
  double m_End_Ms = 0.0;
  Role m_Roles[C_Memory::Most_Stations + 1] = {};
  bool m_Is_Referenced[C_Memory::Most_Stations + 1] = {};
  double m_From_Ms[C_Memory::Most_Stations + 1] = {};  // what a cycle rests on began here: the lift-off before it
  std::vector<std::unique_ptr<C_Pty>> m_Lines;
  C_Faulty_Disk* m_Disk = nullptr;
  C_Random_Operator* m_Front = nullptr;
  std::unique_ptr<C_Faults> m_Faults;
  C_Thread m_Fault_Thread;
  C_Thread m_Killer;
  std::list<C_Thread> m_Workers;
};

}  // namespace

}  // namespace orsanta::campaign

int main(int count, char** arguments) {
  if (count != 6) return 2;
  (new orsanta::campaign::C_Life({std::strtoull(arguments[1], nullptr, 10), std::atoi(arguments[2]),
                                  std::atoi(arguments[3]), std::atof(arguments[4]), std::atof(arguments[5])}))
      ->Run();
}
