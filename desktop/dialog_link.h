// What the two sides of one open dialog share: events go from the window to the listener, texts from the caller to the
// window.
//
// Texts are taken on the caller's thread and only changed ones are kept, so that displays that ask ten times a second
// and stay as they are cost a comparison and no redrawing. Any thread.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/dialog/front.h"
#include "support/time/lock.h"

namespace orsanta {

class C_Dialog_Link {
 public:
  explicit C_Dialog_Link(C_Dialog_Listener& listener) : m_Listener(&listener) {}

  void Send(const C_Dialog_Event& event) {
    const C_Lock_Guard hold(m_Lock);
    if (m_Listener != nullptr) m_Listener->On_Dialog_Event(event);
  }
  // After the return the listener gets nothing more.
  void Cut() {
    const C_Lock_Guard hold(m_Lock);
    m_Listener = nullptr;
  }

  // Returns true when the window has to be told that texts wait.
  bool Put_Text(int control, const std::wstring& text) {
    const C_Lock_Guard hold(m_Lock);
    const auto last = m_Last.find(control);
    if (last != m_Last.end() && last->second == text) return false;
    m_Last[control] = text;
    const bool tell = m_Waiting.empty();
    m_Waiting[control] = text;
    return tell;
  }
  std::map<int, std::wstring> Take_Texts() {
    const C_Lock_Guard hold(m_Lock);
    return std::exchange(m_Waiting, {});
  }
  // The operator may have changed the control: the next text is taken even if it equals the last one.
  void Forget(int control) {
    const C_Lock_Guard hold(m_Lock);
    m_Last.erase(control);
  }

 private:
  C_Leaf_Lock m_Lock;
  C_Dialog_Listener* m_Listener GUARDED_BY(m_Lock);
  std::map<int, std::wstring> m_Last GUARDED_BY(m_Lock);     // what each control shows, as far as it was told
  std::map<int, std::wstring> m_Waiting GUARDED_BY(m_Lock);  // not yet on the window
};

}  // namespace orsanta
