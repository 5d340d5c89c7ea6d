#include "support/services/time_viewer.h"

#include "support/dialog/chart.h"
#include "support/dialog/message_box.h"
#include "support/system/trace.h"
#include "support/system/wide_string.h"
#include "support/time/lock.h"
#include "support/time/no_destructor.h"
#include "support/time/stopwatch.h"

namespace orsanta {

namespace {

// The one store of the process.
struct C_Time_Store {
  C_Leaf_Lock lock;
  bool started GUARDED_BY(lock) = false;
  CPerformanceTimeValue clock;
  CMyArray<TimeStruct> times GUARDED_BY(lock);           // one element for each name
  CMyArray<TimeViewerNameIndex> names GUARDED_BY(lock);  // one element for each name
  CKestrunePlot chart;
};

C_Time_Store& Store() {
  static C_No_Destructor<C_Time_Store> store;
  return store.Get();
}

double Now() {
  return Store().clock.GetCurPerformanceTimeFromBeginTimeMsDouble();
}

void Append_Run(CMyArray<CTickData>& ticks, const CTickData& td) {
  if (ticks.GetSize() >= C_TimeViewer::Max_Runs) ticks.RemoveData(0, C_TimeViewer::Max_Runs / 4);
  ticks.Add(td);
}

}  // namespace

C_TimeViewer::C_TimeViewer() {
  const C_Lock_Guard hold(Store().lock);
  if (Store().started) return;
  Store().clock.InitBeginTime(0.0);
  Store().started = true;
}

int C_TimeViewer::FindMark(const std::wstring& name) const NO_THREAD_SAFETY_ANALYSIS {
  int index = -1;
  for (const TimeViewerNameIndex& entry : Store().names) {
    if (entry.name == name) index = entry.index;
  }
  return index;
}

void C_TimeViewer::TimeBegin(const std::wstring& name) {
  const C_Lock_Guard hold(Store().lock);
  const int index = FindMark(name);
  const double now = Now();
  const CTickData td{now, now};
  if (index != -1) {
    Append_Run(Store().times[index].ticks, td);
    return;
  }
  TimeStruct mark;
  mark.name = name;
  mark.ticks.Add(td);
  Store().names.Add({name, Store().names.GetSize()});
  Store().times.Add(mark);
}

void C_TimeViewer::TimeEnd(const std::wstring& name) {
  const C_Lock_Guard hold(Store().lock);
  // A name that was never begun fails the array's own check here, and its report is what the developer sees.
  Store().times[FindMark(name)].ticks.GetEndData().end = Now();
}

void C_TimeViewer::TraceAll() const {
  std::wstring text;
  {
    const C_Lock_Guard hold(Store().lock);
    for (const TimeViewerNameIndex& entry : Store().names) {
      text += entry.name + L"\r\n";
      for (const CTickData& run : Store().times[entry.index].ticks) {
        text += Format_Text("Usage:%6.1f\r\n", run.end - run.begin).Text();
      }
    }
  }
  MY_TRACE0(text.c_str());
}

void C_TimeViewer::PlotMark(const std::wstring& name, int x_mode) const {
  CMyArray<double> x;
  CMyArray<double> y;
  bool known = false;
  {
    const C_Lock_Guard hold(Store().lock);
    const int index = FindMark(name);
    known = index != -1;
    for (int j = 0; known && j <= Store().times[index].ticks.GetSize() - 2; ++j) {
      const CTickData& run = Store().times[index].ticks[j];
      y.Add(run.end - run.begin);
      x.Add(x_mode == 0 ? j : run.begin);
    }
  }
  if (!known) {
    Message_Box(L"没有数据");
    return;
  }
  Store().chart.Plot(name, x, y, 0, 500, 400, CKestruneGraph::Line_Solid, L"");
}

}  // namespace orsanta
