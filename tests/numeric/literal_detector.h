// The settling detector as a literal pass over all slots of the ring: what DetectorStep must equal to the bit, and what
// the benchmark compares it with.
#pragma once

#include "numeric/settling_detector.h"

namespace orsanta {

// The largest (sign 1) or smallest (sign -1) of the window, not-a-number skipped.
inline double Literal_Extreme(const double* window, int length, double sign) {
  double extreme = window[0];
  for (int i = 1; i < length; ++i) {
    if (extreme != extreme || sign * window[i] > sign * extreme) extreme = window[i];
  }
  return extreme;
}

inline void Literal_Step(DetectorState& s) {
  s.RingPos += 1;
  if (s.RingPos > 1000) s.RingPos = 1;
  s.RingBuffer[static_cast<int>(s.RingPos) - 1] = s.Input;
  for (int i = 0; i < 1000; ++i) {
    double k = s.RingPos + s.RingOffsets[i];
    if (k > 1000) k -= 1000;
    s.OrderedWindow[i] = s.RingBuffer[static_cast<int>(k) - 1];
  }
  const double start = 1000 - s.WindowLen + 1;
  const int first = start >= 1 && start <= 1000 ? static_cast<int>(start) - 1 : 0;  // at most the whole ring
  const int length = start > 1000 ? 0 : 1000 - first;
  const double* window = s.OrderedWindow + first;
  s.Settled = s.Threshold > Literal_Extreme(window, length, 1) - Literal_Extreme(window, length, -1);
  s.Mean = 0;
  if (!s.Settled) return;
  for (int i = 0; i < length; ++i) s.TailCopy[i] = window[i];
  double sum = length > 0 ? s.TailCopy[0] : 0.0;
  for (int i = 1; i < length; ++i) sum += s.TailCopy[i];
  s.Mean = sum / length;
}

}  // namespace orsanta
