// Takes the pictures of the operator's guide: a host with four stations on the simulator, and an operator who works the
// real windows on a display of the program's own. Usage: screenshots FOLDER
#include <QComboBox>
#include <QLineEdit>
#include <QPixmap>
#include <QScreen>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>
#include <vector>

#include "common/temp_folder.h"
#include "desktop/virtual_display.h"
#include "desktop/windows.h"
#include "orsanta/orsanta.h"
#include "simulator/simulator.h"

namespace orsanta {

namespace {

constexpr int Stations = 4;
constexpr double Block_Mm = 5.0;

void Rest(int ms) {
  std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

// A step that does not come about ends the program: the pictures would show something else than they say.
void Must(bool done, const char* what) {
  if (done) return;
  fprintf(stderr, "screenshots: %s did not come about\n", what);
  _exit(1);
}

// The dialog on top of all others; null while there is none.
QWidget* Top_Dialog() {
  QWidget* top = nullptr;
  int highest = 0;
  for (QWidget* window : QApplication::topLevelWidgets()) {
    const int number = window->objectName().startsWith("dialog_") ? window->objectName().mid(7).toInt() : 0;
    if (!window->isVisible() || number <= highest) continue;
    highest = number;
    top = window;
  }
  return top;
}

// The picture in its 256 most frequent colours, which makes the file small and shows no difference in windows.
QImage With_Few_Colours(const QImage& picture) {
  const QImage image = picture.convertToFormat(QImage::Format_RGB32);
  std::map<QRgb, int> counts;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) ++counts[image.pixel(x, y)];
  std::vector<std::pair<int, QRgb>> order;
  order.reserve(counts.size());
  for (const auto& [colour, count] : counts) order.emplace_back(-count, colour);
  std::sort(order.begin(), order.end());
  order.resize(std::min<size_t>(order.size(), 256));
  QList<QRgb> table;
  for (const auto& [count, colour] : order) table.append(colour);
  return image.convertToFormat(QImage::Format_Indexed8, table, Qt::ThresholdDither);
}

class C_Operator {
 public:
  explicit C_Operator(std::filesystem::path folder) : m_Folder(std::move(folder)) {}

  void Work() {
    First_Start();
    Panel_With_Results();
    Reference_Prompt();
    Refused_Force();
    Advanced_And_Chart();
    Calibration();
    Box_Over_A_Measurement();
    On_Qt([] { Find_Window("控制系统")->close(); });
  }

 private:
  void First_Start() {
    Must(Wait_On_Qt([] { return Shows("起始测微仪id"); }), "the first start");
    On_Qt([] { Top_Dialog()->findChildren<QComboBox*>().at(1)->setCurrentIndex(Stations - 1); });
    Save("start", true);
    On_Qt([] { Click(Top_Dialog()->findChild<QPushButton*>("confirm")); });
    Must(Wait_On_Qt([] { return Find_Window("控制系统") != nullptr; }, 30000), "the panel");
  }

  void Panel_With_Results() {
    for (int n = 1; n <= Stations; ++n) {
      Set_Ans_Offset(n, Block_Mm);
      Check_User_Zero(n);
      simulator::Place_Part(n, 2.0 + 0.3567 * n);
      Press("测量", n - 1);
    }
    for (int n = 1; n <= Stations; ++n) Wait_Result(n);
    Press("测量回位", 0);
    Must(Wait_On_Qt([] { return Get_Force_Back_Finish(1) == 1; }, 10000), "the return of the probe");
    Rest(400);
    Save("panel", false);
    for (int n = 1; n <= Stations; ++n) Press("测量回位", n - 1);
    for (int n = 1; n <= Stations; ++n)
      Must(Wait_On_Qt([n] { return Get_Force_Back_Finish(n) == 1; }, 10000), "a return");
  }

  void Reference_Prompt() {
    simulator::Place_Part(1, Block_Mm);
    Press("基准面标定", 0);
    Must(Wait_On_Qt([] { return !Find_Boxes("需要操作员密码").isEmpty(); }), "the gate's box");
    Save("gate_box", true, "需要操作员密码");
    Answer_Box("需要操作员密码");
    Must(Wait_On_Qt([] { return Shows("输入密码"); }), "the password");
    Save("gate", true);
    Type_And_Confirm("mocha");
    Must(Wait_On_Qt([] { return Shows("微米仪1基准面矫正"); }), "the reference");
    Save("reference", true);
    On_Qt([] { Click(Top_Dialog()->findChild<QPushButton*>("confirm")); });
    Must(Wait_On_Qt([] { return Get_Force_Back_Finish(1) == 1 && !Is_Busy(); }, 20000), "the reference's landing");
  }

