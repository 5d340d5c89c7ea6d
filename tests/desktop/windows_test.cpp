// The windows of the desktop front on a display of the test's own, worked with mouse and keys.
#include "desktop/windows.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/file.h>

#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QMessageBox>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QWheelEvent>
#include <QWindow>
#include <algorithm>
#include <clocale>
#include <cmath>
#include <future>

#include "common/command.h"
#include "common/failed_check.h"
#include "common/temp_folder.h"
#include "common/thread_levels.h"
#include "desktop/virtual_display.h"
#include "support/dialog/message_box.h"

// What the desktop's own libraries keep until the process ends.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions() {
  return "leak:libfontconfig\nleak:libdbus\n";
}

namespace orsanta {

namespace {

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::FieldsAre;

using enum C_Control_Kind;

C_Control_Model Control(C_Control_Kind kind, const std::wstring& caption, int column) {
  return {.kind = kind, .caption = caption, .column = column, .text = L"", .items = {}};
}

// As wide and as high as the operator's panel with that many stations.
C_Dialog_Model Panel_Model(int stations) {
  C_Dialog_Model model{.title = L"面板", .controls = {}, .shows_stations = true};
  for (int i = 0; i < stations; ++i) {
    model.stations[i] = i + 1;
    for (int k = 0; k < 11; ++k) model.controls.push_back(Control(Button, L"按钮" + std::to_wstring(k), i));
    model.controls.push_back(Control(Dynamic_Display, L"状态", i));
    model.controls.back().rows = 2;
    model.controls.back().text_scale = 1.5F;
  }
  model.controls.push_back(Control(Button, L"全部", stations));
  return model;
}

// A dialog with one of each control that takes an entry.
C_Dialog_Model Form_Model(int owner) {
  C_Dialog_Model model{.title = L"推力", .confirms = true, .controls = {}, .owner = owner};
  model.controls = {
      {.kind = Number_Edit, .caption = L"设定推力(g)", .text = L"100.000", .has_range = true, .max = 1e4, .items = {}},
      Control(Check_Box, L"更改密码", 0),
      {.kind = Dropdown, .caption = L"波特率", .text = L"", .selected = 2, .items = {L"9600", L"19200", L"115200"}},
      {.kind = Text_Display, .caption = L"矫正", .text = L"请放好基准量块", .items = {}}};
  return model;
}

class Windows : public ::testing::Test {
 protected:
  using Kind = C_Dialog_Event::Kind;

  void SetUp() override {
    if (!C_Virtual_Display::Is_There())
      GTEST_SKIP() << "no Xvfb on this machine; install the package xvfb to test real windows";
    // A thread of the measuring system may be the first that shows something.
    std::thread([] {
      Become_Real_Time();
      Front();
    }).join();
    // A front that changes it turns every decimal point of the library into a comma.
    EXPECT_STREQ(setlocale(LC_NUMERIC, nullptr), "C");
  }

  // Opens the dialog and waits until its window stands and takes keys.
  int Open(const C_Dialog_Model& model) {
    const int dialog = Front().Open_Dialog(model, events);
    const QString title = QString::fromStdWString(model.title);
    EXPECT_TRUE(Wait_On_Qt([&] {
      const QWidget* window = Find_Window(title);
      return window != nullptr && window->isActiveWindow() && QApplication::focusWidget() != nullptr;
    }));
    return dialog;
  }
  void Close(int dialog) {
    Front().Close_Dialog(dialog);
    const QString name = QStringLiteral("dialog_%1").arg(dialog);
    EXPECT_TRUE(Wait_On_Qt([&] {
      return std::ranges::none_of(QApplication::topLevelWidgets(), [&](const QWidget* window) {
        return window->objectName() == name && window->isVisible();
      });
    }));
  }
  // The next event of the open dialogs, which must come and be of that kind.
  C_Dialog_Event Next(Kind kind) {
    const std::optional<C_Dialog_Event> event = events.Take();
    EXPECT_TRUE(event.has_value() && event->kind == kind);
    return event.value_or(C_Dialog_Event{kind, -1, std::vector<C_Control_Entry>(4)});
  }
  bool Is_Silent() { return !events.Take(100).has_value(); }
  static QPushButton* Panel_Button(const char* text) { return Find_Button("面板", text); }
  // How the button shows what became of its press.
  static QString Mark_Of(const char* text) { return Panel_Button(text)->property("command").toString(); }
  static bool Shows(const char* window, const char* text) {
    return Find_By_Text<QLabel>(Find_Window(window), text) != nullptr;
  }

