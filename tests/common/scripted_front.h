// The scripted front: a queue of answers to dialogs and boxes, and a record of everything shown, in order.
//
//   C_Simulated_Clock clock(1);
//   C_Scripted_Front_Holder front;                       // in place from here to the end of the scope
//   front->On_Dialog(L"设定推力(g)", C_Script().Fill(L"设定推力(g)", L"150").Confirm());
//   front->On_Box(L"确定", Answer_Yes);
//   ...
//   EXPECT_EQ(front->Boxes(), std::vector<std::wstring>{L"密码错误"});
//
// A dialog takes the first queued script whose match is empty or stands in its title or in one of its captions; without
// one it is cancelled. A box takes the first queued answer in the same way; without one it is answered with OK, a
// question with No. A script runs on a thread of its own, on the simulated clock or the real one; when it ends, a
// dialog that is still open is cancelled. All operations may be called from any thread that takes part in the clock.
#pragma once

#include <algorithm>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "support/dialog/front.h"
#include "support/dialog/message_box.h"
#include "support/system/wide_string.h"
#include "support/threads/thread.h"
#include "support/time/clock.h"

namespace orsanta {

// What a person does with one dialog, step by step. Controls are named by their caption; a button whose caption several
// columns repeat, by the column too (-1 takes the first).
class C_Script {
 public:
  using C_Text = std::function<std::wstring()>;
  C_Script& Fill(std::wstring caption, std::wstring text) {
    return Fill(std::move(caption), [text] { return text; });
  }
  // The text is asked for when the dialog is open, as of an instrument that the person reads.
  C_Script& Fill(std::wstring caption, C_Text text) {
    return Add({C_Kind::Fill, std::move(caption), -1, 0, std::move(text)});
  }
  // Drop-down or tick box.
  C_Script& Select(std::wstring caption, int place) { return Add({C_Kind::Select, std::move(caption), -1, place}); }
  // Goes on when the press was handled.
  C_Script& Press(std::wstring caption, int column = -1) { return Add({C_Kind::Press, std::move(caption), column}); }
  C_Script& Wait(int ms) { return Add({C_Kind::Wait, L"", -1, ms}); }
  C_Script& Run(std::function<void()> function) { return Add({C_Kind::Run, L"", -1, 0, {}, std::move(function)}); }
  C_Script& Confirm() { return Add({C_Kind::Confirm}); }  // goes on when the dialog was closed or an entry refused
  C_Script& Cancel() { return Add({C_Kind::Cancel}); }

 private:
  friend class C_Scripted_Front;
  enum class C_Kind { Fill, Select, Press, Wait, Run, Confirm, Cancel };
  struct C_Step {
    C_Kind kind;
    std::wstring caption = L"";
    int column = -1;
    int number = 0;  // place or milliseconds
    C_Text text = {};
    std::function<void()> function = {};
  };
  C_Script& Add(C_Step step) {
    m_Steps.push_back(std::move(step));
    return *this;
  }
  std::vector<C_Step> m_Steps;
};

// One thing that was shown.
struct C_Shown {
  enum class Kind { Dialog, Closed, Box, Refusal, Chart };
  Kind kind;
  std::wstring name;   // of a dialog: its title, or the first caption where it has none; title of a box, of a chart
  std::wstring text;   // of a box; of a refusal, "caption: reason"
  unsigned flags = 0;  // of a box
  double at_ms = 0.0;
  C_Dialog_Model dialog = {};  // as it opened
  C_Chart_Model chart = {};
};

class C_Scripted_Front : public C_Front {
 public:
  // --- The answers ---
  void On_Dialog(std::wstring match, C_Script script) {
    const C_Lock_Guard hold(m_Lock);
    m_Scripts.emplace_back(std::move(match), std::move(script));
  }
  void Next_Dialog(C_Script script) { On_Dialog(L"", std::move(script)); }
  // after_ms: how long the box stands open. act: what the person does before the answer.
  void On_Box(std::wstring match, int answer, int after_ms = 0, std::function<void()> act = {}) {
    const C_Lock_Guard hold(m_Lock);
    m_Answers.push_back({std::move(match), answer, after_ms, std::move(act)});
  }

