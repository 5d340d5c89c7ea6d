// What one fault does at one moment, for the table of failure modes.
//
// Usage: campaign_modes FAULT MOMENT, in a folder of its own. FAULT as in the table below; MOMENT: start, idle,
// landing, settling, lift-off, stop. A station is set up and measures one part, then the fault strikes at the moment,
// lasts for half a minute, and goes. Prints lines "name<tab>text": what a host sees and what an operator reads.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iostream>
#include <map>
#include <memory>
#include <string>

#include "campaign/random_operator.h"
#include "common/resources.h"
#include "orsanta/orsanta.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"
#include "support/system/wide_string.h"
#include "support/threads/thread.h"

namespace orsanta::campaign {

namespace {

constexpr double First_Part_Mm = 4.0;
constexpr double Part_Mm = 3.0;
constexpr double Block_Mm = 5.0;
constexpr int Fault_Ms = 30000;  // longer than every wait that has a limit

const std::map<std::string, std::function<void(bool)>> Faults{
    {"absent", [](bool on) { simulator::Set_Absent(1, on); }},
    {"silent", [](bool on) { simulator::Set_Silent(1, on); }},
    {"frozen", [](bool on) { simulator::Set_Frozen(1, on); }},
    {"stuck", [](bool on) { simulator::Set_Stuck(1, on); }},
    {"weak lift", [](bool on) { simulator::Set_Weak_Lift(1, on); }},
    {"restless", [](bool on) { simulator::Set_Restless(1, on ? 0.05 : 0.0); }},
    {"fault bits", [](bool on) { simulator::Set_Fault_Bits(1, on ? 5 : 0); }},
    {"card missing", [](bool on) { simulator::Set_Io_Card_Missing(on); }},
    {"connect refused", [](bool on) { simulator::Set_Refused_Connects(on ? 30 : 0); }},
};

class C_Mode {
 public:
  C_Mode(const std::string& fault, std::string moment) : m_Fault(Faults.at(fault)), m_Moment(std::move(moment)) {
    simulator::Reset({.drives = 1});
    auto front = std::make_unique<C_Random_Operator>(1, 0);
    m_Front = front.get();
    Replace_Front(std::move(front));
    for (int bit = 0; bit < 8; ++bit) simulator::Set_Input(bit, 1);
  }

  [[noreturn]] void Run() {
    const auto records = Numbered_Resources(1);
    ORSA_resource_alloc(records.begin(), records.GetSize());
    m_Is_Armed = m_Moment == "start";
    Strike("start");
    Orsanta_dll_init(1);
    Sleep(1000);
    if (m_Moment != "start") Set_Up();
    m_Is_Armed = m_Moment != "start";
    simulator::Place_Part(1, Part_Mm);
    Strike("idle");
    m_Thickness = Measure();
    Lift();
    Strike("stop");
    const double from = Now_Ms();
    C_Thread stop;
    stop.Start("stop", [] { Orsanta_dll_uninit(); });
    if (!stop.Join(120000.0))
      Say("stop", "does not end");
    else if (Now_Ms() - from > 1000.0)
      Say("stop", Format_Utf8("after %.1f s", (Now_Ms() - from) / 1000.0));
    Report();
    std::cout.flush();
    _exit(0);
  }

 private:
  void Say(const char* name, const std::string& text) { std::cout << name << '\t' << text << '\n'; }

  // Begins the fault where the moment has come; it ends by itself.
  void Strike(const std::string& moment) {
    if (moment != m_Moment || !m_Is_Armed) return;
    m_Is_Armed = false;
    m_From_Ms = Now_Ms();
    m_Fault(true);
    m_End.Start("end of the fault", [this] {
      Sleep(Fault_Ms);
      m_Fault(false);
    });
    if (moment == "idle") Sleep(500);
  }
  void Set_Up() {
    simulator::Place_Part(1, Block_Mm);
    Set_Force(1, 100.0);
    Set_Ans_Offset(1, Block_Mm);
    Check_User_Zero(1);
    simulator::Place_Part(1, First_Part_Mm);
    Measure();
    Lift();
  }
  static bool Wait(const std::function<bool()>& condition, double limit_ms = 120000.0) {
    for (const double until = Now_Ms() + limit_ms; !condition();) {
      if (Now_Ms() > until) return false;
      Sleep(1);
    }
    return true;
  }
  double Measure() {
    do_test(1, ORSANTA_TASK_MEASURE);
    Sleep(50);
    Strike("landing");
    if (m_Moment == "settling" && m_Is_Armed) {
      Wait([] { return simulator::True_Force(1) > 50.0; });
      Strike("settling");
    }
    const double from = Now_Ms();
    double thickness = std::nan(""), force = 0.0;
    Wait([&] { return get_ans(1, &thickness, &force) == 1; });
    m_Measured_Ms = Now_Ms() - from;
    return thickness;
  }
  void Lift() {
    do_test(1, ORSANTA_TASK_FORCE_BACK);
    Sleep(5);
    Strike("lift-off");
    const double from = Now_Ms();
    if (!Wait([] { return Get_Force_Back_Finish(1) == 1; }))
      Say("lift", "does not end");
    else if (Now_Ms() - from > 1000.0)
      Say("lift", Format_Utf8("after %.1f s", (Now_Ms() - from) / 1000.0));
    if (simulator::True_Position(1) > 0.5) Sleep(1000);
    if (simulator::True_Position(1) > 0.5) Say("lift", "the probe is still down");
  }
  void Report() {
    const double error_um = std::abs(m_Thickness - Part_Mm) * 1000.0;
    std::string result = "right";
    if (m_Moment == "start")
      result = m_Thickness == -99.0 ? "-99" : "without a reference";
    else if (std::isnan(m_Thickness))
      result = "none";
    else if (m_Thickness <= 0.0)
      result = Format_Utf8("%g", m_Thickness);
    else if (m_Thickness > 8.5)
      result = "more than fits under the probe";
    else if (error_um > 1.0)
      result = Format_Utf8("wrong by %.0f um", error_um);
    Say("result", result);
    if (m_Measured_Ms > 3000.0) Say("took", Format_Utf8("%.1f s", m_Measured_Ms / 1000.0));
    std::vector<std::string> boxes = m_Front->Boxes_Since(m_From_Ms);
    std::reverse(boxes.begin(), boxes.end());
    for (const std::string& box : boxes) Say("box", box.substr(0, box.find('\n')));
  }

  C_Simulated_Clock m_Clock{1};
  const std::function<void(bool)> m_Fault;
  const std::string m_Moment;
  C_Random_Operator* m_Front = nullptr;
  C_Thread m_End;
  bool m_Is_Armed = false;  // the fault is still to come
  double m_From_Ms = 0.0;
  double m_Thickness = 0.0;
  double m_Measured_Ms = 0.0;
};

}  // namespace

}  // namespace orsanta::campaign

int main(int count, char** arguments) {
  if (count != 3) return 2;
  (new orsanta::campaign::C_Mode(arguments[1], arguments[2]))->Run();
}