  C_Kept_Events events;
};

TEST_F(Windows, Buttons_Answer_Mouse_And_Keys_And_Show_Their_Press) {
  for (const auto& [thread, levels] : Thread_Levels())
    EXPECT_THAT(levels, testing::Each(testing::StartsWith("nice"))) << thread;
  const int dialog = Open(Panel_Model(2));
  On_Qt([] {
    Click(Panel_Button("按钮3"));
    EXPECT_EQ(Mark_Of("按钮3"), "waiting");
  });
  EXPECT_EQ(Next(Kind::Press).control, 3);
  Front().Set_Command(dialog, 3, C_Command_State::Running);
  EXPECT_TRUE(Wait_On_Qt([] { return Shows("面板", "正在执行：微米仪1 按钮3") && Mark_Of("按钮3") == "running"; }));
  On_Qt([] {
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);  // a busy panel still takes presses
    QKeyEvent held(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, QString(), true);
    QApplication::sendEvent(QApplication::focusWidget(), &held);
    Click(Panel_Button("按钮3"));
    EXPECT_TRUE(Shows("面板", "微米仪1 按钮3：正在执行，请等它完成"));
  });
  EXPECT_EQ(Next(Kind::Press).control, 4);
  EXPECT_TRUE(Is_Silent()) << "a held key counts once, and so does a command that runs";
  Front().Set_Command(dialog, 3, C_Command_State::Asks);
  EXPECT_TRUE(Wait_On_Qt([] { return Mark_Of("按钮3") == "asks"; }));
  Front().Refuse_Press(dialog, 4, L"没有数据");
  EXPECT_TRUE(Wait_On_Qt([] { return Shows("面板", "微米仪1 按钮4：没有数据") && Mark_Of("按钮4").isEmpty(); }));
  Front().Set_Command(dialog, 3, C_Command_State::Ended);
  EXPECT_TRUE(Wait_On_Qt([] { return Mark_Of("按钮3").isEmpty(); }));
  Front().Set_Control_Text(dialog, 4, L"测量(手动模式)");
  EXPECT_TRUE(Wait_On_Qt([] { return Panel_Button("测量(手动模式)") != nullptr; }));
  // Escape must not take the panel away; its close button asks.
  On_Qt([] { QTest::keyClick(Find_Window("面板"), Qt::Key_Escape); });
  EXPECT_TRUE(Is_Silent());
  On_Qt([] { Find_Window("面板")->close(); });
  Next(Kind::Cancel);
  On_Qt([] { EXPECT_NE(Find_Window("面板"), nullptr) << "stays until it is closed"; });
  Close(dialog);
  EXPECT_TRUE(Is_Silent());
}

TEST_F(Windows, Four_Stations_Fit_The_Screen_And_Fourteen_Scroll) {
  for (const int stations : {4, 14}) {
    const int dialog = Open(Panel_Model(stations));
    std::vector<C_Station_Tile> tiles;  // in every state, with a thickness, so that the board is seen at work
    for (int i = 0; i < stations; ++i)
      tiles.push_back({i + 1, static_cast<C_Station_Condition>(i % 6), L"12.3456", L"200 g"});
    Front().Show_Stations(tiles);
    On_Qt([&] {
      QWidget* panel = Find_Window("面板");
      const QList<QWidget*> shown = panel->findChildren<QWidget*>("tile");
      EXPECT_EQ(shown.size(), stations);
      for (const QWidget* tile : shown) EXPECT_EQ(tile->visibleRegion(), QRegion(tile->rect()));
      EXPECT_EQ(shown.back()->accessibleDescription().section(' ', 1), "12.3456 200 g");
      EXPECT_TRUE(QRect(0, 0, 1280, 800).contains(panel->frameGeometry()));
      auto* scroll = panel->findChild<QScrollArea*>();
      EXPECT_EQ(scroll->horizontalScrollBar()->maximum() > 0, stations == 14);
      EXPECT_EQ(scroll->verticalScrollBar()->maximum(), 0);
      // The keyboard reaches what lies outside, and it comes into sight.
      QPushButton* last = Panel_Button("全部");
      for (int i = 0; i < 400 && QApplication::focusWidget() != last; ++i)
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
      EXPECT_EQ(QApplication::focusWidget(), last);
      EXPECT_FALSE(last->visibleRegion().isEmpty());
      for (QWidget* display : panel->findChildren<QWidget*>())
        EXPECT_TRUE(display->accessibleName() != QStringLiteral("状态") || display->height() >= 80);
    });
    Close(dialog);
  }
}

TEST_F(Windows, A_Form_Refuses_And_Goes_On_And_Boxes_Of_Any_Thread_Stand_Above_It) {
  const int panel = Open(Panel_Model(1));
  const int dialog = Open(Form_Model(panel));
  const auto edit = [] { return Find_Window("推力")->findChild<QLineEdit*>(); };
  On_Qt([&] {
    EXPECT_EQ(QApplication::focusWidget(), edit());
    EXPECT_TRUE(Shows("推力", "范围 0 到 10000"));
    EXPECT_TRUE(Shows("推力", "请放好基准量块"));
    Find_Window("推力")->findChild<QCheckBox*>()->click();
    QTest::keyClick(Find_Window("推力")->findChild<QComboBox*>(), Qt::Key_Up);
    QTest::keyClicks(edit(), "20000");  // over the number, which is selected
    QTest::keyClick(edit(), Qt::Key_Return);
  });
  EXPECT_THAT(Next(Kind::Confirm).entries, ElementsAre(FieldsAre(L"20000", _), FieldsAre(_, 1), FieldsAre(_, 1), _));
  Front().Refuse_Entry(dialog, 0, L"超出范围");
  EXPECT_TRUE(Wait_On_Qt([] { return Shows("推力", "超出范围"); }));
  On_Qt([&] {
    EXPECT_TRUE(edit()->property("refused").toBool());
    QTest::keyClicks(edit(), "150");
    EXPECT_FALSE(edit()->property("refused").toBool());
    EXPECT_TRUE(Shows("推力", "范围 0 到 10000"));
    Click(Find_By_Text<QPushButton>(Find_Window("推力"), "确定"));
  });
  EXPECT_EQ(Next(Kind::Confirm).entries.at(0).text, L"150");

  // Boxes of three threads, answered in an order of the person's own.
  const auto button = [](const char* text, const char* name) {
    return Find_Boxes(text).front()->findChild<QPushButton*>(name);
  };
  auto first = std::async(std::launch::async, [] { return Message_Box(L"第一"); });
  auto second = std::async(std::launch::async, [] { return Message_Box(L"第二", Box_Yes_No); });
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Boxes("第一").size() + Find_Boxes("第二").size() == 2; }));
  auto third = std::async(std::launch::async, [] { return Message_Box(L"第三", Box_Stop_Icon | Box_System_Modal); });
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Boxes("第三").size() == 1; }));
  On_Qt([] {
    QWidget* alarm = Find_Boxes("第三").front();
    EXPECT_TRUE((alarm->windowFlags() & Qt::WindowStaysOnTopHint) != 0);
    EXPECT_NE(alarm->findChild<QLabel*>("stop_icon"), nullptr);
    EXPECT_FALSE((Find_Boxes("第一").front()->windowFlags() & Qt::WindowStaysOnTopHint) != 0);
    // A key that was meant for another window does not answer a box that has just come up.
    QTest::keyClick(alarm, Qt::Key_Return);
    EXPECT_TRUE(alarm->isVisible());
  });
  Click_With_Pointer([&] { return button("第三", "confirm"); });
  EXPECT_EQ(third.get(), Answer_Ok);
  On_Qt([&] { Click(button("第二", "no")); });
  EXPECT_EQ(second.get(), Answer_No);
  EXPECT_EQ(first.wait_for(std::chrono::milliseconds(450)), std::future_status::timeout);
  On_Qt([] { QTest::keyClick(Find_Boxes("第一").front(), Qt::Key_Escape); });
  EXPECT_EQ(first.get(), Answer_Ok);
  On_Qt([] { QTest::keyClick(Find_Window("推力"), Qt::Key_Escape); });
  Next(Kind::Cancel);
  Close(dialog);
  Close(panel);
}

