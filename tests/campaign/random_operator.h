// An operator at the panel who tries everything: every dialog that comes up is answered at random.
#pragma once

#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "common/scripted_front.h"

namespace orsanta::campaign {

// Keeps with every box when it was shown. Of the panel it presses the buttons of one station's column and those for
// all stations; the automatic measuring of other stations stays off.
class C_Random_Operator : public C_Scripted_Front {
 public:
  C_Random_Operator(uint64_t seed, int column) : m_Random(seed), m_Column(column) {}

  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override {
    Next_Dialog(model.confirms ? Entries(model) : Presses(model));
    return C_Scripted_Front::Open_Dialog(model, listener);
  }
  void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) override {
    const std::string text = To_Utf8(model.text);
    if (m_Boxes.empty() || m_Boxes.back().second != text) Log("box: " + text);
    m_Boxes.push_back({Now_Ms(), text});
    C_Scripted_Front::Post_Message(model, listener);
    Clear_Record();
  }
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override {
    C_Scripted_Front::Draw_Chart(chart, model);
    Clear_Record();
  }

  // Boxes from a time on, each text once.
  std::vector<std::string> Boxes_Since(double from_ms) const {
    std::vector<std::string> texts;
    for (auto box = m_Boxes.rbegin(); box != m_Boxes.rend() && box->first >= from_ms; ++box)
      if (std::find(texts.begin(), texts.end(), box->second) == texts.end()) texts.push_back(box->second);
    return texts;
  }
  const std::map<std::string, int>& Pressed() const { return m_Pressed; }

 private:
  static void Log(const std::string& what) {
    std::fprintf(stderr, "%10.1f ms  operator    %s\n", Now_Ms(), what.c_str());
  }
  static std::wstring Log_Entry(const C_Control_Model& control, double value) {
    Log(To_Utf8(control.caption) + " will be " + std::to_string(value));
    return std::to_wstring(value);
  }
  int Draw(int least, int greatest) { return std::uniform_int_distribution(least, greatest)(m_Random); }

  C_Script Presses(const C_Dialog_Model& model) {
    int last_column = 0;
    for (const C_Control_Model& control : model.controls) last_column = std::max(last_column, control.column);
    const bool is_panel = model.title.find(L"Orsanta") != std::wstring::npos && last_column > 0;
    std::vector<const C_Control_Model*> buttons;
    for (const C_Control_Model& control : model.controls) {
      const bool is_mine = !is_panel || control.column == m_Column || control.column == last_column;
      // A nonsense scale sends the probe to where it never arrives, and a lift-off waits for that without a limit.
      const bool is_safe = control.caption != L"传感器比例系数";
      if (control.kind == C_Control_Kind::Button && is_mine && is_safe) buttons.push_back(&control);
    }
    C_Script script;
    for (int presses = buttons.empty() ? 0 : Draw(1, is_panel ? 20 : 6); presses > 0; --presses) {
      const C_Control_Model& button = *buttons[static_cast<size_t>(Draw(0, static_cast<int>(buttons.size()) - 1))];
      ++m_Pressed[To_Utf8(button.caption)];
      Log("will press " + To_Utf8(button.caption));
      script.Wait(Draw(0, 3) == 0 ? Draw(1, 90000) : Draw(1, 800)).Press(button.caption, button.column);
    }
    return script.Cancel();
  }
  C_Script Entries(const C_Dialog_Model& model) {
    C_Script script;
    for (const C_Control_Model& control : model.controls) {
      if (control.kind == C_Control_Kind::Button) continue;
      const double share = Draw(-1, 9) / 8.0;  // below and above the range too
      const bool is_password = control.caption.find(L"密码") != std::wstring::npos;
      if (is_password && Draw(0, 3) > 0)
        script.Fill(control.caption, L"mocha");
      else if (control.has_range && Draw(0, 1) == 0)
        script.Fill(control.caption, Log_Entry(control, control.min + share * (control.max - control.min)));
      else if (!control.items.empty())
        script.Select(control.caption, Draw(0, static_cast<int>(control.items.size()) - 1));
    }
    script.Wait(Draw(1, 500));
    return Draw(0, 3) == 0 ? script.Cancel() : script.Confirm();
  }

  std::mt19937_64 m_Random;
  const int m_Column;
  std::vector<std::pair<double, std::string>> m_Boxes;
  std::map<std::string, int> m_Pressed;
};

}  // namespace orsanta::campaign
