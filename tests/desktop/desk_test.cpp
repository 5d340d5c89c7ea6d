// The panel on a managed desk: which window stands on which, which of them may be used, and what the operator is told.
#include <gtest/gtest.h>

#include <QScreen>
#include <QWindow>
#include <atomic>
#include <regex>

#include "common/command.h"
#include "common/temp_folder.h"
#include "desktop/virtual_display.h"
#include "desktop/windows.h"
#include "support/dialog/dialog.h"
#include "support/dialog/message_box.h"
#include "support/dialog/small_dialog.h"
#include "support/dialog/subject.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

constexpr char Panel[] = "面板";

// A panel of two stations as the real one, whose commands ask, show a box, or take their time.
class C_Panel : public CParameterInOutDlg, public CParameterInOutDlgInterface {
 public:
  // has_frame: as the desk draws it.
  explicit C_Panel(bool has_frame) {
    SetCaptionName(L"面板");
    for (int i = 0; i < 2; ++i) {
      SetColumnStation(i, i + 1);
      int id = i * 50;
      for (const wchar_t* caption : {L"设定", L"提示", L"慢", L"测量", L"高级"})
        AddButton(caption, i, 10.0F, 1, id++, this, 1, 1.0F);
    }
    AddDataDynamicDisp(L"状态", 0, 10.0F, 2, this, 100, 49, 1, 1.5F);
    m_Thread = std::thread([this] { DoParameterDlg(1, 0, 1.0F, 0, nullptr, nullptr, 1); });
    EXPECT_TRUE(Wait_On_Qt([has_frame] { return Stands(has_frame); }));
  }
  ~C_Panel() override {
    On_Qt([] {
      if (QWidget* window = Find_Window(Panel)) window->close();
    });
    m_Thread.join();
  }

  void OnCtrlButton(int id, long, long) override {
    const int command = id % 50;
    if (command == 0) C_Small_Dialog().Number(L"设定推力(g)", m_Force, {0.0, 1000.0}).Ask();
    if (command == 1) Message_Box(L"请确认");
    if (command == 2) Sleep(400);
    if (command == 3) ++measured;
    if (command == 4) Show_Advanced();
  }
  void OnCtrlDynamicDisp(int, std::wstring& text, long) override { text = std::to_wstring(++refreshes); }

  std::atomic<int> measured = 0;
  std::atomic<int> refreshes = 0;

 private:
  // True once the panel has the keyboard and its final place, at which the pointer finds its buttons.
  static bool Stands(bool has_frame) {
    const QWidget* window = Find_Window(Panel);
    if (window == nullptr || !window->isActiveWindow() || !window->windowHandle()->isExposed()) return false;
    const bool is_placed = window->geometry().bottom() == window->screen()->availableGeometry().bottom();
    return is_placed && window->windowHandle()->frameMargins().isNull() != has_frame;
  }

  void Show_Advanced() {
    CParameterInOutDlg advanced;
    advanced.SetCaptionName(L"高级窗口");
    for (int i = 0; i < 18; ++i) advanced.AddButton(L"功能", 0, 20.0F, 1, 0, nullptr, 1, 1.0F);
    advanced.DoParameterDlg(1, 0, 1.0F, 0, nullptr, nullptr, 1);
  }

  double m_Force = 100.0;
  std::thread m_Thread;
};

bool Has_Keyboard(const char* title) {
  const QWidget* window = Find_Window(title);
  return window != nullptr && window->isActiveWindow();
}

std::string Id_Of(const char* title) {
  QString id;
  On_Qt([&] { id = "0x" + QString::number(Find_Window(title)->winId(), 16); });
  return id.toStdString();
}

// The output of a command that works on the test's display.
std::string On_Display(const std::string& command) {
  return Shell("export DISPLAY=" + std::string(std::getenv("DISPLAY")) + "; " + command + " 2>&1").output;
}

// A property of the display's root window, or of the window with that title.
std::string Property(const std::string& name, const char* title = nullptr) {
  return On_Display("xprop " + (title == nullptr ? "-root" : "-id " + Id_Of(title)) + " " + name);
}

