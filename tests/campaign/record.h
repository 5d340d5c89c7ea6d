// What a run of the campaign finds and counts. It lives in memory that the lives of a system, each a process of its
// own, share with the campaign, so that it outlasts a kill.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace orsanta::campaign {

constexpr int Most_Stations = 14;

enum class Fault {
  Absent,
  Silent,
  Frozen,
  Stuck,
  Weak_Lift,
  Restless,
  Fault_Bits,
  Slow_Homing,
  Card_Missing,
  Line_Gone,
  Disk,
  Count
};
constexpr int Fault_Count = static_cast<int>(Fault::Count);
constexpr const char* Fault_Names[Fault_Count] = {
    "drive absent",  "drive silent", "samples frozen",  "probe stuck",     "too little current to lift",
    "part vibrates", "fault bits",   "homing too slow", "IO card missing", "serial line gone",
    "disk"};

// How a measuring task ended.
enum class Outcome { Right, Not_Valid, Wrong_And_Told, Wrong_Silently, Count };
constexpr int Outcome_Count = static_cast<int>(Outcome::Count);
constexpr const char* Outcome_Names[Outcome_Count] = {"right", "not valid", "wrong, told", "wrong, silently"};

// A state of a station's parameters that was given to a save.
struct C_Saved_State {
  double force;
  double begun_ms;
  double returned_ms;  // below 0 while the save has not returned
  bool failed;         // with a box: the disk did not take it
  bool referenced;     // the reference surface in it is right for this force
};

struct C_Saves {
  static constexpr int Limit = 256;
  C_Saved_State states[Limit];
  int count = 0;

  C_Saved_State& Add(const C_Saved_State& state) {
    if (count == Limit) {  // the older half goes
      std::copy(states + Limit / 2, states + Limit, states);
      count = Limit / 2;
    }
    return states[count++] = state;
  }
};

struct C_Record {
  C_Saves saves[Most_Stations + 1];
  bool is_played_with[Most_Stations + 1] = {};  // by the operator of the life before: its settings may be anything
  long cycles = 0;
  long clean[Outcome_Count] = {};                     // of cycles without a fault
  long under_fault[Fault_Count][Outcome_Count] = {};  // a cycle counts with each fault that it met
  double worst_clean_um = 0.0;
  double longest_stop_ms = 0.0;
  double simulated_ms = 0.0;
  double life_end_ms = 0.0;  // of the present life
  bool power_cut = false;    // how the present life ended
  long starts = 0, stops = 0, kills = 0, saves_made = 0, presses = 0;
  int finding_count = 0;
  char findings[32768] = {};

  void Find(const std::string& what) {
    ++finding_count;
    const size_t used = std::strlen(findings);
    std::snprintf(findings + used, sizeof findings - used, "%s\n", what.c_str());
  }
};

}  // namespace orsanta::campaign
