#include "support/dialog/front.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include "common/arrays.h"
#include "common/command.h"
#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "support/dialog/chart.h"
#include "support/dialog/console_front.h"
#include "support/dialog/dialog.h"

namespace orsanta {
namespace {

using ::testing::HasSubstr;

class Console : public ::testing::Test {
 protected:
  Console() { Replace_Front(std::make_unique<C_Console_Front>()); }
  ~Console() override { Replace_Front(nullptr); }
};

TEST_F(Console, Answers_Everything_By_Itself_In_Single_Lines) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(Message_Box(L"\n请进行  基准校正\r\n\n第二行\n", Box_Stop_Icon), Answer_Ok);
  EXPECT_EQ(Message_Box(L"保存\x1B[2J?", Box_Yes_No | Box_System_Modal), Answer_No);

  int value = 3;
  CParameterInOutDlg dialog;
  dialog.AddDataEditRange(L"点数\n", 0, 10.0F, value, 4, 10, 1, 0, nullptr);
  EXPECT_EQ(dialog.DoParameterDlg(1, 0, 1.0F, 1, nullptr, nullptr, 1), 0);
  EXPECT_EQ(value, 3);

  EXPECT_EQ(CKestrunePlot().Plot(L"温度", {}, {}, 0, 500, 400, CKestruneGraph::Line_Solid, L""), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "请进行  基准校正 第二行\n保存 [2J?\n没有显示器,对话框已取消: 点数\n");
}

// The stream as a careless parent may leave it: closed, a socket or a terminal that nobody reads, or a pipe whose
// reader is there and then gone.
TEST_F(Console, Goes_On_Where_Nobody_Reads_It) {
  const int kept = dup(STDERR_FILENO);
  int pipe_ends[2], sockets[2];
  ASSERT_EQ(pipe(pipe_ends), 0);
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, sockets), 0);
  const C_Temp_Folder folder;
  C_Pty terminal(1);
  for (const int stream : {open("COM1", O_WRONLY | O_NOCTTY), sockets[1], pipe_ends[1], pipe_ends[1]}) {
    dup2(stream, STDERR_FILENO);
    for (int i = 0; i < 3000; ++i) ASSERT_EQ(Message_Box(std::wstring(100, L'话')), Answer_Ok);
    if (stream == pipe_ends[1]) close(pipe_ends[0]);
  }
  EXPECT_TRUE(terminal.Take().starts_with("话"));
  char told[4] = "";
  EXPECT_EQ(recv(sockets[0], told, 3, MSG_DONTWAIT), 3);
  EXPECT_STREQ(told, "话");
  close(STDERR_FILENO);
  EXPECT_EQ(Message_Box(L"没有终端"), Answer_Ok);
  dup2(kept, STDERR_FILENO);
  EXPECT_EQ(fcntl(pipe_ends[1], F_GETFL) & O_NONBLOCK, 0) << "the stream is shared with others";
}

TEST(Front, Charts_Show_What_Is_Plotted_In_Windows_Of_Their_Own_Until_Their_End) {
  C_Scripted_Front_Holder front;
  const CMyArray<double> x = Array({1.0, 2.0, 3.0});
  const CMyArray<double> y = Array({1.0, 4.0, 9.0, 16.0});  // a point without a partner is left out
  auto chart = std::make_unique<CKestrunePlot>();
  CKestrunePlot other;
  other.SetDynamicAdjustRange(0);
  EXPECT_EQ(chart->Plot(L"温度", x, y, 0, 500, 400, CKestruneGraph::Line_Solid, L"备注"), 1);
  EXPECT_EQ(other.BeImageWindowCreate(), 0);
  other.Plot(L"厚度", y, x, 0, 500, 400, CKestruneGraph::Line_None, L"");
  const C_Chart_Model first = front->Shown()[0].chart, second = front->Shown()[1].chart;
  EXPECT_EQ(first.title + first.note + second.title + second.note, L"温度备注厚度");
  for (const C_Chart_Model& model : {first, second}) EXPECT_EQ(model.x.size() + model.y.size(), 6U);
  EXPECT_TRUE(first.axes_follow && first.joined && !second.axes_follow && !second.joined);
  chart.reset();
  int open = 0;
  for (unsigned number = 0; number < 100; ++number) open += front->Is_Chart_Open(number) ? 1 : 0;
  EXPECT_EQ(open, other.BeImageWindowCreate()) << "a chart outlives its object";
}

// Runs in a process of its own, started below.
TEST(Front, DISABLED_Shows_Two_Boxes) {
  for (int i = 0; i < 2; ++i) EXPECT_EQ(Message_Box(L"一个消息"), Answer_Ok);
}

TEST(Front, Says_Once_Why_There_Is_No_Desktop) {
  const C_Temp_Folder folder;
  std::filesystem::copy_file("/proc/self/exe", "program");
  const std::string run =
      "./program --gtest_filter=Front.DISABLED_Shows_Two_Boxes --gtest_also_run_disabled_tests 2>&1 >/dev/null";
  EXPECT_EQ(Shell(run).output, "一个消息\n一个消息\n");
  const std::string missing = Shell("DISPLAY=:77 " + run).output;
  EXPECT_THAT(missing, HasSubstr("liborsanta_desktop.so is not beside"));
  EXPECT_EQ(std::count(missing.begin(), missing.end(), '\n'), 3);
  std::ofstream("liborsanta_desktop.so") << "no library";
  EXPECT_THAT(Shell("DISPLAY=:77 " + run).output, HasSubstr("the desktop front cannot be loaded"));
}

}  // namespace
}  // namespace orsanta
