// The faults of an installation, which come and go at random.
#pragma once

#include <algorithm>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "campaign/faulty_disk.h"
#include "common/pty.h"
#include "simulator/simulator.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta::campaign {

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

// A line in the log of the life, for whoever looks for the cause of a finding.
inline void Log(int station, const std::string& what) {
  std::fprintf(stderr, "%10.1f ms  station %2d  %s\n", Now_Ms(), station, what.c_str());
}

class C_Faults {
 public:
  // lines: the serial lines, of the stations that have one.
  C_Faults(uint64_t seed, int stations, C_Faulty_Disk& disk, std::vector<C_Pty*> lines)
      : m_Random(seed), m_Stations(stations), m_Disk(disk), m_Lines(std::move(lines)) {}

  // Lets faults come and go until the clock says until_ms, and takes all back.
  void Run(double until_ms, double mean_pause_ms) {
    double next_ms = Now_Ms() + Pause(mean_pause_ms);
    while (Now_Ms() < until_ms) {
      double wake_ms = std::min(next_ms, until_ms);
      for (const C_Event& event : m_Events)
        if (event.is_active) wake_ms = std::min(wake_ms, event.end_ms);
      Sleep(static_cast<int>(wake_ms - Now_Ms()) + 1);
      for (C_Event& event : m_Events)
        if (event.is_active && event.end_ms <= Now_Ms()) Switch(event, false);
      if (Now_Ms() < next_ms) continue;
      Begin_One(until_ms);
      next_ms = Now_Ms() + Pause(mean_pause_ms);
    }
    for (C_Event& event : m_Events)
      if (event.is_active) Switch(event, false);
  }
  // Whether a station met the fault in a span of time. Station 0: any.
  bool Met(int station, Fault fault, double from_ms) const {
    return std::any_of(m_Events.begin(), m_Events.end(), [&](const C_Event& event) {
      const bool is_its = event.station == 0 || station == 0 || event.station == station;
      return event.fault == fault && is_its && (event.is_active || event.ended_ms >= from_ms);
    });
  }
  bool Met_Any(int station, double from_ms) const {
    for (int fault = 0; fault < Fault_Count; ++fault)
      if (Met(station, static_cast<Fault>(fault), from_ms)) return true;
    return false;
  }

 private:
  struct C_Event {
    Fault fault;
    int station;  // 0: of all
    double end_ms;
    bool is_active = false;
    double ended_ms = 0.0;
  };

  double Pause(double mean_ms) { return std::exponential_distribution(1.0 / mean_ms)(m_Random); }
  int Draw(int least, int greatest) { return std::uniform_int_distribution(least, greatest)(m_Random); }

  void Begin_One(double until_ms) {
    const auto fault = static_cast<Fault>(Draw(0, Fault_Count - 1));
    const bool is_of_all = fault == Fault::Card_Missing || fault == Fault::Disk;
    const double length = Pause(Draw(0, 2) == 0 ? 5000.0 : 300.0);
    const int station = is_of_all ? 0 : Draw(1, m_Stations);
    for (const C_Event& event : m_Events)
      if (event.is_active && event.fault == fault && event.station == station) return;
    m_Events.push_back({fault, station, std::min(Now_Ms() + length, until_ms)});
    Switch(m_Events.back(), true);
  }
  void Switch(C_Event& event, bool on) {
    event.is_active = on;
    event.ended_ms = Now_Ms();
    const int n = event.station;
    Log(n, Format_Utf8("%s %s", Fault_Names[static_cast<int>(event.fault)], on ? "begins" : "ends"));
    switch (event.fault) {
      case Fault::Absent:
        return simulator::Set_Absent(n, on);
      case Fault::Silent:
        return simulator::Set_Silent(n, on);
      case Fault::Frozen:
        return simulator::Set_Frozen(n, on);
      case Fault::Stuck:
        return simulator::Set_Stuck(n, on);
      case Fault::Weak_Lift:
        return simulator::Set_Weak_Lift(n, on);
      case Fault::Restless:
        return simulator::Set_Restless(n, on ? Draw(1, 100) / 1000.0 : 0.0);
      case Fault::Fault_Bits:
        return simulator::Set_Fault_Bits(n, on ? static_cast<uint64_t>(Draw(1, 15)) : 0);
      case Fault::Slow_Homing:
        return simulator::Set_Slow_Homing(n, on);
      case Fault::Card_Missing:
        return simulator::Set_Io_Card_Missing(on);
      case Fault::Line_Gone:
        return Switch_Line(n, on);
      case Fault::Disk:
        return m_Disk.Set_Fault(on ? static_cast<Disk_Fault>(Draw(1, static_cast<int>(Disk_Fault::Count) - 1))
                                   : Disk_Fault::None);
      case Fault::Count:
        return;
    }
  }
  void Switch_Line(int station, bool gone) {
    C_Pty* const line = m_Lines[static_cast<size_t>(station)];
    if (line == nullptr) return;
    if (gone)
      line->Pull_Out();
    else
      line->Plug_In();
  }

  std::mt19937_64 m_Random;
  const int m_Stations;
  C_Faulty_Disk& m_Disk;
  const std::vector<C_Pty*> m_Lines;
  std::vector<C_Event> m_Events;
};

}  // namespace orsanta::campaign