// Clicks into the panel where nothing can be pressed.
void Click_Blank_Spot() {
  Click_With_Pointer([] { return Find_Window(Panel)->findChild<QWidget*>("status_line"); }, QPoint(8, 8));
}

// Of the windows with these titles, from the lowest to the highest.
bool Stand_In_Order(std::initializer_list<const char*> titles) {
  std::string order;
  for (const char* title : titles) order += Id_Of(title) + ".*";
  return std::regex_search(Property("_NET_CLIENT_LIST_STACKING"), std::regex(order));
}

bool Is_Active(const char* title) {
  return Property("_NET_ACTIVE_WINDOW").find(Id_Of(title)) != std::string::npos;
}

// With frames around the windows, or on a bare display.
class Desk : public ::testing::TestWithParam<bool> {
 protected:
  void SetUp() override {
    if (!C_Virtual_Display::Is_There())
      GTEST_SKIP() << "no Xvfb on this machine; install the package xvfb to test real windows";
    Front();
    if (!GetParam()) return;
    m_Manager.emplace();
    if (!m_Manager->Works()) GTEST_SKIP() << "no openbox on this machine; install the package openbox";
  }

 private:
  std::optional<C_Managed_Desk> m_Manager;
};

INSTANTIATE_TEST_SUITE_P(, Desk, ::testing::Bool(), [](const auto& run) { return run.param ? "With_Frames" : "Bare"; });

TEST_P(Desk, Presses_Say_What_Is_To_Be_Answered_First_Wait_For_A_Command_And_Are_Overtaken_By_Closing) {
  C_Panel panel(GetParam());
  for (const char* opens : {"设定", "提示"}) {
    const std::string title = std::string("微米仪2 ") + opens;
    Click_With_Pointer([&] { return Find_Button(Panel, opens, 1); });
    ASSERT_TRUE(Wait_On_Qt([&] { return Find_Window(title.c_str()) != nullptr; }));
    const int refreshed = panel.refreshes;
    Click_With_Pointer([&] { return Find_Button(Panel, "测量"); });
    EXPECT_TRUE(Wait_On_Qt(
        [&] { return Find_By_Text<QLabel>(Find_Window(Panel), ("请先处理：" + title).c_str()) != nullptr; }));
    On_Qt([&] {
      Find_Window(Panel)->close();
      EXPECT_EQ(Find_Button(Panel, opens, 1)->property("command"), "asks");
    });
    EXPECT_TRUE(Eventually([&] { return panel.refreshes > refreshed + 3; })) << "displays go on";
    EXPECT_TRUE(Wait_On_Qt([&] { return Has_Keyboard(title.c_str()); }));
    On_Qt([&] { Click(Find_Window(title.c_str())->findChild<QPushButton*>("confirm")); });
    EXPECT_TRUE(Wait_On_Qt([&] { return Find_Window(title.c_str()) == nullptr && Has_Keyboard(Panel); }));
  }
  EXPECT_EQ(panel.measured, 0);
  On_Qt([] {
    Click(Find_Button(Panel, "慢"));
    for (int i = 0; i < 3; ++i) Click(Find_Button(Panel, "测量"));
    EXPECT_EQ(Find_Button(Panel, "测量")->property("command"), "waiting");
  });
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Button(Panel, "慢")->property("command") == "running"; }));
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Button(Panel, "测量")->property("command") == ""; }));
  EXPECT_EQ(panel.measured, 1);
  On_Qt([] {
    for (const char* button : {"慢", "测量"}) Click(Find_Button(Panel, button));
    Find_Window(Panel)->close();
  });
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Window(Panel) == nullptr; }));
  EXPECT_EQ(panel.measured, 1);
}