C_Chart_Model Chart(const wchar_t* title, int count) {
  C_Chart_Model model;
  model.title = title;
  for (int i = 0; i < count; ++i) {
    model.x.push_back(i);
    model.y.push_back(2.0 + 0.001 * std::sin(0.01 * i));
  }
  return model;
}

TEST_F(Windows, A_Chart_Follows_Zooms_And_Saves) {
  const C_Temp_Folder folder;
  constexpr unsigned Number = 71;
  EXPECT_FALSE(Front().Is_Chart_Open(Number));
  Front().Draw_Chart(Number, Chart(L"曲线一", 20));
  EXPECT_TRUE(Front().Is_Chart_Open(Number)) << "from the call on, so that a worker that looks at once goes on";
  // The window of a desktop without frames gets a head of its own as soon as it finds that out.
  ASSERT_TRUE(Wait_On_Qt([] {
    const QWidget* window = Find_Window("曲线一");
    return window != nullptr && !window->findChild<QWidget*>("header")->visibleRegion().isEmpty();
  }));
  On_Qt([] { Find_Window("曲线一")->resize(700, 500); });
  Front().Draw_Chart(Number, Chart(L"曲线二", 50000));
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("曲线二") != nullptr && Find_Window("曲线一") == nullptr; }));
  QImage all, zoomed, followed;
  On_Qt([&] {
    auto* view = Find_Window("曲线二")->findChild<QWidget*>("chart_view");
    EXPECT_EQ(Find_Window("曲线二")->size(), QSize(700, 500)) << "a redrawn chart keeps its size";
    all = view->grab().toImage();
    const QPointF middle(view->width() / 2.0, view->height() / 2.0);
    QWheelEvent wheel(middle, view->mapToGlobal(middle), QPoint(), QPoint(0, 240), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(view, &wheel);
    zoomed = view->grab().toImage();
    EXPECT_NE(zoomed, all);
  });
  C_Chart_Model again = Chart(L"曲线二", 50000);
  again.station = 3;
  Front().Draw_Chart(Number, again);
  Front().Raise_Chart(Number);
  On_Qt([&] {
    QWidget* chart = Find_Window("曲线二");
    auto* view = chart->findChild<QWidget*>("chart_view");
    EXPECT_EQ(view->grab().toImage(), zoomed) << "what the person looks at stays";
    Click(chart->findChild<QPushButton*>("follow"));
    EXPECT_EQ(view->grab().toImage(), all);
    EXPECT_EQ(chart->focusWidget(), view) << "the arrows go on moving the chart";
    Click(chart->findChild<QPushButton*>("save_csv"));
  });
  const auto save_as = [](const QString& name) {
    ASSERT_TRUE(Wait_On_Qt([] { return QApplication::activeModalWidget() != nullptr; }));
    On_Qt([&] {
      for (const QAbstractButton* button : QApplication::activeModalWidget()->findChildren<QAbstractButton*>())
        EXPECT_FALSE(button->text().contains(QRegularExpression("[A-Za-z]{2}"))) << qPrintable(button->text());
      auto* edit = QApplication::activeModalWidget()->findChild<QLineEdit*>();
      EXPECT_TRUE(edit->text().startsWith("微米仪3 曲线二 20")) << "a name that says what it is, and when";
      edit->setText(QDir::current().filePath(name));
      // Later: the question about a file that is there keeps this call.
      QMetaObject::invokeMethod(
          edit, [edit] { QTest::keyClick(edit, Qt::Key_Return); }, Qt::QueuedConnection);
    });
  };
  save_as("points.csv");
  On_Qt([] { Click(Find_Window("曲线二")->findChild<QPushButton*>("save_png")); });
  save_as("picture.png");
  EXPECT_TRUE(Wait_On_Qt([] { return QImage("picture.png").size().width() == 698; }));
  EXPECT_EQ(Shell("sed -n '1,2p;$=' points.csv").output, "序号,\"微米仪3 曲线二\"\n0,2\n50001\n");
  std::ofstream("points.csv") << "old";
  On_Qt([] { Click(Find_Window("曲线二")->findChild<QPushButton*>("save_csv")); });
  save_as("points.csv");
  const auto question = [] { return qobject_cast<QMessageBox*>(QApplication::activeModalWidget()); };
  ASSERT_TRUE(Wait_On_Qt([&] { return question() != nullptr; }));
  On_Qt([&] {
    EXPECT_EQ(question()->text(), "points.csv 已经存在。\n要替换它吗？");
    QTest::keyClick(question(), Qt::Key_Return);
  });
  ASSERT_TRUE(Wait_On_Qt([&] { return question() == nullptr; }));
  On_Qt([] { QTest::keyClick(QApplication::activeModalWidget(), Qt::Key_Escape); });
  EXPECT_EQ(File_Text("points.csv"), "old") << "the key that is pressed without reading loses nothing";

  On_Qt([] { QTest::keyClick(Find_Window("曲线二")->findChild<QWidget*>("chart_view"), Qt::Key_Plus); });
  Front().Draw_Chart(Number, Chart(L"曲线三", 50000));
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("曲线三") != nullptr; }));
  On_Qt([&] {
    EXPECT_EQ(Find_Window("曲线三")->findChild<QWidget*>("chart_view")->grab().toImage(), all)
        << "another kind, shown whole";
    Find_Window("曲线三")->close();
  });
  EXPECT_TRUE(Wait_On_Qt([] { return !Front().Is_Chart_Open(Number); }));
  C_Chart_Model late = Chart(L"曲线三", 5);
  late.opens = false;
  Front().Draw_Chart(Number, late);
  EXPECT_FALSE(Front().Is_Chart_Open(Number)) << "a worker that was about to draw opens nothing";
  Front().Draw_Chart(Number, Chart(L"曲线四", 5));
  ASSERT_TRUE(Wait_On_Qt([] { return Find_Window("曲线四") != nullptr; })) << "opens again";
  Front().Close_Chart(Number);
  EXPECT_TRUE(Wait_On_Qt([] { return Find_Window("曲线四") == nullptr; }));
}