  // --- The record ---
  std::vector<C_Shown> Shown() const {
    const C_Lock_Guard hold(m_Lock);
    return m_Shown;
  }
  std::vector<std::wstring> Boxes() const { return Texts(C_Shown::Kind::Box); }
  std::vector<std::wstring> Refusals() const { return Texts(C_Shown::Kind::Refusal); }
  int Count_Boxes(const std::wstring& match) const {
    const std::vector<std::wstring> boxes = Boxes();
    const auto has_match = [&match](const std::wstring& text) { return text.find(match) != std::wstring::npos; };
    return static_cast<int>(std::count_if(boxes.begin(), boxes.end(), has_match));
  }
  void Clear_Record() {
    const C_Lock_Guard hold(m_Lock);
    m_Shown.clear();
  }

  // --- The open windows; `match` names a dialog as in On_Dialog, the one on top first ---
  // What stands in the control now; empty where there is none.
  std::wstring Text_Of(const std::wstring& match, const std::wstring& caption, int column = -1) {
    const C_Lock_Guard hold(m_Lock);
    C_Open* const open = Find_Open(match);
    const int control = Find_Control(open, caption, column);
    return control < 0 ? std::wstring() : open->entries[static_cast<size_t>(control)].text;
  }
  // Presses and returns at once; false where there is no such button.
  bool Press(const std::wstring& match, const std::wstring& caption, int column = -1) {
    const C_Lock_Guard hold(m_Lock);
    C_Open* const open = Find_Open(match);
    const int control = Find_Control(open, caption, column);
    return control >= 0 && Deliver(*open, {C_Dialog_Event::Kind::Press, control, {}});
  }
  bool Cancel(const std::wstring& match) {
    const C_Lock_Guard hold(m_Lock);
    C_Open* const open = Find_Open(match);
    return open != nullptr && Deliver(*open, {});
  }

  std::vector<C_Station_Tile> Tiles() const {
    const C_Lock_Guard hold(m_Lock);
    return m_Tiles;
  }

  // --- C_Front ---
  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override;
  void Close_Dialog(int dialog) override;
  void Set_Control_Text(int dialog, int control, const std::wstring& text) override {
    const C_Lock_Guard hold(m_Lock);
    m_Open.at(dialog).entries.at(static_cast<size_t>(control)).text = text;
  }
  void Refuse_Entry(int dialog, int control, const std::wstring& reason) override {
    Refuse(dialog, control, reason, -1);
  }
  void Set_Command(int dialog, int control, C_Command_State state) override {
    const C_Lock_Guard hold(m_Lock);
    if (state == C_Command_State::Ended) Go_On(m_Open.at(dialog), control);
  }
  void Refuse_Press(int dialog, int control, const std::wstring& reason) override {
    Refuse(dialog, control, reason, control);
  }
  void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) override;
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override {
    const C_Lock_Guard hold(m_Lock);
    Record({C_Shown::Kind::Chart, model.title, L"", 0, 0.0, {}, model});
    m_Charts.insert(chart);
  }
  bool Is_Chart_Open(unsigned chart) override {
    const C_Lock_Guard hold(m_Lock);
    return m_Charts.count(chart) != 0;
  }
  void Raise_Chart(unsigned) override {}
  void Show_Stations(const std::vector<C_Station_Tile>& tiles) override {
    const C_Lock_Guard hold(m_Lock);
    m_Tiles = tiles;
  }
  void Close_Chart(unsigned chart) override {
    const C_Lock_Guard hold(m_Lock);
    m_Charts.erase(chart);
  }

