// How soon a press on the operator's panel answers on screen while fourteen stations measure without a pause, and how
// long the panel takes to close. Targets: median under 5 ms, longest under 200 ms on a busy machine; closed in 1 s.
//
// Measured from the moment at which the pointer of a (virtual) display is told to press, through the X server and the
// window's event loop, until the pressed button is painted and handed to the display; and from there until the command
// has run and the button rests again. The buttons are those that return a probe: their command goes to the station's
// lane and saves its parameters. Needs Xvfb and xdotool; without them the benchmark is skipped.
#include <benchmark/benchmark.h>

#include <QMouseEvent>
#include <array>
#include <atomic>
#include <cstdio>
#include <thread>

#include "benchmarks/system.h"
#include "tests/desktop/virtual_display.h"
#include "tests/desktop/windows.h"
#include "ui/panel.h"

namespace orsanta {
namespace {

constexpr int Stations = All_Stations;
constexpr char Screen[] = "1920x1080";  // on which all columns are in view
constexpr int Presses = 200;
constexpr int Still_Ms = 60;  // the pointer rests on the button before it presses, so that only the press paints
constexpr double Lost_Ms = 5000.0;

// Hosts that measure on every station, one after the other without a pause, until the end of the object.
class C_Hosts {
 public:
  explicit C_Hosts(C_Benchmark_System& system) {
    for (int n = 1; n <= Stations; ++n) {
      m_Threads[static_cast<size_t>(n - 1)] = std::thread([this, &system, n] {
        while (!m_Ends) {
          system.Measure(n);
          system.Lift(n);
          ++m_Measured;
        }
      });
    }
  }
  ~C_Hosts() {
    m_Ends = true;
    for (std::thread& thread : m_Threads) thread.join();
  }
  int Measured() const { return m_Measured; }

 private:
  std::atomic<bool> m_Ends{false};
  std::atomic<int> m_Measured{0};
  std::array<std::thread, Stations> m_Threads;
};

// Notes when the button that got the press has been painted and flushed. Lives on the Qt thread.
class C_Paint_Watch : public QObject {
 public:
  bool eventFilter(QObject* object, QEvent* event) override {
    if (object != button) return false;
    if (event->type() == QEvent::MouseButtonPress) m_Is_Pressed = true;
    if (event->type() == QEvent::Paint && m_Is_Pressed) {
      m_Is_Pressed = false;
      // Comes after the flush that ends this painting.
      QMetaObject::invokeMethod(
          this, [this] { painted_ms = Now_Ms(); }, Qt::QueuedConnection);
    }
    return false;
  }

  QPushButton* button = nullptr;
  std::atomic<double> painted_ms{0.0};

 private:
  bool m_Is_Pressed = false;
};

bool Wait_For(const std::function<bool()>& condition) {
  for (const double start = Now_Ms(); !condition(); std::this_thread::sleep_for(std::chrono::microseconds(200)))
    if (Now_Ms() - start > Lost_Ms) return false;
  return true;
}

void Note(benchmark::State& state, const std::string& name, const std::vector<double>& times_ms) {
  state.counters[name + "_median_ms"] = Quantile(times_ms, 0.5);
  state.counters[name + "_p95_ms"] = Quantile(times_ms, 0.95);
  state.counters[name + "_max_ms"] = Quantile(times_ms, 1.0);
}

// Manual time: press to paint.
void Press_While_Stations_Measure(benchmark::State& state) {
  if (!C_Virtual_Display::Start(Screen)) return state.SkipWithError("no Xvfb");
  Front();  // the thread that starts the windows is the one that ends them
  FILE* pointer = popen("xdotool -", "w");
  C_Benchmark_System system(Stations);
  std::thread panel([&] { const C_ORS_Dlg runs(system.base.get()); });
  if (!Wait_On_Qt([] { return Find_Window("控制系统") != nullptr; })) std::abort();
  std::unique_ptr<C_Paint_Watch> watch;
  QList<QPushButton*> buttons;
  On_Qt([&] {
    watch = std::make_unique<C_Paint_Watch>();
    qApp->installEventFilter(watch.get());
    for (QPushButton* button : Find_Window("控制系统")->findChildren<QPushButton*>())
      if (button->text() == "测量回位") buttons.append(button);
  });
  const auto order = [&](const std::string& line) {
    std::fputs((line + "\n").c_str(), pointer);
    std::fflush(pointer);
  };
  std::vector<double> painted, finished;
  {
    const C_Hosts hosts(system);
    int number = 0;
    for (auto _ : state) {
      QPoint place;
      On_Qt([&] {
        watch->button = buttons.at(number++ % buttons.size());
        place = watch->button->mapToGlobal(watch->button->rect().center());
      });
      order("mousemove " + std::to_string(place.x()) + " " + std::to_string(place.y()));
      std::this_thread::sleep_for(std::chrono::milliseconds(Still_Ms));
      watch->painted_ms = 0.0;
      const double start = Now_Ms();
      order("click 1");
      const bool came = Wait_For([&] { return watch->painted_ms > 0.0; }) && Wait_For([&] {
                          bool rests = false;
                          On_Qt([&] { rests = watch->button->property("command").toString().isEmpty(); });
                          return rests;
                        });
      if (!came) {
        state.SkipWithError("a press was lost; is xdotool installed?");
        break;
      }
      painted.push_back(watch->painted_ms - start);
      finished.push_back(Now_Ms() - start);
      state.SetIterationTime(painted.back() / 1000.0);
    }
    state.counters["measurements"] = hosts.Measured();
  }
  if (!painted.empty()) {
    Note(state, "paint", painted);
    Note(state, "command", finished);
  }
  On_Qt([&] { watch.reset(); });
  const double start = Now_Ms();
  On_Qt([] { Find_Window("控制系统")->close(); });
  panel.join();
  state.counters["close_ms"] = Now_Ms() - start;
  pclose(pointer);
}
BENCHMARK(Press_While_Stations_Measure)->Iterations(Presses)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace orsanta

BENCHMARK_MAIN();
