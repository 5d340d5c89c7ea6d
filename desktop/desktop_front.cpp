#include "desktop/desktop_front.h"

#include <cstdio>

#include "desktop/theme.h"
#include "support/dialog/message_box.h"

namespace orsanta {

bool C_Desktop_Front::Start(std::string& reason) {
  if (!m_Thread.Start(reason)) return false;
  m_Thread.On_Display_Lost([this] { Give_Up(); });
  return m_Thread.Post([this] { m_Windows = std::make_unique<C_Window_Manager>(); });
}

C_Desktop_Front::~C_Desktop_Front() {
  m_Thread.On_Display_Lost({});
  // Windows that can no longer be taken down go with the process.
  if (!m_Thread.Run_And_Wait([this] { m_Windows.reset(); })) static_cast<void>(m_Windows.release());
}

std::shared_ptr<C_Dialog_Link> C_Desktop_Front::Find(int dialog) {
  const C_Lock_Guard hold(m_Lock);
  const auto found = m_Links.find(dialog);
  return found != m_Links.end() ? found->second : nullptr;
}

int C_Desktop_Front::Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) {
  auto link = std::make_shared<C_Dialog_Link>(listener);
  int dialog = 0;
  {
    const C_Lock_Guard hold(m_Lock);
    dialog = ++m_Last_Dialog;
    m_Links[dialog] = link;
  }
  if (!m_Thread.Post([this, dialog, model, link] { m_Windows->Open_Dialog(dialog, model, link); })) {
    link->Send(C_Dialog_Event());
  }
  return dialog;
}

void C_Desktop_Front::Close_Dialog(int dialog) {
  const std::shared_ptr<C_Dialog_Link> link = Find(dialog);
  if (!link) return;
  link->Cut();
  {
    const C_Lock_Guard hold(m_Lock);
    m_Links.erase(dialog);
  }
  m_Thread.Post([this, dialog] { m_Windows->Close_Dialog(dialog); });
}

void C_Desktop_Front::Set_Control_Text(int dialog, int control, const std::wstring& text) {
  const std::shared_ptr<C_Dialog_Link> link = Find(dialog);
  if (!link || !link->Put_Text(control, text)) return;
  m_Thread.Post([this, dialog] { m_Windows->Show_Waiting_Texts(dialog); });
}

void C_Desktop_Front::Refuse_Entry(int dialog, int control, const std::wstring& reason) {
  m_Thread.Post([this, dialog, control, reason] { m_Windows->Refuse_Entry(dialog, control, reason); });
}

void C_Desktop_Front::Set_Command(int dialog, int control, C_Command_State state) {
  m_Thread.Post([this, dialog, control, state] { m_Windows->Set_Command(dialog, control, state); });
}

void C_Desktop_Front::Refuse_Press(int dialog, int control, const std::wstring& reason) {
  m_Thread.Post([this, dialog, control, reason] { m_Windows->Refuse_Press(dialog, control, reason); });
}

void C_Desktop_Front::Post_Message(const C_Message_Model& model, C_Message_Listener& listener) {
  const int refusal = (model.flags & Box_Yes_No) != 0 ? Answer_No : Answer_Ok;
  int message = 0;
  {
    const C_Lock_Guard hold(m_Lock);
    message = ++m_Last_Message;
    m_Messages[message] = {&listener, refusal};
  }
  const auto answered = [this, message](int answer) { Answer(message, answer); };
  if (m_Thread.Post([this, model, answered] { m_Windows->Show_Message(model, answered); })) return;
  fprintf(stderr, "%s\n", To_Qt(model.text).toUtf8().constData());
  Answer(message, refusal);
}

void C_Desktop_Front::Answer(int message, int answer) {
  C_Message_Listener* listener = nullptr;
  {
    const C_Lock_Guard hold(m_Lock);
    const auto found = m_Messages.find(message);
    if (found == m_Messages.end()) return;
    listener = found->second.listener;
    m_Messages.erase(found);
  }
  listener->On_Answer(answer);
}

void C_Desktop_Front::Give_Up() {
  std::map<int, std::shared_ptr<C_Dialog_Link>> links;
  std::map<int, C_Open_Message> messages;
  {
    const C_Lock_Guard hold(m_Lock);
    links = m_Links;
    messages.swap(m_Messages);
    m_Charts.clear();
  }
  for (const auto& [number, message] : messages) message.listener->On_Answer(message.refusal);
  for (const auto& [number, link] : links) link->Send(C_Dialog_Event());
}

void C_Desktop_Front::Draw_Chart(unsigned chart, const C_Chart_Model& model) {
  {
    const C_Lock_Guard hold(m_Lock);
    if (!model.opens && m_Charts.count(chart) == 0) return;
    C_Chart_State& state = m_Charts[chart];
    const bool posted = state.waiting != nullptr;
    state.waiting = std::make_unique<C_Chart_Model>(model);
    state.open = true;
    if (posted) return;
  }
  if (!m_Thread.Post([this, chart] { Draw_Waiting(chart); })) Close_Chart(chart);
}

void C_Desktop_Front::Draw_Waiting(unsigned chart) {
  std::unique_ptr<C_Chart_Model> model;
  {
    const C_Lock_Guard hold(m_Lock);
    const auto found = m_Charts.find(chart);
    if (found != m_Charts.end()) model = std::move(found->second.waiting);
  }
  if (!model) return;
  m_Windows->Draw_Chart(chart, *model, [this, chart] {
    const C_Lock_Guard hold(m_Lock);
    m_Charts.erase(chart);
  });
}

bool C_Desktop_Front::Is_Chart_Open(unsigned chart) {
  const C_Lock_Guard hold(m_Lock);
  const auto found = m_Charts.find(chart);
  return found != m_Charts.end() && found->second.open;
}

void C_Desktop_Front::Raise_Chart(unsigned chart) {
  m_Thread.Post([this, chart] { m_Windows->Raise_Chart(chart); });
}

// Most of the time nothing has changed.
void C_Desktop_Front::Show_Stations(const std::vector<C_Station_Tile>& tiles) {
  {
    const C_Lock_Guard hold(m_Lock);
    if (tiles == m_Tiles) return;
    m_Tiles = tiles;
  }
  m_Thread.Post([this, tiles] { m_Windows->Show_Stations(tiles); });
}

void C_Desktop_Front::Close_Chart(unsigned chart) {
  {
    const C_Lock_Guard hold(m_Lock);
    m_Charts.erase(chart);
  }
  m_Thread.Post([this, chart] { m_Windows->Close_Chart(chart); });
}

}  // namespace orsanta
