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
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "support/clock.h"
#include "support/front.h"
#include "support/message_box.h"
#include "support/thread.h"
#include "support/wide_string.h"

namespace orsanta {

class C_Scripted_Front;

// What a person does with one dialog, step by step. Controls are named by their caption; where several columns repeat
// it, by the column too (-1 takes the first).
class C_Script {
 public:
  C_Script& Fill(std::wstring caption, std::wstring text, int column = -1);
  // The text is asked for when the dialog is open, as of an instrument that the person reads.
  C_Script& Fill(std::wstring caption, std::function<std::wstring()> text, int column = -1);
  C_Script& Select(std::wstring caption, int place, int column = -1);  // drop-down or tick box
  C_Script& Press(std::wstring caption, int column = -1);              // goes on when the press was handled
  C_Script& Wait(int ms);
  C_Script& Run(std::function<void()> function);
  C_Script& Confirm();  // goes on when the dialog was closed or an entry refused
  C_Script& Cancel();
  C_Script& Repeat() {  // answers every such dialog, not only the next
    m_Repeats = true;
    return *this;
  }

 private:
  friend class C_Scripted_Front;
  struct C_Session;
  C_Script& Add(std::function<void(C_Session&)> step) {
    m_Steps.push_back(std::move(step));
    return *this;
  }
  std::vector<std::function<void(C_Session&)>> m_Steps;
  bool m_Repeats = false;
};

// One thing that was shown.
struct C_Shown {
  enum class Kind { Dialog, Closed, Box, Refusal, Chart };
  Kind kind;
  std::wstring name;   // of a dialog: its title, or the first caption where it has none; title of a chart
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
    const std::lock_guard holder(m_Lock);
    m_Scripts.push_back({std::move(match), std::move(script)});
  }
  void Next_Dialog(C_Script script) { On_Dialog(L"", std::move(script)); }
  // after_ms: how long the box stands open. act: what the person does before the answer.
  void On_Box(std::wstring match, int answer, int after_ms = 0, std::function<void()> act = {}) {
    const std::lock_guard holder(m_Lock);
    m_Answers.push_back({std::move(match), answer, after_ms, std::move(act)});
  }

  // --- The record ---
  std::vector<C_Shown> Shown() const {
    const std::lock_guard holder(m_Lock);
    return m_Shown;
  }
  std::vector<std::wstring> Boxes() const { return Texts(C_Shown::Kind::Box); }
  std::vector<std::wstring> Refusals() const { return Texts(C_Shown::Kind::Refusal); }
  int Count_Boxes(const std::wstring& match) const {
    const std::lock_guard holder(m_Lock);
    return Count_Boxes_Held(match);
  }
  // Waits until `count` boxes with the match were shown, a dialog with the match is open; false when the time ran out.
  bool Wait_For_Box(const std::wstring& match, double timeout_ms, int count = 1) {
    return Wait_For([&] { return Count_Boxes_Held(match) >= count; }, timeout_ms);
  }
  bool Wait_For_Dialog(const std::wstring& match, double timeout_ms) {
    return Wait_For([&] { return Find_Open(match) != nullptr; }, timeout_ms);
  }
  void Clear_Record() {
    const std::lock_guard holder(m_Lock);
    m_Shown.clear();
  }

  // --- The open windows; `match` names a dialog as in On_Dialog, the one on top first ---
  // What stands in the control now; empty where there is none.
  std::wstring Text_Of(const std::wstring& match, const std::wstring& caption, int column = -1) const {
    const std::lock_guard holder(m_Lock);
    const std::shared_ptr<C_Open> open = Find_Open(match);
    const int control = open ? Find_Control(*open, caption, column) : -1;
    return control < 0 ? std::wstring() : open->texts[static_cast<size_t>(control)];
  }
  // Presses and returns at once; false where there is no such button.
  bool Press(const std::wstring& match, const std::wstring& caption, int column = -1) {
    const std::lock_guard holder(m_Lock);
    const std::shared_ptr<C_Open> open = Find_Open(match);
    const int control = open ? Find_Control(*open, caption, column) : -1;
    return control >= 0 && Deliver(*open, {C_Dialog_Event::Kind::Press, control, {}});
  }
  bool Cancel(const std::wstring& match) {
    const std::lock_guard holder(m_Lock);
    const std::shared_ptr<C_Open> open = Find_Open(match);
    return open != nullptr && Deliver(*open, {C_Dialog_Event::Kind::Cancel, -1, {}});
  }

