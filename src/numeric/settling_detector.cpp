#include "numeric/settling_detector.h"

#include <algorithm>
#include <limits>
#include <type_traits>

namespace orsanta {
namespace {

static_assert(std::is_trivial_v<DetectorState> && std::is_standard_layout_v<DetectorState>);

// Zero-based index in OrderedWindow of the window's first element, and its length.
struct Window {
  int first;
  int length;
};

Window Find_Window(double window_len) {
  const double start = Detector_Ring_Size - window_len + 1;
  if (start > Detector_Ring_Size) return {0, 0};
  if (!(start >= 1.0)) return {0, Detector_Ring_Size};
  const int first = static_cast<int>(start) - 1;
  return {first, Detector_Ring_Size - first};
}

// Fills OrderedWindow from `first` to its end with the newest samples, oldest first. The samples stand in the ring in
// two runs: up to the ring's end, and from its start to the newest one.
void Order_Window(DetectorState& state, int first) {
  double place = state.RingPos + state.RingOffsets[first];
  if (place > Detector_Ring_Size) place -= Detector_Ring_Size;
  const double* oldest = state.RingBuffer + static_cast<int>(place) - 1;
  const double* ring_end = state.RingBuffer + Detector_Ring_Size;
  double* out = state.OrderedWindow + first;
  double* const out_end = state.OrderedWindow + Detector_Ring_Size;
  const auto first_run = std::min(ring_end - oldest, out_end - out);
  out = std::copy_n(oldest, first_run, out);
  std::copy_n(state.RingBuffer, out_end - out, out);
}

// Largest less smallest value, not-a-number values skipped; not-a-number if there is no number. Four values are kept
// side by side, as one compare would have to wait for the one before it; a range does not depend on the order.
double Range(const double* values, int count) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr int lanes = 4;
  double hi[lanes], lo[lanes];
  std::fill_n(hi, lanes, -infinity);
  std::fill_n(lo, lanes, infinity);
  int i = 0;
  for (; i + lanes <= count; i += lanes) {
    for (int lane = 0; lane < lanes; ++lane) {
      const double value = values[i + lane];
      hi[lane] = value > hi[lane] ? value : hi[lane];
      lo[lane] = value < lo[lane] ? value : lo[lane];
    }
  }
  for (; i < count; ++i) {
    hi[0] = values[i] > hi[0] ? values[i] : hi[0];
    lo[0] = values[i] < lo[0] ? values[i] : lo[0];
  }
  const double largest = *std::max_element(hi, hi + lanes);
  const double smallest = *std::min_element(lo, lo + lanes);
  if (largest < smallest) return std::numeric_limits<double>::quiet_NaN();
  return largest - smallest;
}

}  // namespace

void DetectorInit(DetectorState& state) {
  state.Input = 0.0;
  state.WindowLen = 0.0;
  state.Threshold = 0.0;
  state.Settled = false;
  state.Mean = 0.0;
  for (int i = 0; i < Detector_Ring_Size; ++i) {
    state.RingBuffer[i] = 0.0;
    state.RingOffsets[i] = i + 1;
  }
  state.RingPos = 1.0;
  state.ErrorStatus = nullptr;
}

void DetectorStep(DetectorState& state) {
  state.RingPos += 1.0;
  if (state.RingPos > Detector_Ring_Size) state.RingPos = 1.0;
  state.RingBuffer[static_cast<int>(state.RingPos) - 1] = state.Input;

  // Only the window's part of the ring is put in order: nothing else is read.
  const Window window = Find_Window(state.WindowLen);
  Order_Window(state, window.first);
  const double* newest = state.OrderedWindow + window.first;
  // An empty window takes its range from the oldest sample.
  const double range = Range(newest, std::max(window.length, 1));

  state.Settled = state.Threshold > range;
  if (!state.Settled) {
    state.Mean = 0.0;
    return;
  }
  std::copy_n(newest, window.length, state.TailCopy);
  // Summed in time order: another order would round to other bits. An empty window gives 0/0.
  double sum = window.length > 0 ? newest[0] : 0.0;
  for (int i = 1; i < window.length; ++i) sum += newest[i];
  state.Mean = sum / window.length;
}

const char* DetectorErrorStatus(const DetectorState& state) {
  return state.ErrorStatus;
}

}  // namespace orsanta
