// orsanta_strip: the simulator strip of `orsanta panel`, in which a newcomer does what hands and a machine do at the
// real gauge: put a part of some thickness under a probe, take it away, press the IO input of a station.
//
// It runs as a process of its own beside the host program, which starts it, and talks in lines of text.
//   out:  "part STATION MM", "remove STATION", "input STATION LEVEL"
//   in:   "state STATION POSITION_MM FORCE_G OUTPUT"; the end of the stream ends the program
// Usage: orsanta_strip STATIONS, or orsanta_strip --check, which tells by its status whether windows can be shown.
#include <unistd.h>

#include <QApplication>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/desk_space.h"
#include "desktop/display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr double Block_Mm = 5.0;     // what lies under each probe at first
constexpr double Thickest_Mm = 8.9;  // more does not fit under a lifted probe
constexpr int Button_Width = 52;     // pixels
constexpr int State_Width = 190;     // pixels
constexpr int Wide_Screen = 900;     // pixels, from which on the row has room for its name
constexpr int Show_After_Ms = 1500;  // after the panel, so that it lies above it
constexpr int Most_Stations = 14;
constexpr int Io_Channels = 8;  // of the IO card; stations beyond have none

// One line to the host. A host that has gone ends this program through the other stream.
void Tell(const std::string& line) {
  fputs((line + "\n").c_str(), stdout);
  fflush(stdout);
}

// One row along the bottom of the screen, where the panel leaves room for it: the station that is worked on, and what
// can be done with it.
class C_Strip : public QWidget {
 public:
  explicit C_Strip(int stations)
      : QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint), m_Stations(static_cast<size_t>(stations)) {
    setObjectName(QStringLiteral("simulator_strip"));
    setWindowTitle(QStringLiteral("模拟台架"));
    setAttribute(Qt::WA_ShowWithoutActivating);
    setStyleSheet(
        QString::fromUtf8("QWidget#simulator_strip { border-top: 4px solid #0B5CAD; } QPushButton, QLabel, "
                          "QComboBox, QDoubleSpinBox { font-size: 14px; } QPushButton { padding: 2px 4px; }"));
    auto* row = new QHBoxLayout(this);
    row->setContentsMargins(12, 6, 6, 4);
    auto* name = new QLabel(QStringLiteral("模拟台架：放零件、给信号"));
    const QRect space = Desk_Space(*this);
    row->addWidget(name);
    if (space.width() < Wide_Screen) name->hide();
    m_Choice = new QComboBox;
    for (int n = 1; n <= stations; ++n) m_Choice->addItem(QStringLiteral("工位 %1").arg(n));
    QObject::connect(m_Choice, &QComboBox::currentIndexChanged, this, [this] { Show_Chosen(); });
    row->addWidget(m_Choice);
    Add_Thickness(*row);
    Add_Button(*row, "放上", [this] { Tell("part " + Number() + " " + std::to_string(m_Thickness->value())); });
    Add_Button(*row, "取走", [this] { Tell("remove " + Number()); });
    // Held down it asks for a measurement, let go it asks for the probe to go back.
    m_Input = Add_Button(*row, "信号", [this] {
      Chosen().input_down = m_Input->isChecked();
      Tell("input " + Number() + (m_Input->isChecked() ? " 0" : " 1"));
    });
    m_Input->setCheckable(true);
    m_Input->setToolTip(QStringLiteral("IO 输入：按下测量，再按回位"));
    m_State = new QLabel;
    m_State->setMinimumWidth(State_Width);
    row->addWidget(m_State);
    row->addStretch(1);
    Add_Button(*row, "✕", [this] { close(); })->setAccessibleName(QStringLiteral("关闭"));
    setGeometry(space.left(), space.bottom() + 1, space.width(), Strip_Height());
    Show_Chosen();
  }

  void Show_State(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    size_t station = 0;
    double position = 0.0, force = 0.0;
    int output = 0;
    if (!(words >> word >> station >> position >> force >> output) || word != "state") return;
    if (station < 1 || station > m_Stations.size()) return;
    m_Stations[station - 1].state = QStringLiteral("%1 mm   %2 g   输出 %3")
                                        .arg(position, 0, 'f', 3)
                                        .arg(force, 0, 'f', 1)
                                        .arg(output != 0 ? QStringLiteral("● 1") : QStringLiteral("○ 0"));
    m_State->setText(Chosen().state);
  }

 private:
  struct C_Station {
    double thickness_mm = Block_Mm;
    bool input_down = false;
    QString state;
  };

  C_Station& Chosen() { return m_Stations[static_cast<size_t>(m_Choice->currentIndex())]; }
  std::string Number() const { return std::to_string(m_Choice->currentIndex() + 1); }

  void Show_Chosen() {
    m_Thickness->setValue(Chosen().thickness_mm);
    m_Input->setChecked(Chosen().input_down);
    m_Input->setEnabled(m_Choice->currentIndex() + 1 < Io_Channels);
    m_State->setText(Chosen().state);
  }

  void Add_Thickness(QHBoxLayout& row) {
    m_Thickness = new QDoubleSpinBox;
    m_Thickness->setRange(0.001, Thickest_Mm);
    m_Thickness->setDecimals(3);
    m_Thickness->setSingleStep(0.01);
    m_Thickness->setSuffix(QStringLiteral(" mm"));
    m_Thickness->setToolTip(QStringLiteral("零件厚度"));
    QObject::connect(m_Thickness, &QDoubleSpinBox::valueChanged, this,
                     [this](double value_mm) { Chosen().thickness_mm = value_mm; });
    row.addWidget(m_Thickness);
  }

  QPushButton* Add_Button(QHBoxLayout& row, const char* caption, const std::function<void()>& work) {
    auto* button = new QPushButton(QString::fromUtf8(caption));
    button->setFixedWidth(Button_Width);
    QObject::connect(button, &QPushButton::clicked, this, work);
    row.addWidget(button);
    return button;
  }

  std::vector<C_Station> m_Stations;
  QComboBox* m_Choice = nullptr;
  QDoubleSpinBox* m_Thickness = nullptr;
  QPushButton* m_Input = nullptr;
  QLabel* m_State = nullptr;
};

