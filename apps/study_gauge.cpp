#include "study_gauge.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "force_calibration.h"
#include "orsanta/orsanta.h"
#include "simulator_loaded.h"
#include "simulator_room.h"
#include "station_work.h"
#include "study_person.h"

namespace app {

namespace {

using study::C_Text;

constexpr double Same_Part_Mm = 0.1;  // values of one part differ by less
constexpr int Tries = 3;              // of a measurement on the simulator

std::optional<double> Number(std::string text) {
  const size_t comma = text.find(',');
  if (comma != std::string::npos) text[comma] = '.';
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || *end != '\0' || !std::isfinite(value)) return std::nullopt;
  return value;
}

}  // namespace

C_Study_Gauge::C_Study_Gauge(const C_Study_Options& options, study::C_Language language)
    : m_Options(options), m_Language(language) {
  // The study talks on the terminal: no window, even where there is a display.
  unsetenv("DISPLAY");
  unsetenv("WAYLAND_DISPLAY");
  Start();
  Get_Force(m_Options.station, &m_Force_Before);
  Get_Ans_Offset(m_Options.station, &m_Block_Before);
}

void C_Study_Gauge::Start() {
  if (m_Options.on_simulator) {
    m_Folder = std::make_unique<C_Working_Folder>();
    const auto prepare = [this] { Set_Up_Room(m_Options.station, m_Options.seed); };
    if (!Calibrate_Forces(m_Options.station, prepare, Interrupted) && !Interrupted()) {
      throw std::runtime_error("the force of the simulator could not be calibrated");
    }
    prepare();
  }
  Orsanta_dll_init(0);  // without the IO card: nobody else asks for measurements
}

C_Study_Gauge::~C_Study_Gauge() {
  if (!m_Options.on_simulator) {
    Set_Ans_Offset(m_Options.station, m_Block_Before);
    Set_Force(m_Options.station, m_Force_Before);
  }
  Orsanta_dll_uninit();
}

bool C_Study_Gauge::Correct_Reference() {
  const int station = m_Options.station;
  if (m_Options.on_simulator) {
    simulator::Place_Part(station, m_Options.block_mm);
  } else {
    const std::string size = study::Short(m_Options.block_mm);
    const C_Text question = {"放上 " + size + " mm 基准量块，按回车校正基准面（输入 s 保留现有基准面，q 结束）：",
                             "Place the reference block of " + size +
                                 " mm and press Enter to correct the reference (s: keep the stored one, q: end):"};
    const std::optional<std::string> answer = Ask(question.In(m_Language));
    if (!answer) return false;
    if (*answer == "s") return true;
  }
  Set_Force(station, m_Options.force_g);
  Set_Ans_Offset(station, m_Options.block_mm);
  Check_User_Zero(station);
  m_Block_Before = m_Options.block_mm;  // the new reference belongs to this block
  return true;
}

std::optional<double> C_Study_Gauge::Take(const C_Step& step, const std::string& progress) {
  for (int tries = 0; tries < Tries || !m_Options.on_simulator; ++tries) {
    if (Interrupted() || !Place(step, progress)) return std::nullopt;
    double thickness = 0.0;
    bool measured = Press(step, thickness);
    std::optional<double> value = thickness;
    if (measured && m_Options.study == "force") value = Read_Force();
    const bool lifted = Lift(m_Options.station);
    if (!value) return std::nullopt;
    if (measured && lifted && Plausible(step, thickness)) return value;
    const C_Text told = {"没有得到可信的厚度（" + study::Short(thickness) + " mm），重新测量。",
                         "No thickness that can be true (" + study::Short(thickness) + " mm); measuring again."};
    std::fprintf(stderr, "%s\n", told.In(m_Language).c_str());
  }
  return std::nullopt;
}

bool C_Study_Gauge::Place(const C_Step& step, const std::string& progress) const {
  if (m_Options.on_simulator) {
    simulator::Place_Part(m_Options.station, step.placed_mm);
    return true;
  }
  const C_Text question = {progress + " " + step.task.zh + "。放好后按回车（q 结束，已测的值都保留）：",
                           progress + " " + step.task.en + ". Place it and press Enter (q: end; all values are kept):"};
  return Ask(question.In(m_Language)).has_value();
}

// A landing presses with the current for the height of the landing before, so that the force of the first landing on a
// part of another height is not yet the set one: the force study lands twice.
bool C_Study_Gauge::Press(const C_Step& step, double& thickness_mm) const {
  Set_Force(m_Options.station, step.force_g);
  if (m_Options.study == "force" && !(Measure(m_Options.station, thickness_mm) && Lift(m_Options.station)))
    return false;
  return Measure(m_Options.station, thickness_mm);
}

std::optional<double> C_Study_Gauge::Read_Force() const {
  if (m_Options.on_simulator) return simulator::Force_Gauge(m_Options.station);
  const C_Text question = {"测力计读数 (g)：", "Reading of the force gauge (g):"};
  for (;;) {
    const std::optional<std::string> answer = Ask(question.In(m_Language));
    if (!answer) return std::nullopt;
    if (const std::optional<double> force = Number(*answer)) return force;
    std::fprintf(stderr, "%s\n", C_Text{"请输入数字，例如 99.8", "Type a number, such as 99.8"}.In(m_Language).c_str());
  }
}

// A measurement that failed gives a thickness that no part can have. What a part can have is known from its reference
// or from its first value; on a machine the person decides where a value is far off that.
bool C_Study_Gauge::Plausible(const C_Step& step, double thickness_mm) {
  if (m_Options.study == "force") return true;
  const bool known = m_Options.on_simulator || m_Options.study != "grr";
  const auto [first, fresh] = m_First.try_emplace(step.part, known ? step.placed_mm : thickness_mm);
  if (std::abs(thickness_mm - first->second) <= Same_Part_Mm && thickness_mm > 0.0) return true;
  if (m_Options.on_simulator) return false;
  const std::string value = study::Short(thickness_mm), before = study::Short(first->second);
  const C_Text question = {
      "测得 " + value + " mm，该零件应约为 " + before + " mm。输入 k 保留，按回车重测：",
      "Measured " + value + " mm; this part should have about " + before + " mm. k: keep it, Enter: measure again:"};
  if (fresh) m_First.erase(first);
  return Ask(question.In(m_Language)).value_or("") == "k";
}

double C_Study_Gauge::Speed() const {
  // The public functions do not tell it; the station's store, which is text, does.
  std::FILE* store = std::fopen(("音圈电机" + std::to_string(m_Options.station) + "参数").c_str(), "r");
  if (store == nullptr) return 0.0;
  double speed = 0.0;
  for (char line[256]; std::fgets(line, sizeof line, store) != nullptr;) {
    if (std::sscanf(line, "C_VoiceMotor Val_Speed_Set[0] 0 = double %lf", &speed) == 1) break;
  }
  std::fclose(store);
  return speed;
}

}  // namespace app
