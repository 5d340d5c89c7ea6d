// C_TimeViewer: records how long named pieces of work take, one record for each run of the piece, to be printed or
// charted while debugging.
//
// All instances share one store that lasts as long as the process, so that a mark can be set from any station and any
// thread. With several stations in the same mark, an end belongs to the newest run of that name, whichever station
// began it: the times of overlapping runs mix, which is accepted.
//
// Each mark keeps its newest Max_Runs runs; when it is full the oldest quarter goes at once.
#pragma once

#include <string>

#include "support/base/array.h"
#include "support/time/uncopied.h"

namespace orsanta {

// One run of a mark, in milliseconds on the viewer's clock. The end equals the begin until the run has ended.
struct CTickData {
  double begin = 0.0;
  double end = 0.0;
};

// One mark: its runs, oldest first.
struct TimeStruct {
  std::wstring name;
  CMyArray<CTickData> ticks;
};

// Position of a mark in the list of marks.
struct TimeViewerNameIndex {
  std::wstring name;
  int index = 0;
};

class C_TimeViewer {
 public:
  static constexpr int Max_Runs = 200000;  // for each mark; the newest are kept

  // The first instance of the process starts the clock.
  C_TimeViewer();

  // Begins a run of the mark.
  void TimeBegin(const std::wstring& name);
  // Ends the newest run of the mark. A name that was never begun is a fault of the program.
  void TimeEnd(const std::wstring& name);
  // Prints all marks to the debug trace.
  void TraceAll() const;
  // Charts the durations of a mark's runs but the newest, which may still run. x_mode 0: over the number of the
  // run; any other: over its begin in ms. An unknown name is answered with a message box.
  void PlotMark(const std::wstring& name, int x_mode) const;
  // Place of the mark in the list, -1 when there is none. Takes no lock: the caller makes sure that no mark is begun
  // meanwhile.
  int FindMark(const std::wstring& name) const;
};

// Begins a mark and ends it with the scope, on every way out.
class C_Time_Mark : private C_Uncopied {
 public:
  C_Time_Mark(C_TimeViewer& viewer, std::wstring name) : m_Viewer(viewer), m_Name(std::move(name)) {
    m_Viewer.TimeBegin(m_Name);
  }
  ~C_Time_Mark() { m_Viewer.TimeEnd(m_Name); }

 private:
  C_TimeViewer& m_Viewer;
  std::wstring m_Name;
};

}  // namespace orsanta