// Hands on whole lines from the host, and ends the program with the stream.
class C_Host_Lines {
 public:
  explicit C_Host_Lines(C_Strip& strip) : m_Strip(strip), m_Notifier(STDIN_FILENO, QSocketNotifier::Read) {
    QObject::connect(&m_Notifier, &QSocketNotifier::activated, &strip, [this] { Read(); });
  }

 private:
  void Read() {
    char bytes[4096];
    const ssize_t got = read(STDIN_FILENO, bytes, sizeof bytes);
    if (got <= 0) return QApplication::quit();
    m_Text.append(bytes, static_cast<size_t>(got));
    for (size_t end = m_Text.find('\n'); end != std::string::npos; end = m_Text.find('\n')) {
      m_Strip.Show_State(m_Text.substr(0, end));
      m_Text.erase(0, end + 1);
    }
  }

  C_Strip& m_Strip;
  QSocketNotifier m_Notifier;
  std::string m_Text;
};

int Run(const std::string& platform, const std::string& argument) {
  const int stations = atoi(argument.c_str());
  if (stations < 1 || stations > Most_Stations) {
    fprintf(stderr, "orsanta_strip: takes the number of stations, 1 to %d, not \"%s\"\n", Most_Stations,
            argument.c_str());
    return 2;
  }
  std::string name = "orsanta_strip", option = "-platform", value = platform;
  char* arguments[] = {name.data(), option.data(), value.data(), nullptr};
  int count = 3;
  // The panel tells of the display, its state and its fonts; this program adds what is serious alone.
  qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
    if (type == QtCriticalMsg || type == QtFatalMsg) std::fprintf(stderr, "orsanta_strip: %s\n", qPrintable(text));
  });
  QApplication application(count, arguments);
  Set_Up_Look();
  C_Strip strip(stations);
  const C_Host_Lines lines(strip);
  QTimer::singleShot(Show_After_Ms, &strip, [&strip] { strip.show(); });
  return QApplication::exec();
}

}  // namespace

}  // namespace orsanta

int main(int argc, char** argv) {
  const orsanta::C_Display display = orsanta::Find_Display();
  if (display.platform.empty()) {
    fprintf(stderr, "orsanta: the panel needs a display: %s\n", display.reason.c_str());
    return 1;
  }
  const std::string argument = argc > 1 ? argv[1] : "";
  return argument == "--check" ? 0 : orsanta::Run(display.platform, argument);
}
