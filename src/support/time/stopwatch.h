// CPerformanceTimeValue: a stopwatch with sub-millisecond resolution on the present clock. Copyable; one thread at a
// time.
#pragma once

#include "support/time/clock.h"

namespace orsanta {

class CPerformanceTimeValue {
 public:
  // Starts the watch as if it had run for offset_ms already.
  void InitBeginTime(double offset_ms) { m_Begin_Ms = Now_Ms() - offset_ms; }
  // Milliseconds since the start.
  double GetCurPerformanceTimeFromBeginTimeMsDouble() const { return Now_Ms() - m_Begin_Ms; }

 private:
  double m_Begin_Ms = 0.0;
};

}  // namespace orsanta
