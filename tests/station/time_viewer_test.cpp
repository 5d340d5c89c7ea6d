#include "ui/time_viewer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "support/clock.h"

namespace orsanta {
namespace {

TEST(Time_Viewer, Instances_Share_Marks_And_Plot_All_But_The_Newest_Run) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  C_TimeViewer first;
  for (const int ms : {20, 30}) {
    const C_Time_Mark mark(first, L"shared");
    Sleep(ms);
  }
  Sleep(100);
  C_TimeViewer second;  // does not start the clock again
  second.TimeBegin(L"other");
  EXPECT_EQ(second.FindMark(L"other"), first.FindMark(L"shared") + 1);
  first.TimeBegin(L"shared");

  second.PlotMark(L"shared", 0);
  second.PlotMark(L"shared", 1);
  second.PlotMark(L"other", 0);
  second.PlotMark(L"none", 0);
  const std::vector<C_Shown> shown = front->Shown();
  ASSERT_EQ(shown.size(), 4U);
  EXPECT_EQ(shown[0].chart.y, (std::vector<double>{20.0, 30.0}));
  EXPECT_EQ(shown[0].chart.x, (std::vector<double>{0.0, 1.0}));
  EXPECT_EQ(shown[1].chart.x[1] - shown[1].chart.x[0], 20.0);
  EXPECT_TRUE(shown[2].chart.y.empty());
  EXPECT_EQ(shown[3].text, L"没有数据");
  testing::internal::CaptureStderr();
  first.TraceAll();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::HasSubstr("shared\nUsage:  20.0\nUsage:  30.0\nUsage:   0.0\nother\nUsage:   0.0\n"));
}

TEST(Time_Viewer, End_Without_Begin_Is_A_Fault_Of_The_Program) {
  C_Temp_Folder folder;  // for the trace log
  C_TimeViewer viewer;
  EXPECT_THROW(viewer.TimeEnd(L"never begun"), CMy_Assert_Exception);
}

TEST(Time_Viewer, A_Mark_Keeps_Its_Newest_Runs) {
  C_Simulated_Clock clock(1);
  C_Scripted_Front_Holder front;
  C_TimeViewer viewer;
  for (int i = 0; i <= C_TimeViewer::Max_Runs; ++i) viewer.TimeBegin(L"long");
  viewer.TimeEnd(L"long");
  viewer.PlotMark(L"long", 0);
  EXPECT_EQ(front->Shown()[0].chart.y.size(), static_cast<size_t>(C_TimeViewer::Max_Runs / 4 * 3));
}

}  // namespace
}  // namespace orsanta
