// The check of a motor over its stroke, as both drive classes make it once they know the stroke. The first failure is
// told to the operator in a box and ends the check. Runs on the calling thread, for as long as the motions take.
#pragma once

#include <cstdint>

#include "support/dialog/message_box.h"
#include "support/system/wide_string.h"

namespace orsanta::stroke_check {

constexpr const wchar_t* Home_Failed = L"无法回零";
constexpr const wchar_t* Stroke_Failed = L"无法测量行程";
constexpr const wchar_t* Forward_Failed = L"正向运动无法到位";
constexpr const wchar_t* Reverse_Failed = L"反向运动无法到位";
constexpr const wchar_t* Middle_Failed = L"无法回中";

// Tells the operator which drive failed at what. Returns 0, the result of the failed check.
inline int Report_Failure(int can_id, const wchar_t* words) {
  Message_Box(Format_Text("ID:%d的驱动器", can_id).Append(words));
  return 0;
}

// Runs over the stroke in steps, out from min and back from max. go(x) moves and returns 1 on arrival. Returns null, or
// the words of the first move that did not arrive. Required: max is left out on the way out and min on the way back,
// give or take a rounded sum, since a machine may stop short of its own ends.
template <class C_Go>
const wchar_t* Step_Over_Stroke(C_Go go, double max, double min, double step) {
  for (double x = min; max > x; x += step) {
    if (go(x) != 1) return Forward_Failed;
  }
  for (double x = max; x > min; x -= step) {
    if (go(x) != 1) return Reverse_Failed;
  }
  return nullptr;
}

// Runs back and forth between the ends with a stop in the middle. Results as above.
template <class C_Go>
const wchar_t* Shuttle(C_Go go, double max, double min) {
  constexpr int Passes = 5;
  const double middle = (max + min) / 2;
  for (int pass = 0; pass < Passes; ++pass) {
    if (go(max) != 1) return Forward_Failed;
    if (go(middle) != 1) return Middle_Failed;
    if (go(min) != 1) return Reverse_Failed;
    if (go(middle) != 1) return Middle_Failed;
  }
  return nullptr;
}

// The whole check: the steps, a read of the version as a proof of the link, and the shuttle. go: the drive's move to a
// place in mm, which returns 1 on arrival. can_id: for the report. Returns 1, or 0 after a failure.
template <class C_Drive>
int Run(C_Drive& drive, int (C_Drive::*go)(double), int can_id, double max, double min, double step) {
  const auto go_to = [&](double mm) { return (drive.*go)(mm); };
  const wchar_t* failure = Step_Over_Stroke(go_to, max, min, step);
  if (failure != nullptr) return Report_Failure(can_id, failure);
  uint16_t ver = 0;
  uint32_t bcd_date = 0;
  if (drive.Get_Version(ver, bcd_date) != 1) return Report_Failure(can_id, L"无法获取版本号");
  failure = Shuttle(go_to, max, min);
  return failure == nullptr ? 1 : Report_Failure(can_id, failure);
}

}  // namespace orsanta::stroke_check