// All that opens for fourteen stations, on a screen of that many pixels, which the scale makes larger.
void Open_On(const char* size, const char* scale, bool has_frames) {
  setenv("QT_SCALE_FACTOR", scale, 1);
  if (!C_Virtual_Display::Start(size)) _exit(0);
  std::optional<C_Managed_Desk> manager;
  if (has_frames) manager.emplace();
  C_Kept_Events events;
  C_Dialog_Model form = Form_Model(Front().Open_Dialog(Panel_Model(14), events));
  for (int i = 0; i < 14; ++i) form.controls.push_back(Control(Check_Box, L"自动测量电机", 0));
  Front().Open_Dialog(form, events);
  Front().Draw_Chart(1, Chart(L"曲线", 5));
  std::thread([] {
    Message_Box((L"无法写入 /" + std::wstring(200, L'x') + L"/参数：" + std::wstring(99, L'满')).c_str());
  }).detach();
  const auto fits = [&](QWidget* window) {
    const auto* text = window->findChild<QLabel*>("message");
    if (text != nullptr &&
        (text->heightForWidth(text->width()) > text->height() || text->sizeHint().width() > text->width()))
      return false;
    for (const char* name : {"tile", "confirm", "close", "message", "follow", "status_line"})
      for (QWidget* part : window->findChildren<QWidget*>(name))
        if (part->isVisible() && part->visibleRegion() != QRegion(part->rect())) return false;
    // A frame of an odd number of pixels counts as half a one more where the scale is 2.
    const QRect space = window->screen()->availableGeometry().adjusted(0, 0, 1, 1);
    const bool can_close = window->windowHandle()->frameMargins().isNull() != has_frames &&
                           window->findChild<QWidget*>("header")->isVisible() != has_frames;
    return can_close && space.contains(window->frameGeometry());
  };
  const bool all_fit = Wait_On_Qt([&] {
    QList<QWidget*> windows = QApplication::topLevelWidgets();
    windows.removeIf([](const QWidget* window) { return !window->isVisible(); });
    return windows.size() == 4 && std::ranges::all_of(windows, fits);
  });
  C_Virtual_Display::Stop();
  _exit(all_fit ? 0 : 1);
}

