// What the saves of a station were told, from life to life.
#pragma once

#include <cmath>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

#include "support/store/store_access.h"
#include "support/system/wide_string.h"

namespace orsanta::campaign {

// A state of a station's parameters that was given to a save. The set force, which is another one each time, names it.
struct C_Saved_State {
  double force = 0.0;
  bool referenced = false;    // the reference surface in it is right for this force
  double returned_ms = -1.0;  // when the save returned; below 0 while it has not
  bool failed = false;        // with a box: the disk did not take it
};

class C_Saves {
 public:
  C_Saved_State& Add(double force, bool referenced) {
    m_States.push_back({force, referenced});
    return m_States.back();
  }
  bool Is_Referenced() const { return !m_States.empty() && m_States.back().referenced; }
  void Clear() { m_States.clear(); }

  // At the end of a life the store must be whole and hold one of the states, none older than the last that has surely
  // reached the disk: what returned before lost_from_ms without a box. Returns what is wrong, empty for nothing. Only
  // the state in the store remains.
  std::string Check_Store(int station, double lost_from_ms) {
    if (m_States.empty()) return "";
    const C_Store_Reading reading = Read_Store(Format_Utf8("音圈电机%d参数", station));
    const auto is_sure = [&](const C_Saved_State& state) {
      return state.returned_ms >= 0.0 && !state.failed && state.returned_ms < lost_from_ms;
    };
    const double force = Stored_Force(reading.content);
    while (m_States.size() > 1 && m_States.back().force != force && !is_sure(m_States.back())) m_States.pop_back();
    const C_Saved_State found = m_States.back();
    m_States.clear();
    if (reading.report.state == C_Store_State::Missing && !is_sure(found)) return "";
    if (reading.report.state != C_Store_State::Whole) return "its store is not whole";
    if (found.force != force && is_sure(found))
      return Format_Utf8("its store has lost what a save was told: %g g for %g g", force, found.force);
    m_States.push_back({force, found.referenced && found.force == force && is_sure(found), 0.0});
    return "";
  }

  // For the next life, a process of its own: the one state that a check has left.
  void Write(std::ostream& to) const {
    to.precision(17);
    to << m_States.size();
    for (const C_Saved_State& state : m_States) to << ' ' << state.force << ' ' << state.referenced;
    to << '\n';
  }
  void Read(std::istream& from) {
    size_t count = 0;
    C_Saved_State state{.returned_ms = 0.0};
    for (from >> count; count > 0 && from >> state.force >> state.referenced; --count) m_States.push_back(state);
  }

 private:
  // NaN where the store holds none.
  static double Stored_Force(const C_Store_Content& content) {
    double force = std::nan("");
    for (const C_Store_Entry& entry : content.entries)
      if (entry.key == "Val_Force_Set[0]") std::memcpy(&force, entry.bytes.data(), sizeof force);
    return force;
  }

  std::vector<C_Saved_State> m_States;
};

}  // namespace orsanta::campaign