 private:
  struct C_Open {
    std::wstring name;
    C_Dialog_Model model;
    std::vector<C_Control_Entry> entries;  // what stands in each control; of a button, its caption
    C_Dialog_Listener* listener = nullptr;
    bool closed = false;
    std::optional<int> awaited;  // the button whose press the script waits for, -1 of a confirmation
    C_Thread thread;
  };
  struct C_Queued_Answer {
    std::wstring match;
    int answer;
    int after_ms;
    std::function<void()> act;
  };

  static bool Matches(const C_Dialog_Model& model, const std::wstring& match) {
    std::wstring texts = model.title;
    for (const C_Control_Model& control : model.controls) texts += L'\n' + control.caption;
    return texts.find(match) != std::wstring::npos;
  }
  static int Find_Control(const C_Open* open, const std::wstring& caption, int column) {
    for (size_t i = 0; open != nullptr && i < open->model.controls.size(); ++i) {
      const C_Control_Model& control = open->model.controls[i];
      const bool named =
          control.caption == caption || (control.kind == C_Control_Kind::Button && open->entries[i].text == caption);
      if (named && (column < 0 || control.column == column)) return static_cast<int>(i);
    }
    return -1;
  }
  C_Open* Find_Open(const std::wstring& match) {
    const auto place =
        std::find_if(m_Open.rbegin(), m_Open.rend(), [&](auto& item) { return Matches(item.second.model, match); });
    return place == m_Open.rend() ? nullptr : &place->second;
  }
  std::vector<std::wstring> Texts(C_Shown::Kind kind) const {
    const C_Lock_Guard hold(m_Lock);
    std::vector<std::wstring> texts;
    for (const C_Shown& shown : m_Shown)
      if (shown.kind == kind) texts.push_back(shown.text);
    return texts;
  }
  void Record(C_Shown shown) {
    shown.at_ms = Now_Ms();
    m_Shown.push_back(std::move(shown));
    m_Changed.Notify_All();
  }
  // The listener is called under the lock, so that a closed dialog gets no event; listeners only queue.
  static bool Deliver(C_Open& open, const C_Dialog_Event& event) {
    if (!open.closed) open.listener->On_Dialog_Event(event);
    return !open.closed;
  }
  void Refuse(int dialog, int control, const std::wstring& reason, int awaited) {
    const C_Lock_Guard hold(m_Lock);
    C_Open& open = m_Open.at(dialog);
    Record({C_Shown::Kind::Refusal, open.name,
            open.model.controls.at(static_cast<size_t>(control)).caption + L": " + reason});
    Go_On(open, awaited);
  }
  // The script that waits for this goes on.
  void Go_On(C_Open& open, int awaited) {
    if (open.awaited == awaited) open.awaited.reset();
    m_Changed.Notify_All();
  }
  void Send_And_Wait(C_Open& open, const C_Dialog_Event& event) REQUIRES(m_Lock) {
    open.awaited = event.control;
    if (!Deliver(open, event)) return;
    while (!open.closed && open.awaited) m_Changed.Wait(m_Lock);
  }
  void Play(C_Open& open, C_Script script);

  mutable C_Leaf_Lock m_Lock;  // guards all below
  C_Wait_Point m_Changed{"C_Scripted_Front"};
  std::list<std::pair<std::wstring, C_Script>> m_Scripts;  // each behind its match
  std::list<C_Queued_Answer> m_Answers;
  std::vector<C_Shown> m_Shown;
  std::map<int, C_Open> m_Open;
  std::set<unsigned> m_Charts;
  std::vector<C_Station_Tile> m_Tiles;
  std::list<C_Thread> m_Late_Answers;
  int m_Last_Dialog = 0;
};

inline int C_Scripted_Front::Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) {
  const C_Lock_Guard hold(m_Lock);
  const int dialog = ++m_Last_Dialog;
  C_Open& open = m_Open[dialog];
  open.model = model;
  open.name = model.title;
  for (const C_Control_Model& control : model.controls) {
    open.entries.push_back({control.kind == C_Control_Kind::Button ? control.caption : control.text, control.selected});
    if (open.name.empty()) open.name = control.caption;
  }
  open.listener = &listener;
  Record({C_Shown::Kind::Dialog, open.name, L"", 0, 0.0, model});

  const auto queued =
      std::find_if(m_Scripts.begin(), m_Scripts.end(), [&](auto& item) { return Matches(model, item.first); });
  if (queued == m_Scripts.end()) {
    Deliver(open, {});
  } else {
    open.thread.Start("script", [this, &open, script = queued->second] { Play(open, script); });
    m_Scripts.erase(queued);
  }
  return dialog;
}

