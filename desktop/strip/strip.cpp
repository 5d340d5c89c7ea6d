// orsanta_strip: the simulator strip of `orsanta panel`. A small window in which a newcomer does what hands and a
// machine do at the real gauge: put a part of some thickness under a probe, take it away, press the IO input of a
// station.
//
// It runs as a process of its own beside the host program, which starts it, and talks in lines of text.
//   out:  "part STATION MM", "remove STATION", "input STATION LEVEL"
//   in:   "state STATION POSITION_MM FORCE_G OUTPUT"; the end of the stream ends the program
// Usage: orsanta_strip STATIONS, or orsanta_strip --check, which tells by its status whether windows can be shown.
#include <unistd.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QSocketNotifier>
#include <QTimer>
#include <QVBoxLayout>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "desktop/display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr double Block_Mm = 5.0;      // what lies under each probe at first
constexpr double Thickest_Mm = 8.9;   // more does not fit under a lifted probe
constexpr int Strip_Width = 246;      // pixels
constexpr int Show_After_Ms = 1500;   // after the panel, so that it lies above it
constexpr int Greatest_Height = 480;  // pixels
constexpr int Most_Stations = 14;
constexpr int Io_Channels = 8;  // of the IO card; stations beyond have none

// One line to the host. A host that has gone ends this program through the other stream.
void Tell(const std::string& line) {
  fputs((line + "\n").c_str(), stdout);
  fflush(stdout);
}

class C_Strip : public QWidget {
 public:
  explicit C_Strip(int stations) : QWidget(nullptr, Qt::Window | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("simulator_strip"));
    setWindowTitle(QStringLiteral("模拟台架"));
    setStyleSheet(
        QString::fromUtf8("QWidget#simulator_strip { border: 1px solid #14202B; } QPushButton, QLabel, QDoubleSpinBox "
                          "{ font-size: 14px; } "
                          "QPushButton { padding: 2px 4px; }"));
    auto* body = new QWidget;
    auto* rows = new QVBoxLayout(body);
    rows->setContentsMargins(8, 6, 8, 6);
    rows->setSpacing(4);
    for (int station = 1; station <= stations; ++station) Add_Station(*rows, station);
    rows->addStretch(1);
    auto* scroll = new QScrollArea;
    scroll->setWidget(body);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(0);
    auto* title = new QLabel(QStringLiteral("模拟台架：放零件、给信号"));
    title->setStyleSheet(QStringLiteral("background: #0B5CAD; color: white; padding: 5px 8px;"));
    layout->addWidget(title);
    layout->addWidget(scroll);
    // Beside the panel, under its column of commands for all stations, where nothing else stands.
    const QRect space = screen()->availableGeometry();
    resize(Strip_Width, std::min(body->sizeHint().height() + 34, Greatest_Height));
    move(space.right() - width() - 10, space.bottom() - height() - 50);
  }

  void Show_State(const std::string& line) {
    std::istringstream words(line);
    std::string word;
    size_t station = 0;
    double position = 0.0, force = 0.0;
    int output = 0;
    if (!(words >> word >> station >> position >> force >> output) || word != "state") return;
    if (station < 1 || station > m_Rows.size()) return;
    const C_Row& row = m_Rows[station - 1];
    row.position->setText(QStringLiteral("%1 mm").arg(position, 0, 'f', 3));
    row.force->setText(QStringLiteral("%1 g").arg(force, 0, 'f', 1));
    row.output->setText(output != 0 ? QStringLiteral("● 1") : QStringLiteral("○ 0"));
  }

 private:
  struct C_Row {
    QLabel* position;
    QLabel* force;
    QLabel* output;
  };

  void Add_Station(QVBoxLayout& rows, int station) {
    const std::string number = std::to_string(station);
    const C_Row row{new QLabel, new QLabel, new QLabel};
    auto* state = new QHBoxLayout;
    auto* name = new QLabel(QStringLiteral("工位 %1").arg(station));
    name->setStyleSheet(QStringLiteral("font-weight: 600;"));
    for (QLabel* label : {name, row.position, row.force, row.output}) state->addWidget(label);
    rows.addLayout(state);

    auto* thickness = new QDoubleSpinBox;
    thickness->setRange(0.001, Thickest_Mm);
    thickness->setDecimals(3);
    thickness->setSingleStep(0.01);
    thickness->setValue(Block_Mm);
    thickness->setToolTip(QStringLiteral("零件厚度 (mm)"));
    auto* place = new QPushButton(QStringLiteral("放上"));
    QObject::connect(place, &QPushButton::clicked, this,
                     [=] { Tell("part " + number + " " + std::to_string(thickness->value())); });
    auto* remove = new QPushButton(QStringLiteral("取走"));
    QObject::connect(remove, &QPushButton::clicked, this, [=] { Tell("remove " + number); });
    // Held down it asks for a measurement, let go it asks for the probe to go back.
    auto* input = new QPushButton(QStringLiteral("信号"));
    input->setCheckable(true);
    input->setEnabled(station < Io_Channels);
    input->setToolTip(QStringLiteral("IO 输入：按下测量，再按回位"));
    QObject::connect(input, &QPushButton::toggled, this,
                     [=](bool down) { Tell("input " + number + (down ? " 0" : " 1")); });
    auto* work = new QHBoxLayout;
    work->setSpacing(4);
    work->addWidget(thickness, 1);
    for (QPushButton* button : {place, remove, input}) {
      button->setFixedWidth(44);
      work->addWidget(button);
    }
    rows.addLayout(work);
    m_Rows.push_back(row);
  }

  std::vector<C_Row> m_Rows;
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
  strip.setAttribute(Qt::WA_ShowWithoutActivating);
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
