// plot_task: one station's chart window and the thread that keeps it up to date.
//
// The panel's Plot_Last opens the window; from then on the thread redraws it twice a second from the station's history
// until the operator closes it. The chart kind is one for all stations and is read from the supervisor at each pass, so
// that choosing another kind turns all open charts to it, titles included. Required: operators compare stations so.
//
// A worker lives as long as its panel. Plot_Last may be called from any thread.
#pragma once

#include <string>

#include "support/base/array.h"
#include "support/dialog/chart.h"
#include "support/threads/thread.h"

namespace orsanta {

class C_VoiceMotorBase;

class plot_task : public CBaseBindThread {
 public:
  // motor_index: the station, from 0. The supervisor must outlive the worker.
  plot_task(C_VoiceMotorBase* base, int motor_index);
  ~plot_task() override;

  // Draws the last n points of y over their numbers since the start of y, and opens the window if it is not open. An
  // empty y draws nothing and opens nothing. opens: false leaves a window closed that the operator has closed.
  void Plot_Last(const std::wstring& title, CMyArray<double> y, int n, int mode, bool opens = true);
  // Brings the open window above the others.
  void Raise() { m_Plot.Raise(); }
  // Returns at once; the destructor then need not wait for the pass.
  void Ask_To_End();

 protected:
  void OnThreadLoop(void* param) override;

 private:
  // Waits for the next pass; false where none is to come.
  bool Rest();

  CKestrunePlot m_Plot;
  int m_MotorIndex;
  C_Leaf_Lock m_Lock;
  bool m_Ends GUARDED_BY(m_Lock) = false;
  C_Wait_Point m_Asked_To_End{"plot_task"};
};

}  // namespace orsanta