// On the script's thread.
inline void C_Scripted_Front::Play(C_Open& open, C_Script script) {
  using C_Kind = C_Script::C_Kind;
  for (const C_Script::C_Step& step : script.Cancel().m_Steps) {
    if (step.kind == C_Kind::Run) step.function();
    const std::wstring text = step.text ? step.text() : L"";
    const C_Lock_Guard hold(m_Lock);
    const int control = Find_Control(&open, step.caption, step.column);
    if (control < 0 && !step.caption.empty())
      throw std::out_of_range("no control '" + To_Utf8(step.caption) + "' in '" + To_Utf8(open.name) + "'");
    if (step.kind == C_Kind::Fill) open.entries[static_cast<size_t>(control)].text = text;
    if (step.kind == C_Kind::Select) open.entries[static_cast<size_t>(control)].selected = step.number;
    if (step.kind == C_Kind::Wait) {
      const double until = Now_Ms() + step.number;
      while (!open.closed && m_Changed.Wait_Until(m_Lock, until)) continue;
    }
    if (step.kind == C_Kind::Press) Send_And_Wait(open, {C_Dialog_Event::Kind::Press, control, {}});
    if (step.kind == C_Kind::Confirm) Send_And_Wait(open, {C_Dialog_Event::Kind::Confirm, -1, open.entries});
    if (step.kind == C_Kind::Cancel) Deliver(open, {});
  }
}

inline void C_Scripted_Front::Close_Dialog(int dialog) {
  decltype(m_Open)::node_type node;
  {
    const C_Lock_Guard hold(m_Lock);
    node = m_Open.extract(dialog);
    node.mapped().closed = true;
    Record({C_Shown::Kind::Closed, node.mapped().name, L""});
  }
  if (node.mapped().thread.Is_Running()) node.mapped().thread.Join();
}

inline void C_Scripted_Front::Post_Message(const C_Message_Model& model, C_Message_Listener& listener) {
  C_Queued_Answer reply{L"", (model.flags & Box_Yes_No) != 0 ? Answer_No : Answer_Ok, 0, {}};
  {
    const C_Lock_Guard hold(m_Lock);
    Record({C_Shown::Kind::Box, model.title, model.text, model.flags});
    const auto queued = std::find_if(m_Answers.begin(), m_Answers.end(), [&model](const C_Queued_Answer& item) {
      return model.text.find(item.match) != std::wstring::npos;
    });
    if (queued != m_Answers.end()) {
      reply = *queued;
      m_Answers.erase(queued);
    }
  }
  const auto answer = [&listener, reply] {
    if (reply.after_ms > 0) Sleep(reply.after_ms);
    if (reply.act) reply.act();
    listener.On_Answer(reply.answer);
  };
  if (reply.after_ms == 0) return answer();
  const C_Lock_Guard hold(m_Lock);
  m_Late_Answers.emplace_back().Start("late answer", answer);
}

// Puts a scripted front in place for the span of a scope. Stands after the simulated clock of its test.
class C_Scripted_Front_Holder {
 public:
  ~C_Scripted_Front_Holder() { Replace_Front(std::move(m_Before)); }
  C_Scripted_Front* operator->() const { return m_Front; }
  C_Scripted_Front& operator*() const { return *m_Front; }

 private:
  C_Scripted_Front* const m_Front = new C_Scripted_Front;  // which belongs to whoever holds the present front
  std::unique_ptr<C_Front> m_Before = Replace_Front(std::unique_ptr<C_Front>(m_Front));
};

}  // namespace orsanta