  void Refused_Force() {
    Press("设定推力", 0);
    Must(Wait_On_Qt([] { return Shows("设定推力(g)"); }), "the force");
    Type_And_Confirm("20000");
    Must(Wait_On_Qt([] { return Top_Dialog()->findChild<QLineEdit*>()->property("refused").toBool(); }), "a refusal");
    Save("refused", true);
    Type_And_Confirm("100");
    Must(Wait_On_Qt([] { return !Is_Busy(); }), "the force's end");
  }

  void Advanced_And_Chart() {
    Press("高级功能", 0);
    Must(Wait_On_Qt([] { return Shows("更改密码", true); }), "the service gate");
    Save("service_gate", true);
    On_Qt([] { Top_Dialog()->findChildren<QLineEdit*>().at(2)->setText("6000"); });  // no lock while measuring
    Type_And_Confirm("mocha");
    Must(Wait_On_Qt([] { return Top_Dialog()->windowTitle() == "电机1 高级功能"; }), "the advanced dialog");
    Rest(200);
    Save("advanced", false);
    On_Qt([] { Click(Find_By_Text<QPushButton>(Top_Dialog(), "清除曲线数据")); });
    for (int i = 0; i < 40; ++i) {
      simulator::Place_Part(1, 2.5 + 0.004 * std::sin(0.4 * i) + 0.0002 * (i % 5));
      Measure(1);
    }
    On_Qt([] { Click(Find_By_Text<QPushButton>(Top_Dialog(), "测量位置曲线")); });
    Must(Wait_On_Qt([] { return Find_Window("测量尺寸") != nullptr; }), "the chart");
    On_Qt([] {
      QWidget* view = Find_Window("测量尺寸")->findChild<QWidget*>("chart_view");
      const QPointF place(view->width() * 0.45, view->height() * 0.5);
      QMouseEvent move(QEvent::MouseMove, place, view->mapToGlobal(place), Qt::NoButton, Qt::NoButton, Qt::NoModifier);
      QApplication::sendEvent(view, &move);
    });
    On_Qt([&] { Store(Find_Window("测量尺寸")->grab(), "chart"); });
    On_Qt([] { Find_Window("测量尺寸")->close(); });
  }

  void Calibration() {
    On_Qt([] { Click(Find_By_Text<QPushButton>(Top_Dialog(), "推力矫正")); });
    Must(Wait_On_Qt([] { return Shows("请输入测试最大电流(A)"); }), "the calibration");
    Save("calibration", true);
    On_Qt([] { Click(Top_Dialog()->findChild<QPushButton*>("cancel")); });
    Must(Wait_On_Qt([] { return Top_Dialog()->windowTitle() == "电机1 高级功能" && !Is_Busy(); }),
         "the calibration's end");
    On_Qt([] { Top_Dialog()->close(); });
    Must(Wait_On_Qt([] { return Top_Dialog() == Find_Window("控制系统") && !Is_Busy(); }), "the panel again");
  }

  // The box of one station stands open while the others measure on: the third is still waiting for its probe to settle
  // when the picture is taken.
  void Box_Over_A_Measurement() {
    simulator::Set_Restless(2, 0.05);  // never settles
    simulator::Set_Restless(3, 0.05);
    Press("首次慢速测量", 1);
    Must(Wait_On_Qt([] { return Box() != nullptr && !Is_Busy(); }, 60000), "the time-out's box");
    for (const int n : {1, 4, 3}) Press("测量", n - 1);
    Must(Wait_On_Qt([] { return Get_Force_Back_Finish(3) == 0 && simulator::True_Force(3) > 0.0; }, 10000),
         "a measurement");
    Save("message", false);
    Close_Box();
    Must(Wait_On_Qt([] { return Box() != nullptr; }, 60000), "the third station's box");
    Close_Box();
    for (const int n : {1, 3, 4}) Press("测量回位", n - 1);
    for (int n = 1; n <= Stations; ++n)
      Must(Wait_On_Qt([n] { return Get_Force_Back_Finish(n) == 1 && !Is_Busy(); }, 30000), "the last return");
  }
  static void Close_Box() {
    On_Qt([] { Click(Box()->findChild<QPushButton*>("confirm")); });
    Must(Wait_On_Qt([] { return Box() == nullptr; }), "the end of a box");
  }

