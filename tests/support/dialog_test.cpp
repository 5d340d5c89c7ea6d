// Dialogs, the console in the place of a front, and charts.
#include "support/dialog/dialog.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <unistd.h>

#include <limits>

#include "common/arrays.h"
#include "common/command.h"
#include "common/pty.h"
#include "common/scripted_front.h"
#include "common/temp_folder.h"
#include "simulated_clock/simulated_clock.h"
#include "support/dialog/chart.h"
#include "support/dialog/console_front.h"
#include "support/dialog/dialog_entry.h"

namespace orsanta {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Pair;

struct C_Values {
  std::wstring text = L"新密码";
  int plain = 7;
  Shared<int> ticked{1};
  double number = 1.0 / 3.0;
  Shared<double> shared_number{2.5};
  Shared<int> limited{6};
  int place = 9;  // outside the list

  bool operator==(const C_Values&) const = default;
};

// A dialog with every kind of control, bound to the values. Callbacks as functions, by id; the displays show a number
// that rises.
class C_Panel : public CParameterInOutDlg, public CParameterInOutDlgInterface {
 public:
  explicit C_Panel(C_Values& values) {
    CSmartPointer<CMyArray<std::wstring>, 0> items(1);
    items->Add(L"无串口");
    items->Add(L"COM1");
    SetCaptionName(L"面板");
    AddDataEdit(L"新密码", 0, 10.0F, values.text, 1, 0, nullptr);
    AddDataEdit(L"整数", 0, 11.0F, values.plain, 1, 0, nullptr);
    AddDataEditBool(L"勾选", 0, 10.0F, values.ticked, 1, 0, nullptr);
    AddDataEditRange(L"数值", 0, 10.0F, values.number, 0.0, 10.0, 3, 1, 0, nullptr);
    AddDataEditRange(L"数值2", 0, 10.0F, values.shared_number, -1.0, 1000.0, 3, 1, 0, nullptr);
    AddDataEditRange(L"范围", 0, 10.0F, values.limited, 4.0, 10.0, 1, 0, nullptr);
    AddDropdownList(L"串口号", 0, 10.0F, items, values.place, 1, 0, nullptr);
    AddDataDynamicDisp(L"状态", 1, 10.0F, 2, this, 100, 50, 1, 1.5F);
    AddDataDynamicDisp(L"温度", 1, 10.0F, 1, this, 70, 51, 1, 1.0F);
    AddDataDisp(L"提示", 1, 12.0F, values.text, 1, 3, 60, nullptr);
    AddButton(L"高级", 1, 10.0F, 1, 1, this, 1, 1.0F);
    AddButton(L"测量", 1, 10.0F, 1, 2, this, 1, 0.75F);
    AddBlank(2, 10.0F, 1, 1, 0, nullptr);
    AddButton(L"测量", 2, 10.0F, 1, 3, this, 1, 1.0F);
    AddButton(L"无", 2, 10.0F, 1, 0, this, 1, 1.0F);
  }
  int Show(int confirms) { return DoParameterDlg(1, 0, 1.0F, confirms, nullptr, nullptr, 1); }
  void OnCtrlButton(int id, long /*word1*/, long /*word2*/) override {
    presses.push_back(id);
    if (on_press.count(id) != 0) on_press[id]();
  }
  void OnCtrlDynamicDisp(int id, std::wstring& text, long /*word*/) override {
    if (++refreshes[id] % 2 == 0) text = std::to_wstring(refreshes[id]);  // every other time it leaves the text alone
  }
  std::vector<int> presses;
  std::map<int, std::function<void()>> on_press;
  std::map<int, int> refreshes;
};

class Dialog : public ::testing::Test {
 protected:
  // The person's answer to a new dialog over the values.
  int Confirmed(const C_Script& script) {
    front->Next_Dialog(script);
    return C_Panel(values).Show(1);
  }

