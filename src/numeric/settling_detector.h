// The settling detector: has the probe's position come to rest, and where?
//
// A window over the newest samples of a ring. The detector is settled while the range of the window is below a
// threshold, and its output is then the mean of the window.
//
//   DetectorState detector;
//   DetectorInit(detector);
//   detector.WindowLen = 50;       // samples
//   detector.Threshold = 0.001;    // in the unit of the samples
//   for (double sample : samples) {
//     detector.Input = sample;
//     DetectorStep(detector);
//   }
//   if (detector.Settled) use(detector.Mean);
//
// The ring starts out full of zeros, which count as samples: a caller that wants at least WindowLen real samples
// behind a result first steps one sample that lies far off.
//
// A plain record without a heap, made to live on the stack of one thread; several threads may run detectors of their
// own side by side.
#pragma once

namespace orsanta {

constexpr int Detector_Ring_Size = 1000;  // samples

struct DetectorState {
  double Input;      // the new sample, set before each step
  double WindowLen;  // samples, 1 to 1000; may be fractional: 1.5 is a window of 2, and anything below 1 one of 0
  double Threshold;  // the range must be below it, in the unit of the samples
  bool Settled;      // output of the last step
  double Mean;       // output of the last step, in the unit of the samples; 0 when not settled
  // Work areas, written by a step before it reads them.
  double OrderedWindow[Detector_Ring_Size];  // from its end: the window in time order, the newest sample last
  double TailCopy[Detector_Ring_Size];       // from its start: the window of the last settled step, in time order
  double RingBuffer[Detector_Ring_Size];     // the samples
  double RingOffsets[Detector_Ring_Size];    // constant: element i holds i + 1
  double RingPos;                            // one-based place of the newest sample
  const char* ErrorStatus;                   // never set; read through DetectorErrorStatus
};

// Sets the record to its start: outputs, settings and ring 0. The caller sets WindowLen and Threshold after it.
void DetectorInit(DetectorState& state);

// Takes Input into the ring and works out Settled and Mean. Cannot fail and allocates nothing.
// Not-a-number samples do not count for the range but enter the mean, which is then not-a-number. A window of 0 takes
// the range of the oldest sample of the ring alone, and its mean is not-a-number. A window above 1000 is cut to 1000.
void DetectorStep(DetectorState& state);

// The text of the detector's error: null, as no step can fail.
const char* DetectorErrorStatus(const DetectorState& state);

}  // namespace orsanta