  static QWidget* Box() {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && window->objectName() == "message_box") return window;
    }
    return nullptr;
  }
  static bool Is_Busy() {
    return Find_Window("控制系统")->findChild<QLabel*>("status_line")->text().startsWith("正在执行");
  }
  static bool Shows(const QString& caption, bool is_tick_box = false) {
    QWidget* top = Top_Dialog();
    if (top == nullptr) return false;
    return is_tick_box ? Find_By_Text<QAbstractButton>(top, caption) != nullptr
                       : Find_By_Text<QLabel>(top, caption) != nullptr;
  }
  // The button with the caption in a column: the buttons of one row stand in the order of the columns.
  static void Press(const QString& caption, int column) {
    On_Qt([&] {
      int place = column;
      for (QPushButton* button : Find_Window("控制系统")->findChildren<QPushButton*>()) {
        if (button->text().startsWith(caption) && (button->text() == caption || button->text().contains('(')) &&
            place-- == 0)
          return Click(button);
      }
      Must(false, "a button");
    });
  }
  static void Answer_Box(const QString& text) {
    On_Qt([&] { Click(Find_Boxes(text).front()->findChild<QPushButton*>("confirm")); });
  }
  static void Type_And_Confirm(const QString& text) {
    On_Qt([&] {
      auto* edit = Top_Dialog()->findChild<QLineEdit*>();
      edit->selectAll();
      QTest::keyClicks(edit, text);
      QTest::keyClick(edit, Qt::Key_Return);
    });
    Rest(100);
  }
  static void Wait_Result(int station) {
    double thickness = 0.0, force = 0.0;
    Must(Wait_On_Qt([&] { return get_ans(station, &thickness, &force) == 1; }, 20000), "a result");
  }
  static void Measure(int station) {
    do_test(station, ORSANTA_TASK_MEASURE);
    Wait_Result(station);
    do_test(station, ORSANTA_TASK_FORCE_BACK);
    Must(Wait_On_Qt([=] { return Get_Force_Back_Finish(station) == 1; }, 10000), "a return");
  }

  // Of the whole screen, or of the topmost dialog or the box with that text alone.
  void Save(const char* name, bool alone, const QString& box = QString()) {
    Rest(300);
    On_Qt([&] {
      if (!alone) return Store(QApplication::primaryScreen()->grabWindow(0), name);
      Store((box.isEmpty() ? Top_Dialog() : Find_Boxes(box).front())->grab(), name);
    });
  }
  void Store(const QPixmap& picture, const char* name) {
    const std::filesystem::path file = m_Folder / (std::string(name) + ".png");
    Must(With_Few_Colours(picture.toImage()).save(QString::fromStdString(file.string()), "PNG", 0),
         "writing a picture");
    printf("%s\n", file.c_str());
  }

  std::filesystem::path m_Folder;
};

}  // namespace

}  // namespace orsanta

// NOLINTNEXTLINE(bugprone-exception-escape): one ends the program with its message
int main(int argc, char** argv) {
  using namespace orsanta;
  if (argc != 2 || !std::filesystem::is_directory(argv[1])) {
    fprintf(stderr, "usage: screenshots FOLDER, where FOLDER is there\n");
    return 2;
  }
  const std::filesystem::path folder = std::filesystem::absolute(argv[1]);
  if (!C_Virtual_Display::Start()) {
    fprintf(stderr, "screenshots: Xvfb could not be started; install the package xvfb\n");
    return 1;
  }
  const C_Temp_Folder stores;
  simulator::Reset();
  for (int n = 1; n <= Stations; ++n) simulator::Place_Part(n, Block_Mm);
  std::thread at_the_panel([&] { C_Operator(folder).Work(); });
  Orsanta_dll_init(0);
  show_dlg();
  at_the_panel.join();
  Orsanta_dll_uninit();
  return 0;
}
