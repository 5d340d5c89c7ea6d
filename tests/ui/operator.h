// A whole system on the simulator with the panel on the scripted front: what an operator does is a script, and time is
// simulated.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/resources.h"
#include "common/simulated_test.h"
#include "drive/motor.h"
#include "host/motor_base.h"
#include "station/voice_motor.h"
#include "support/time/clock.h"

namespace orsanta {

constexpr wchar_t Panel[] = L"Orsanta控制系统";
constexpr double Block_Mm = 5.0;   // the reference block
constexpr double Near_Mm = 0.002;  // how well a thickness of the noisy simulator is met

class Operator : public C_Simulated_Test {
 protected:
  ~Operator() override {
    base.reset();
    // The cells of every dialog that takes entries, whichever a test opened, are alike.
    for (const C_Shown& shown : front->Shown())
      for (const C_Control_Model& cell : shown.dialog.controls)
        EXPECT_TRUE(!shown.dialog.confirms || (cell.column == 0 && Size(cell).empty())) << To_Utf8(cell.caption);
  }

  void Start(int stations, int io_mode = 0) {
    for (int n = 1; n <= stations; ++n) simulator::Place_Part(n, Block_Mm);
    base = std::make_unique<C_VoiceMotorBase>(Numbered_Resources(stations), 0, 115200, 0, io_mode);
    for (int n = 0; n < stations; ++n) EXPECT_TRUE(Wait_Idle(n));
  }
  C_VoiceMotor& Station(int index) { return *base->StationList[index]; }

  // What the operator does with the dialogs that come up, in this order; given before the panel runs.
  void Answer(const std::wstring& match, C_Script script) { m_Answers.emplace_back(match, std::move(script)); }
  void Answer_Edit(const std::wstring& caption, const std::wstring& value) {
    Answer(caption, C_Script().Fill(caption, value).Confirm());
  }
  void Type_Password(const std::wstring& password = L"mocha") { Answer_Edit(L"输入密码", password); }
  static C_Script Presses(std::initializer_list<const wchar_t*> buttons) {
    C_Script script;
    for (const wchar_t* button : buttons) script.Press(button);
    return script;
  }
  // Of a control, where it is not a button's.
  static std::wstring Size(const C_Control_Model& control) {
    const CMyStringW size = Format_Text(" %gx%d, text %g", control.width, control.rows, control.text_scale);
    return size == L" 10x1, text 1" ? L"" : size.Text();
  }
  // Runs the panel with the script to its end.
  void Run_Panel(C_Script script) {
    front->On_Dialog(Panel, std::move(script));
    for (auto& [match, answer] : m_Answers) front->On_Dialog(match, std::move(answer));
    m_Answers.clear();
    base->show();
  }

  bool Wait_Idle(int index) {
    const double until = Now_Ms() + 60000;
    while (base->GetDelayProcessFifoCount(index) > 0 && Now_Ms() < until) Sleep(10);
    return base->GetDelayProcessFifoCount(index) == 0;
  }
  // Waits until the first station rests and its display shows it.
  void Settle() {
    EXPECT_TRUE(Wait_Idle(0));
    Sleep(250);
  }
  // What the display of a station shows.
  std::wstring Display(int index) { return front->Text_Of(Panel, L"微米仪" + std::to_wstring(index + 1) + L"状态"); }
  // The number edits that came up, in order, each as "caption: text, least to greatest" on a line.
  std::wstring Edits() {
    std::wostringstream edits;
    for (const C_Shown& shown : front->Shown())
      for (const C_Control_Model& edit : shown.dialog.controls)
        if (edit.has_range)
          edits << edit.caption << L": " << edit.text << L", " << edit.min << L" to " << edit.max << L'\n';
    return edits.str();
  }
  // What went out to the drive of a station since the last call, as "speed 20, up 1.5, to 4.2, ".
  static std::string Sent(int station) {
    static const std::map<int, std::string> words{{0, "to"}, {2, "up"}, {3, "speed"}, {8, "acc"}, {9, "low"}};
    std::ostringstream sent;
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      if (call.function != "OUTPUT_DATA") continue;
      const int channel = std::stoi(call.arguments) - station * 20;
      const double value = std::stod(call.arguments.substr(call.arguments.find(' ')));
      const double shown = channel == 0 ? std::round(value / 6553600.0) / 10.0 : std::round(value * 1000.0) / 1000.0;
      if (words.count(channel) != 0) sent << words.at(channel) << ' ' << shown + 0.0 << ", ";
    }
    simulator::Journal_Clear();
    return sent.str();
  }
  // Whatever of that kind was shown under a name with these words, in order.
  std::vector<C_Shown> Shown(C_Shown::Kind kind, const std::wstring& words) {
    std::vector<C_Shown> shown = front->Shown();
    std::erase_if(shown, [&](const C_Shown& one) { return one.kind != kind || one.name.find(words) == words.npos; });
    return shown;
  }
  int64_t Count_Dialogs(const std::wstring& name) { return std::ssize(Shown(C_Shown::Kind::Dialog, name)); }
  std::vector<C_Shown> Charts() { return Shown(C_Shown::Kind::Chart, L""); }

  std::unique_ptr<C_VoiceMotorBase> base;

 private:
  std::vector<std::pair<std::wstring, C_Script>> m_Answers;
};

}  // namespace orsanta
