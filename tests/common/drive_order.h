// A call of the motion contract as a word of a transcript: what a drive and the card are told, and what is read of the
// drive.
//
//   go 3.00   position command, mm       upper, lower 1.5   clamps, A      speed, acc   mm/s, mm/s^2
//   .         wait for the server        io3 1              an output      3:85         an instruction to an axis
//   run, amps, fault   reads of the run flag, of the current and of the fault word
#pragma once

#include <cstdio>
#include <map>
#include <string>

#include "simulator/simulator.h"
#include "support/system/wide_string.h"

namespace orsanta {

// Empty for any other call. id: of the drive.
inline std::string Drive_Order(const simulator::Journal_Entry& call, int id, double counts_per_mm = 1000.0) {
  int place = 0;
  double value = 0.0;
  const int found = std::sscanf(call.arguments.c_str(), "%d, %lf", &place, &value);
  const int k = place - 20 * id;
  if (call.function == "WaitForAllInsFinish") return ".";
  if (call.function == "GetInputChannelData") return k == 6 ? "run" : k == 9 ? "amps" : k == 1 ? "fault" : "";
  if (call.function == "SetCurIoOutput") return Format_Utf8("io%d %g", place, value);
  if (call.function == "ExecuteDeviceIns" && found == 2) return Format_Utf8("%d:%g", place, value);
  if (call.function != "OUTPUT_DATA") return "";
  if (k == 0) return Format_Utf8("go %.2f", value / counts_per_mm / 65536.0);
  const std::map<int, const char*> names{{1, "home"}, {2, "upper"}, {3, "speed"}, {8, "acc"}, {9, "lower"}};
  return names.count(k) == 0 ? Format_Utf8("%d=%g", place, value) : Format_Utf8("%s %g", names.at(k), value);
}

}  // namespace orsanta