// The box of a station's own thread blocks none of the windows under it.
TEST_P(Desk, A_Window_Stands_Above_Its_Owner_And_A_Box_Of_Another_Thread_Above_All) {
  C_Panel panel(GetParam());
  On_Qt([] { Click(Find_Button(Panel, "高级")); });
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("高级窗口") != nullptr; }));
  if (GetParam()) {
    EXPECT_TRUE(Wait_On_Qt([] { return Has_Keyboard("高级窗口"); }));
    EXPECT_NE(Property("WM_TRANSIENT_FOR", "高级窗口").find(Id_Of(Panel)), std::string::npos);
    Click_Blank_Spot();
    EXPECT_TRUE(Eventually([] { return Is_Active(Panel); }));
    EXPECT_TRUE(Stand_In_Order({Panel, "高级窗口"}));
  }
  std::thread lane([] {
    const C_Subject_Scope subject({2});
    Message_Box(L"等待测量值稳定超时");
  });
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("微米仪2") != nullptr; }));
  On_Qt([] { Click(Find_Button(Panel, "测量")); });
  EXPECT_TRUE(Eventually([&] { return panel.measured == 1; }));
  On_Qt([] { Click(Find_Button(Panel, "设定")); });
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("微米仪1 设定") != nullptr && Find_Window("微米仪2") != nullptr; }));
  if (GetParam()) {
    Click_Blank_Spot();
    EXPECT_TRUE(Eventually([] { return Is_Active("微米仪1 设定"); })) << "what has to be answered comes back by itself";
    EXPECT_TRUE(Eventually([] { return Stand_In_Order({Panel, "高级窗口", "微米仪1 设定", "微米仪2"}); }));
    On_Display("xdotool windowminimize " + Id_Of(Panel));
    for (const char* title : {Panel, "高级窗口", "微米仪1 设定"})
      EXPECT_TRUE(Eventually([&] { return Property("WM_STATE", title).find("Iconic") != std::string::npos; })) << title;
    On_Display("xdotool windowactivate " + Id_Of(Panel));
    EXPECT_TRUE(Eventually([] { return Property("WM_STATE", "微米仪1 设定").find("Normal") != std::string::npos; }));
  }
  On_Qt([] { QTest::keyClick(Find_Window("微米仪1 设定"), Qt::Key_Escape); });
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Window("微米仪1 设定") == nullptr && Find_Window("微米仪2") != nullptr; }));
  On_Qt([] { Click(Find_Window("微米仪2")->findChild<QPushButton*>("confirm")); });
  lane.join();
  if (GetParam()) return;  // the line still says why the blank spot did nothing
  On_Qt([] {
    EXPECT_TRUE(Find_Window(Panel)->findChild<QLabel*>("status_line")->text().endsWith("微米仪2：等待测量值稳定超时"))
        << "an answered box can be read again";
  });
}

// Beside a panel of fourteen stations. At the end it is stopped, and there is no more room in its pipe.
TEST_P(Desk, The_Simulator_Strip_Covers_Nothing_Takes_No_Keyboard_And_Holds_Up_Nobody) {
  if (!GetParam()) GTEST_SKIP() << "a bare display has no button to close the panel";
  const C_Temp_Folder folder;
  EXPECT_EQ(On_Display("timeout 40 " BUILT_PROGRAM R"( panel --stations 14 2>/dev/null & host=$!
      find() { until xdotool search --onlyvisible --name $1; do sleep 0.05; done | tail -n 1; }
      panel=$(find ^Orsanta) strip=$(find 模拟台架)
      [ $(xdotool getactivewindow) = $panel ] && echo the panel has the keyboard
      at() { xwininfo -id $1 | sed -n "s/.*$2: *//p"; }
      [ $(($(at $panel 'Absolute upper-left Y') + $(at $panel Height))) -le $(at $strip 'Absolute upper-left Y') ] &&
        echo apart
      pid=$(xdotool getwindowpid $strip)
      kill -STOP $pid; timeout 0.3 cat /dev/zero > /proc/$pid/fd/0
      while xdotool search --onlyvisible --name ^Orsanta >/dev/null; do xdotool key alt+F4; sleep 0.2; done
      wait $host; echo ended with $?)"),
            "the panel has the keyboard\napart\nended with 0\n");
}

}  // namespace

}  // namespace orsanta