  C_Simulated_Clock clock{1};
  C_Scripted_Front_Holder front;
  C_Values values;
  C_Panel panel{values};
};

TEST_F(Dialog, Shows_Its_Values_Writes_At_Confirmation_And_Only_Then_And_Keeps_What_Nobody_Touched) {
  C_Script changes;
  changes.Fill(L"新密码", L"摩卡").Fill(L"整数", L" -12 ").Fill(L"数值", L"0.1").Fill(L"数值2", L"１０．５");
  changes.Fill(L"范围", L"+4").Select(L"勾选", 0).Select(L"串口号", 1);
  EXPECT_EQ(Confirmed(C_Script(changes).Cancel()), 0);
  const C_Dialog_Model model = front->Shown()[0].dialog;
  std::wstring told;
  for (const C_Control_Model& control : model.controls)
    told += std::to_wstring(static_cast<int>(control.kind)) + control.caption + L":" + control.text + L" ";
  EXPECT_EQ(told,
            L"3新密码:新密码 4整数:7 6勾选: 5数值:0.333 5数值2:2.500 4范围:6 7串口号: "
            L"1状态: 1温度: 2提示:新密码 0高级: 0测量: 8: 0测量: 0无: ");
  EXPECT_EQ(values, C_Values());
  EXPECT_EQ(Confirmed(C_Script().Run([this] { values.shared_number = 100.0; }).Confirm()), 1);
  C_Values untouched;   // as shown, numbers to the bit
  untouched.place = 0;  // a place outside the list shows as the first
  EXPECT_EQ(values, untouched);
  EXPECT_EQ(Confirmed(C_Script(changes).Confirm()), 1);
  EXPECT_EQ(values, (C_Values{L"摩卡", -12, 0, 0.1, 10.5, 4, 1}));
}

// All bad entries are told at once, the first one last, a value that was out of range before among them; the dialog
// stays open until all are mended.
TEST_F(Dialog, Refuses_Bad_Entries_And_Then_Changes_Nothing) {
  values.number = 11.0;
  const C_Values before = values;
  C_Script script;
  script.Fill(L"新密码", L"不应写入").Fill(L"整数", L"99999999999").Fill(L"数值2", L"-1.5").Fill(L"范围", L"5.5");
  script.Select(L"串口号", 2).Confirm();
  script.Fill(L"整数", L"8").Fill(L"数值", L"1,5").Fill(L"数值2", L"0").Fill(L"范围", L"11").Select(L"串口号", -1);
  script.Confirm().Fill(L"数值", L"10.001").Fill(L"范围", L"4").Select(L"串口号", 0).Confirm();
  script.Run([&] { EXPECT_EQ(values, before) << "an entry was written beside a refused one"; });
  EXPECT_EQ(Confirmed(script.Fill(L"数值", L"10").Confirm()), 1);
  EXPECT_THAT(front->Refusals(),
              ElementsAre(L"串口号: 请选择一项", L"范围: 请输入整数,请输入 4 到 10 之间的数值",
                          L"数值2: 请输入 -1 到 1000 之间的数值", L"数值: 请输入 0 到 10 之间的数值",
                          L"整数: 请输入整数", L"串口号: 请选择一项", L"范围: 请输入 4 到 10 之间的数值",
                          L"数值: 请输入数字,请输入 0 到 10 之间的数值", L"数值: 请输入 0 到 10 之间的数值"));
  EXPECT_EQ(values, (C_Values{L"不应写入", 8, 1, 10.0, 0.0, 4, 0}));
}

TEST_F(Dialog, Shows_And_Reads_Numbers_In_One_Way_Everywhere) {
  EXPECT_EQ(Number_Text(-0.0005, 3), L"-0.001");
  EXPECT_EQ(Number_Text(std::numeric_limits<double>::max(), 16).size(), 309U + 1U + 16U);
  double value = 3.0;
  EXPECT_TRUE(Read_Typed(L"　－１．５ ", value));
  EXPECT_EQ(value, -1.5);
  EXPECT_TRUE(Read_Typed(L"\t−２e＋０1\t", value));
  EXPECT_EQ(value, -20.0);
  for (const wchar_t* bad :
       {L"", L" ", L"inf", L"nan", L"1e999", L"1 2", L"0x10", L"+", L"+-1", L"++1", L"1.5g", L"千"})
    EXPECT_FALSE(Read_Typed(bad, value)) << To_Utf8(bad);
}

// A front that sends what no control can send, and then closes the dialog.
class C_Unruly_Front : public C_Console_Front {
 public:
  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override {
    using C_Kind = C_Dialog_Event::Kind;
    for (const int control : {-1, 7, 99}) listener.On_Dialog_Event({C_Kind::Press, control, {}});
    listener.On_Dialog_Event({C_Kind::Confirm, -1, {model.confirms ? 1 : model.controls.size(), C_Control_Entry()}});
    return C_Console_Front::Open_Dialog(model, listener);
  }
};

TEST_F(Dialog, Takes_No_Event_That_Fits_No_Control) {
  Replace_Front(std::make_unique<C_Unruly_Front>());
  for (const int confirms : {0, 1}) EXPECT_EQ(panel.Show(confirms), 0);
  EXPECT_TRUE(panel.presses.empty());
  EXPECT_EQ(CParameterInOutDlg().DoParameterDlg(1, 0, 1.0F, 0, nullptr, nullptr, 1), 0) << "nothing was to confirm";
}

TEST_F(Dialog, Serves_Displays_By_Their_Periods_And_Presses_In_Between) {
  panel.on_press[3] = [&] {
    EXPECT_EQ(panel.SetCtrlWindowText(3, L"停止"), 1);
    EXPECT_EQ(front->Text_Of(L"面板", L"停止"), L"停止") << "the new caption must show from inside the press";
    std::wstring button, display;
    EXPECT_EQ(panel.GetCtrlWindowText(3, button) + panel.GetCtrlWindowText(60, display), 2);
    EXPECT_EQ(button + display, L"停止新密码");
    for (const int none : {77, 0})
      EXPECT_EQ(panel.SetCtrlWindowText(none, L"x") + panel.GetCtrlWindowText(none, display), 0);
    Sleep(1000);  // ten periods go by, and are not made up for
  };
  panel.on_press[0] = [] { Sleep(80); };  // a late refresh does not put off the next one
  C_Script script;
  script.Wait(1060).Run([&] {
    EXPECT_THAT(panel.refreshes, ElementsAre(Pair(50, 10), Pair(51, 15)));
    EXPECT_EQ(front->Text_Of(L"面板", L"状态") + L" " + front->Text_Of(L"面板", L"温度"), L"10 14");
  });
  script.Press(L"测量", 2).Press(L"无").Wait(345);
  front->Next_Dialog(script.Run([&] { EXPECT_THAT(panel.refreshes, ElementsAre(Pair(50, 15), Pair(51, 22))); }));
  EXPECT_EQ(panel.Show(0), 0);
  EXPECT_THAT(panel.presses, ElementsAre(3, 0)) << "0 is an id like any other";
}

// The panel's first button runs an inner dialog of one button, with or without a confirmation. The outer one stays
// alive, is usable unless the inner one confirms, and takes the inner one along when it closes.
TEST_F(Dialog, Nests_With_The_Outer_Dialog_Alive_And_Usable_Unless_The_Inner_One_Confirms) {
  for (const int confirms : {0, 1}) {
    C_Panel outer(values);
    outer.on_press[1] = [&] {
      CParameterInOutDlg advanced;
      advanced.SetCaptionName(L"高级功能");
      advanced.AddButton(L"标定", 0, 20.0F, 1, 12, &outer, 1, 1.0F);
      outer.presses.push_back(-1 - advanced.DoParameterDlg(1, 0, 1.0F, confirms, nullptr, nullptr, 1));
    };
    C_Script inner;
    inner.Press(L"标定").Run([&] { front->Press(L"面板", L"测量", 1); }).Wait(550);
    inner.Run([&] { EXPECT_GE(outer.refreshes[50], 5); }).Press(L"标定");
    front->On_Dialog(L"高级功能", inner.Run([&] { front->Cancel(L"面板"); }).Confirm());
    front->On_Dialog(L"面板", C_Script().Press(L"高级").Press(L"测量", 2));
    EXPECT_EQ(outer.Show(0), 0);
    // In their order; the inner dialog's end as the negative of its result, less 1.
    EXPECT_EQ(outer.presses, (confirms == 0 ? std::vector{1, 12, 2, 12, -1} : std::vector{1, 12, 12, -2, 3}));
  }
}

// A box of the dialog's own thread stands for a second: the displays go on, and presses under it do nothing, then or
// later. Its title is the button that asks, with the station of its column; a dialog without a title bears it too.
TEST_F(Dialog, A_Box_Is_Modal_To_The_Dialogs_Of_Its_Thread_And_Their_Displays_Go_On) {
  panel.SetColumnStation(1, 3);
  panel.on_press[2] = [&] {
    front->On_Box(L"请确认", Answer_Ok, 1005, [&] {
      EXPECT_THAT(panel.refreshes, ElementsAre(Pair(50, 10), Pair(51, 14)));
      EXPECT_TRUE(front->Press(L"面板", L"测量", 2) && front->Cancel(L"面板"));
      Sleep(10);
    });
    EXPECT_EQ(Message_Box(L"请确认"), Answer_Ok);
    CParameterInOutDlg edit;
    edit.AddDataEdit(L"数值", 0, 10.0F, values.text, 1, 0, nullptr);
    edit.DoParameterDlg(0, 1, 1.0F, 1, nullptr, nullptr, 1);
  };
  panel.on_press[3] = [&] {
    Refuse_Press(L"没有数据");
    EXPECT_TRUE(front->Press(L"面板", L"无") && front->Cancel(L"面板"));  // which overtakes the press
  };
  front->Next_Dialog(
      C_Script().Press(L"测量", 1).Run([&] { EXPECT_THAT(panel.presses, ElementsAre(2)); }).Press(L"测量", 2));
  panel.Show(0);
  EXPECT_THAT(panel.presses, ElementsAre(2, 3));
  EXPECT_THAT(front->Refusals(), ElementsAre(L"测量: 请先处理打开的窗口", L"测量: 没有数据"));
  std::wstring names;
  for (const C_Shown& shown : front->Shown())
    if (shown.kind == C_Shown::Kind::Dialog || shown.kind == C_Shown::Kind::Box) names += shown.name + L", ";
  EXPECT_EQ(names, L"面板, 微米仪3 测量, 微米仪3 测量, ");
}

TEST_F(Dialog, Of_One_Thread_Is_None_Of_Anothers) {
  const auto operate = [this] {
    const uint64_t opened_on = This_Thread_Number();
    C_Panel own(values);
    own.on_press[2] = [opened_on] {
      Sleep(100);  // which keeps the other thread from nothing
      EXPECT_EQ(This_Thread_Number(), opened_on);
    };
    EXPECT_EQ(own.Show(1), 1);
  };
  for (int id = 0; id < 2; ++id) front->Next_Dialog(C_Script().Press(L"测量", 1).Confirm());
  C_Thread other;
  other.Start("operator", operate);
  operate();
  other.Join();
  EXPECT_EQ(Now_Ms(), 100.0);
}

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