  // --- C_Front ---
  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Sink& sink) override;
  void Close_Dialog(int dialog) override;
  void Set_Control_Text(int dialog, int control, const std::wstring& text) override {
    const std::lock_guard holder(m_Lock);
    m_Open.at(dialog)->texts.at(static_cast<size_t>(control)) = text;
    m_Changed.Notify_All();
  }
  void Refuse_Entry(int dialog, int control, const std::wstring& reason) override {
    const std::lock_guard holder(m_Lock);
    C_Open& open = *m_Open.at(dialog);
    Record({C_Shown::Kind::Refusal, open.name,
            open.model.controls.at(static_cast<size_t>(control)).caption + L": " + reason});
    ++open.refusals;
    m_Changed.Notify_All();
  }
  void Set_Busy(int dialog, bool busy) override;
  void Post_Message(const C_Message_Model& model, C_Message_Sink& sink) override;
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override {
    const std::lock_guard holder(m_Lock);
    Record({C_Shown::Kind::Chart, model.title, L"", 0, 0.0, {}, model});
    m_Charts[chart] = model;
  }
  bool Is_Chart_Open(unsigned chart) override {
    const std::lock_guard holder(m_Lock);
    return m_Charts.count(chart) != 0;
  }
  void Close_Chart(unsigned chart) override {
    const std::lock_guard holder(m_Lock);
    m_Charts.erase(chart);
  }

 private:
  friend class C_Script;

  struct C_Open {
    int dialog = 0;
    std::wstring name;
    C_Dialog_Model model;
    std::vector<std::wstring> texts;  // what stands in each control; of a button, its caption
    C_Dialog_Sink* sink = nullptr;
    std::thread::id owner;
    bool closed = false;
    int refusals = 0;
    int presses = 0;        // of the script
    int handled = 0;        // of these, those whose callback has returned
    bool in_press = false;  // a callback of the owner runs
    int open_at_press = 0;  // dialogs that the owner had open when it began
    C_Script script;
    C_Thread thread;
  };
  struct C_Queued_Script {
    std::wstring match;
    C_Script script;
  };
  struct C_Queued_Answer {
    std::wstring match;
    int answer;
    int after_ms;
    std::function<void()> act;
  };

  static bool Matches(const C_Dialog_Model& model, const std::wstring& match) {
    const auto found = [&match](const std::wstring& text) { return text.find(match) != std::wstring::npos; };
    return found(model.title) || std::any_of(model.controls.begin(), model.controls.end(),
                                             [&](const C_Control_Model& control) { return found(control.caption); });
  }
  static int Find_Control(const C_Open& open, const std::wstring& caption, int column) {
    for (size_t i = 0; i < open.model.controls.size(); ++i) {
      const C_Control_Model& control = open.model.controls[i];
      const bool named =
          control.caption == caption || (control.kind == C_Control_Kind::Button && open.texts[i] == caption);
      if (named && (column < 0 || control.column == column)) return static_cast<int>(i);
    }
    return -1;
  }
  std::shared_ptr<C_Open> Find_Open(const std::wstring& match) const {
    for (auto place = m_Open.rbegin(); place != m_Open.rend(); ++place)
      if (!place->second->closed && Matches(place->second->model, match)) return place->second;
    return nullptr;
  }
  int Count_Open(std::thread::id owner) const {
    return static_cast<int>(
        std::count_if(m_Open.begin(), m_Open.end(), [owner](const auto& item) { return item.second->owner == owner; }));
  }
  std::vector<std::wstring> Texts(C_Shown::Kind kind) const {
    std::vector<std::wstring> texts;
    for (const C_Shown& shown : Shown())
      if (shown.kind == kind) texts.push_back(shown.text);
    return texts;
  }
  void Record(C_Shown shown) {
    shown.at_ms = Now_Ms();
    m_Shown.push_back(std::move(shown));
    m_Changed.Notify_All();
  }
  // The sink is called under the lock, so that a closed dialog gets no event; sinks only queue.
  bool Deliver(C_Open& open, const C_Dialog_Event& event) {
    if (open.closed) return false;
    open.sink->On_Dialog_Event(event);
    return true;
  }
  int Count_Boxes_Held(const std::wstring& match) const {
    return static_cast<int>(std::count_if(m_Shown.begin(), m_Shown.end(), [&match](const C_Shown& shown) {
      return shown.kind == C_Shown::Kind::Box && shown.text.find(match) != std::wstring::npos;
    }));
  }
  bool Wait_For(const std::function<bool()>& holds, double timeout_ms) {
    const double until = Now_Ms() + timeout_ms;
    std::unique_lock lock(m_Lock);
    while (!holds())
      if (!m_Changed.Wait_Until(lock, until)) return holds();
    return true;
  }
  void Play(C_Open& open);

  mutable std::mutex m_Lock;  // guards all below
  C_Wait_Point m_Changed{"C_Scripted_Front"};
  std::list<C_Queued_Script> m_Scripts;
  std::list<C_Queued_Answer> m_Answers;
  std::vector<C_Shown> m_Shown;
  std::map<int, std::shared_ptr<C_Open>> m_Open;
  std::map<unsigned, C_Chart_Model> m_Charts;
  std::list<C_Thread> m_Late_Answers;
  int m_Last_Dialog = 0;
};