TEST(Display, Everything_Fits_The_Screen_And_Can_Be_Closed_On_It) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  for (const bool has_frames : {false, true}) {
    EXPECT_EXIT(Open_On("1024x768", "1", has_frames), ::testing::ExitedWithCode(0), "");
    EXPECT_EXIT(Open_On("1280x800", "2", has_frames), ::testing::ExitedWithCode(0), "");
  }
  EXPECT_EXIT(Open_On("1920x1080", "1", true), ::testing::ExitedWithCode(0), "");
}

TEST(Display, The_Panel_Command_Says_In_One_Line_That_There_Is_None) {
  const C_Outcome told = Shell("unset QT_QPA_PLATFORM; " BUILT_PROGRAM " panel 2>&1");
  EXPECT_EQ(told.output,
            "orsanta: the panel needs a display: no display: neither DISPLAY nor WAYLAND_DISPLAY is set\n");
  EXPECT_EQ(told.status, 1);
}

// The display goes away under an open dialog and an open box: both count as cancelled, and the process lives.
void Lose_Display() {
  if (!C_Virtual_Display::Start()) _exit(0);
  C_Kept_Events events;
  Front().Open_Dialog(Panel_Model(1), events);
  std::future<int> answer = std::async(std::launch::async, [] { return Message_Box(L"问题", Box_Yes_No); });
  if (!Wait_On_Qt([] { return Find_Boxes("问题").size() == 1; })) _exit(2);
  C_Virtual_Display::Stop();
  const std::optional<C_Dialog_Event> event = events.Take();
  const bool is_cancelled = answer.get() == Answer_No && event && event->kind == C_Dialog_Event::Kind::Cancel;
  _exit(is_cancelled && Message_Box(L"没有窗口") == Answer_Ok ? 0 : 3);
}

