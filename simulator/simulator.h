// The simulator: a simulated machine room behind the motion contract, and its control surface for tests and host
// programs.
//
// The simulator keeps no thread and no clock of its own: it advances its physics to "now" (support/time/clock.h)
// whenever it is called. Everything random comes from one seed. All calls may come from any thread.
//
// Lengths are millimetres, forces grams, currents amperes, temperatures degrees Celsius, times milliseconds.
// A station's probe moves from 0 (lifted) toward its anvil. On the anvil at `anvil_mm` lies a part or nothing; a part
// of thickness t stops the probe at anvil_mm - t.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#define SIMULATOR_API __attribute__((visibility("default")))

namespace simulator {

// The true force of a probe on what it touches: F = p[0] + p[1]*I + p[2]*P + p[3]*I*P + p[4]*I*P*P, grams, with the
// coil current I in amperes and the probe position P in millimetres.
struct Force_Truth {
  double p[5] = {-4.0, 100.0, -1.5, 1.2, -0.25};
};

struct Settings {
  uint64_t seed = 1;
  int first_drive_id = 1;  // CAN ids of the drives: first_drive_id, first_drive_id + 1, ...
  int drives = 14;
  bool io_card = true;                       // at CAN id 15
  std::vector<int> temperature_boards = {};  // CAN ids of temperature boards (interpolation devices)
  double anvil_mm = 9.0;                     // position of the anvil of every station
  double sample_ms = 2.0;                    // period of the drives' sample streams
  double instruction_ms = 0.0;               // time of the motion server for each instruction
  bool cyclic_stroke = false;     // drives send the ends of their stroke all the time, not once when measured
  double counts_per_mm = 1000.0;  // the encoder's; a raw position has 16 fraction bits of a count
  double encoder_step_mm = 0.0001;
  double noise_mm = 0.0003;  // standard deviation of each position sample; 0 for none
  Force_Truth force = {};
  int refused_connects = 0;  // this many of the next connects fail
};

// Removes everything and builds a new room. Called after the clock is chosen and before the system connects.
SIMULATOR_API void Reset(const Settings& settings = Settings());

// --- Parts and truth; `can_id` names a station's drive ---

SIMULATOR_API void Place_Part(int can_id, double thickness_mm);
SIMULATOR_API void Remove_Part(int can_id);  // the anvil is bare
SIMULATOR_API void Set_Head_Height(int can_id,
                                   double mm);  // moves the anvil by mm against its setting, as turning the head does
SIMULATOR_API double True_Contact_Position(int can_id);          // where the probe first touches
SIMULATOR_API double True_Position(int can_id);                  // where the probe is now
SIMULATOR_API double True_Force(int can_id);                     // on the part now; 0 while nothing is touched
SIMULATOR_API double Force_Gauge(int can_id);                    // what a force gauge under the probe reads, to 0.01 g
SIMULATOR_API void Set_Temperature(int can_id, double celsius);  // of a temperature board
SIMULATOR_API double True_Temperature(int can_id);
// A home sensor of an interpolation device, its input bit 2 or 6: on from the edge on, at greater places (on_above) or
// at smaller ones. The probe's way ends at -10 and 10 mm; an edge beyond makes a sensor that never switches. At the
// start bit 2 is on from -4 mm downwards, bit 6 from 4 mm upwards.
SIMULATOR_API void Set_Home_Sensor(int can_id, int bit, double edge_mm, bool on_above);

// --- IO card ---

SIMULATOR_API void Set_Input(int bit, int value);
SIMULATOR_API int Get_Output(int bit);

// --- Faults, each switchable while running ---

SIMULATOR_API void Set_Absent(int can_id, bool absent);   // no device answers at this id
SIMULATOR_API void Set_Silent(int can_id, bool silent);   // the device answers, but its sample streams stop
SIMULATOR_API void Set_Frozen(int can_id, bool frozen);   // position samples repeat the last value
SIMULATOR_API void Set_Stuck(int can_id, bool stuck);     // the probe does not move at all
SIMULATOR_API void Set_Weak_Lift(int can_id, bool weak);  // too little current reaches the coil to lift the probe
// The part vibrates at 37 Hz and never settles; 0 for none, at most Restless_Limit_Mm.
constexpr double Restless_Limit_Mm = 0.1;
SIMULATOR_API void Set_Restless(int can_id, double amplitude_mm);
SIMULATOR_API void Set_Fault_Bits(int can_id, uint64_t bits);
SIMULATOR_API void Set_Refused_Connects(int count);
SIMULATOR_API void Set_Io_Card_Missing(bool missing);
SIMULATOR_API void Set_Slow_Homing(int can_id, bool slow);  // the drive's own homing takes longer than a caller waits

// --- Journal: every contract call in order, with its thread number, arguments and time ---

struct Journal_Entry {
  double time_ms = 0.0;  // since Reset
  std::string function;
  int thread = -1;        // instruction thread, -1 where the call takes none
  std::string arguments;  // "a, b, c" as passed in, without the thread and the out-parameters
};

// The journal keeps the newest Journal_Limit calls and counts the rest. Reads of samples and inputs, which run all the
// time, are kept only while asked for.
constexpr int Journal_Limit = 200000;
SIMULATOR_API void Journal_Keep_Reads(bool keep);
SIMULATOR_API void Journal_Clear();
SIMULATOR_API std::vector<Journal_Entry> Journal();
SIMULATOR_API std::string Journal_Text();   // one line a call: "time thread function(arguments)"
SIMULATOR_API uint64_t Journal_Checksum();  // over all calls since Reset, reads included: equal runs have equal sums

}  // namespace simulator