// One run of a script, on the script's thread.
struct C_Script::C_Session {
  C_Scripted_Front& front;
  C_Scripted_Front::C_Open& open;
  std::vector<C_Control_Entry> entries;

  C_Control_Entry& Entry(const std::wstring& caption, int column) {
    const int control = C_Scripted_Front::Find_Control(open, caption, column);
    if (control < 0) {
      std::fprintf(stderr, "scripted front: no control '%s' in '%s'\n", To_Utf8(caption).c_str(),
                   To_Utf8(open.name).c_str());
      std::abort();
    }
    return entries[static_cast<size_t>(control)];
  }
};

inline C_Script& C_Script::Fill(std::wstring caption, std::wstring text, int column) {
  return Add([=](C_Session& session) { session.Entry(caption, column).text = text; });
}

inline C_Script& C_Script::Fill(std::wstring caption, std::function<std::wstring()> text, int column) {
  return Add([=](C_Session& session) { session.Entry(caption, column).text = text(); });
}

inline C_Script& C_Script::Select(std::wstring caption, int place, int column) {
  return Add([=](C_Session& session) { session.Entry(caption, column).selected = place; });
}

inline C_Script& C_Script::Press(std::wstring caption, int column) {
  return Add([=](C_Session& session) {
    session.Entry(caption, column);  // it must be there
    std::unique_lock lock(session.front.m_Lock);
    C_Scripted_Front::C_Open& open = session.open;
    const int control = C_Scripted_Front::Find_Control(open, caption, column);
    if (!session.front.Deliver(open, {C_Dialog_Event::Kind::Press, control, {}})) return;
    const int number = ++open.presses;
    while (!open.closed && open.handled < number) session.front.m_Changed.Wait(lock);
  });
}

inline C_Script& C_Script::Wait(int ms) {
  return Add([=](C_Session& session) {
    const double until = Now_Ms() + ms;
    std::unique_lock lock(session.front.m_Lock);
    while (!session.open.closed && session.front.m_Changed.Wait_Until(lock, until)) {
    }
  });
}

inline C_Script& C_Script::Run(std::function<void()> function) {
  return Add([=](C_Session&) { function(); });
}

inline C_Script& C_Script::Confirm() {
  return Add([](C_Session& session) {
    std::unique_lock lock(session.front.m_Lock);
    const int refusals = session.open.refusals;
    if (!session.front.Deliver(session.open, {C_Dialog_Event::Kind::Confirm, -1, session.entries})) return;
    while (!session.open.closed && session.open.refusals == refusals) session.front.m_Changed.Wait(lock);
  });
}

inline C_Script& C_Script::Cancel() {
  return Add([](C_Session& session) {
    const std::lock_guard holder(session.front.m_Lock);
    session.front.Deliver(session.open, {C_Dialog_Event::Kind::Cancel, -1, {}});
  });
}