TEST(Display, A_Lost_Display_Cancels_What_Is_Open) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(Lose_Display(), ::testing::ExitedWithCode(0), "the system goes on without windows.*");
}

TEST(Display, A_Report_Is_Shown_Once_Its_Process_Has_Ended_And_Keeps_Nothing_Of_It) {
  // On a display of its own: the keys that answer the report must reach no window of another test.
  const std::string shared_display = C_Virtual_Display::Is_There() ? std::getenv("DISPLAY") : "";
  if (shared_display.empty() || !C_Virtual_Display::Start()) GTEST_SKIP() << "no Xvfb";
  GTEST_FLAG_SET(death_test_style, "fast");
  const C_Temp_Folder folder;
  const auto fail = [] {
    const int lock_file = open(".", O_RDONLY);  // of the kind that a store's folder is locked with
    MY_ASSERT_REPORT("what failed at " + std::to_string(flock(lock_file, LOCK_EX)));
  };
  EXPECT_EXIT(fail(), Ends_By_A_Failed_Check, "dump: test_desktop_");
  const std::string dump = Shell("printf %s *.dmp").output;
  EXPECT_EQ(flock(open(".", O_RDONLY | O_CLOEXEC), LOCK_EX | LOCK_NB), 0);

  // A window bears its process some time after it shows, and takes keys later still.
  const std::string search = "export DISPLAY=" + std::string(std::getenv("DISPLAY")) +
                             "; search() { xdotool search --onlyvisible --name '^Orsanta 已停止$' $* 2>&1; }; ";
  const std::string pid = Shell(search + "until search getwindowpid | grep -x '[0-9]*'; do sleep 0.1; done").output;
  const std::string process = "/proc/" + std::to_string(std::stoi(pid));
  EXPECT_THAT(File_Text(process + "/cmdline"),
              testing::AllOf(testing::StartsWith(std::string("orsanta_report\0what failed at 0\n", 32)),
                             testing::EndsWith(dump + '\0')));
  // An ended process that nobody has waited for yet has no command line.
  Shell(search + "while grep -qs . " + process + "/cmdline; do search windowfocus key Return; sleep 0.1; done");
  setenv("DISPLAY", shared_display.c_str(), 1);
}

}  // namespace

}  // namespace orsanta
