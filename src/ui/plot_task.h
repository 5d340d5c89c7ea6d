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
  // empty y draws nothing and opens nothing.
  void Plot_Last(const std::wstring& title, CMyArray<double> y, int n, int mode);

 protected:
  void OnThreadLoop(void* param) override;

 private:
  CKestrunePlot m_Plot;
  int m_MotorIndex;
};

}  // namespace orsanta