inline int C_Scripted_Front::Open_Dialog(const C_Dialog_Model& model, C_Dialog_Sink& sink) {
  std::unique_lock lock(m_Lock);
  const auto open = std::make_shared<C_Open>();
  open->dialog = ++m_Last_Dialog;
  open->model = model;
  open->name = model.title;
  for (const C_Control_Model& control : model.controls) {
    open->texts.push_back(control.kind == C_Control_Kind::Button ? control.caption : control.text);
    if (open->name.empty()) open->name = control.caption;
  }
  open->sink = &sink;
  open->owner = std::this_thread::get_id();
  m_Open[open->dialog] = open;
  Record({C_Shown::Kind::Dialog, open->name, L"", 0, 0.0, model});

  const auto queued = std::find_if(m_Scripts.begin(), m_Scripts.end(), [&model](const C_Queued_Script& item) {
    return item.match.empty() || Matches(model, item.match);
  });
  if (queued == m_Scripts.end()) {
    sink.On_Dialog_Event({C_Dialog_Event::Kind::Cancel, -1, {}});
    return open->dialog;
  }
  open->script = queued->script;
  if (!queued->script.m_Repeats) m_Scripts.erase(queued);
  lock.unlock();
  open->thread.Start("script", [this, open] { Play(*open); });
  return open->dialog;
}

inline void C_Scripted_Front::Play(C_Open& open) {
  C_Script::C_Session session{*this, open, {}};
  for (const C_Control_Model& control : open.model.controls)
    session.entries.push_back({control.text, control.selected});
  C_Script script = open.script;
  for (const auto& step : script.Cancel().m_Steps) step(session);
}

inline void C_Scripted_Front::Close_Dialog(int dialog) {
  std::shared_ptr<C_Open> open;
  {
    const std::lock_guard holder(m_Lock);
    open = m_Open.at(dialog);
    m_Open.erase(dialog);
    open->closed = true;
    Record({C_Shown::Kind::Closed, open->name, L""});
  }
  if (open->thread.Is_Running()) open->thread.Join();
}

// The owner marks its dialogs when a callback of any of them begins and ends, and lifts the marks for the span of a
// nested run. So a press was handled when the mark is lifted with no more dialogs open than at its beginning.
inline void C_Scripted_Front::Set_Busy(int dialog, bool busy) {
  const std::lock_guard holder(m_Lock);
  C_Open& open = *m_Open.at(dialog);
  if (busy && !open.in_press) {
    open.in_press = true;
    open.open_at_press = Count_Open(open.owner);
  } else if (!busy && open.in_press && Count_Open(open.owner) <= open.open_at_press) {
    open.in_press = false;
    if (open.handled < open.presses) ++open.handled;
    m_Changed.Notify_All();
  }
}

inline void C_Scripted_Front::Post_Message(const C_Message_Model& model, C_Message_Sink& sink) {
  C_Queued_Answer given{L"", (model.flags & Box_Yes_No) != 0 ? Answer_No : Answer_Ok, 0, {}};
  std::unique_lock lock(m_Lock);
  Record({C_Shown::Kind::Box, L"", model.text, model.flags});
  const auto queued = std::find_if(m_Answers.begin(), m_Answers.end(), [&model](const C_Queued_Answer& item) {
    return model.text.find(item.match) != std::wstring::npos;
  });
  if (queued != m_Answers.end()) {
    given = std::move(*queued);
    m_Answers.erase(queued);
  }
  C_Thread* const late = given.after_ms > 0 ? &m_Late_Answers.emplace_back() : nullptr;
  lock.unlock();
  const auto answer = [&sink, given] {
    if (given.after_ms > 0) Sleep(given.after_ms);
    if (given.act) given.act();
    sink.On_Answer(given.answer);
  };
  if (late != nullptr) {
    late->Start("late answer", answer);
  } else {
    answer();
  }
}

// Puts a scripted front in place for the span of a scope. Stands after the simulated clock of its test.
class C_Scripted_Front_Holder {
 public:
  C_Scripted_Front_Holder() {
    auto front = std::make_unique<C_Scripted_Front>();
    m_Front = front.get();
    m_Before = Replace_Front(std::move(front));
  }
  ~C_Scripted_Front_Holder() { Replace_Front(std::move(m_Before)); }
  C_Scripted_Front_Holder(const C_Scripted_Front_Holder&) = delete;
  C_Scripted_Front_Holder& operator=(const C_Scripted_Front_Holder&) = delete;
  C_Scripted_Front* operator->() const { return m_Front; }
  C_Scripted_Front& operator*() const { return *m_Front; }

 private:
  C_Scripted_Front* m_Front;
  std::unique_ptr<C_Front> m_Before;
};

}  // namespace orsanta
