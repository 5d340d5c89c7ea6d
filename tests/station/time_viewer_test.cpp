#include "support/services/time_viewer.h"

#include "common/failed_check.h"
#include "station_room.h"

namespace orsanta {

using Time_Viewer = C_Simulated_Test;

TEST_F(Time_Viewer, Instances_Share_Marks_And_Plot_All_But_The_Newest_Run) {
  for (const int ms : {20, 30}) {
    C_TimeViewer another;  // only the first starts the clock
    const C_Time_Mark mark(another, L"shared");
    Sleep(ms);
  }
  C_TimeViewer viewer;
  viewer.TimeBegin(L"shared");
  testing::internal::CaptureStderr();
  viewer.TraceAll();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("shared\nUsage:  20.0\nUsage:  30.0\nUsage:   0.0\n"));
  for (int i = 0; i <= C_TimeViewer::Max_Runs; ++i) viewer.TimeBegin(L"other");
  for (const int x_mode : {0, 1}) viewer.PlotMark(L"shared", x_mode);
  for (const wchar_t* name : {L"other", L"none"}) viewer.PlotMark(name, 0);
  const std::vector<C_Shown> shown = front->Shown();
  EXPECT_THAT(shown[0].chart.y, testing::ElementsAre(20.0, 30.0));
  EXPECT_THAT(shown[0].chart.x, testing::ElementsAre(0.0, 1.0));
  EXPECT_EQ(shown[1].chart.x[1] - shown[1].chart.x[0], 20.0);
  EXPECT_EQ(shown[2].chart.y.size(), static_cast<size_t>(C_TimeViewer::Max_Runs / 4 * 3)) << "the newest are kept";
  EXPECT_EQ(shown[3].text, L"没有数据");
  EXPECT_NE(0, Failed_Check_Line([&] { viewer.TimeEnd(L"never begun"); }));
}

}  // namespace orsanta
