#include "ui/plot_task.h"

#include <algorithm>

#include "host/motor_base.h"
#include "station/voice_motor.h"
#include "support/dialog/subject.h"
#include "support/system/wide_string.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr int Pass_Ms = 500;
constexpr int End_Ms = 1;          // between passes that do nothing any more
constexpr int Chart_Width = 500;   // pixels at opening
constexpr int Chart_Height = 400;  // pixels at opening
constexpr int Stop_Timeout_Ms = 300000;

}  // namespace

plot_task::plot_task(C_VoiceMotorBase* base, int motor_index) : m_MotorIndex(motor_index) {
  m_Plot.SetDynamicAdjustRange(1);
  BeginThread(base, 2, 2, Stop_Timeout_Ms, nullptr);
}

plot_task::~plot_task() {
  Ask_To_End();
  ReleaseSubClass_CBaseBindThread();
}

void plot_task::Ask_To_End() {
  const C_Lock_Guard hold(m_Lock);
  m_Ends = true;
  m_Asked_To_End.Notify_All();
}

bool plot_task::Rest() {
  const double until_ms = Now_Ms() + Pass_Ms;
  const C_Lock_Guard hold(m_Lock);
  while (!m_Ends && m_Asked_To_End.Wait_Until(m_Lock, until_ms)) continue;
  return !m_Ends;
}

void plot_task::OnThreadLoop(void* param) {
  if (!Rest()) return Sleep(End_Ms);
  if (m_Plot.BeImageWindowCreate() == 0) return;
  const C_VoiceMotorBase& base = *static_cast<C_VoiceMotorBase*>(param);
  const C_VoiceMotor& station = *base.StationList[m_MotorIndex];
  const int number = m_MotorIndex + 1;
  const C_Subject_Scope subject({base.ResourceList[m_MotorIndex].CanID});
  const auto draw = [&](const CMyStringW& title, const C_History& data) {
    Plot_Last(title.Text(), data.Copy(), static_cast<int>(base.PlotPointNum), 0, false);
  };
  switch (base.SelectedChart) {
    case 0:
      return draw(Format_Text("Orsanta：%d测量尺寸（mm）", number), station.ThicknessArray);
    case 1:
      return draw(Format_Text("Orsanta：%d测量时间（ms）", number), station.TestTimeArray);
    case 2:
      return draw(Format_Text("Orsanta：%d测量温度（°C）", number), station.TempArray);
    default:
      return;
  }
}

void plot_task::Plot_Last(const std::wstring& title, CMyArray<double> y, int n, int mode, bool opens) {
  const int count = y.GetSize();
  if (count == 0) return;
  const int first = std::max(0, count - n);
  CMyArray<double> x;
  x.SetArraySize(count - first);
  for (int i = first; i < count; ++i) x[i - first] = i;
  y.GetSubArray(first, x.GetSize(), y);
  m_Plot.Plot(title, x, y, mode, Chart_Width, Chart_Height, CKestruneGraph::Line_Solid, L"", opens);
}

}  // namespace orsanta
