#include "desktop/window_manager.h"

#include <QApplication>
#include <QDateTime>
#include <algorithm>

#include "desktop/chart_window.h"
#include "desktop/desk_space.h"
#include "desktop/dialog_window.h"
#include "desktop/message_window.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr int Chart_Set_Off = 40;  // pixels between charts that stand open together
constexpr int Chart_Places = 8;

void Bring_To_Front(QWidget& window) {
  window.show();
  window.raise();
  window.activateWindow();
}

// The window that it stands on closes, or another has opened above that. A desktop reads it when a window is shown.
void Stand_On(QWidget& window, QWidget* under) {
  if (window.parentWidget() == under) return;
  const bool visible = window.isVisible();
  const bool active = window.isActiveWindow();
  const QPoint place = window.pos();
  window.setParent(under, window.windowFlags());
  window.move(place);
  window.setAttribute(Qt::WA_ShowWithoutActivating, !active);
  if (visible) window.show();
}

}  // namespace

C_Window_Manager::C_Window_Manager()
    : m_Gate([this](const QWidget* window) { return Blocker_Of(window); },
             [this](const QWidget* window) { Refuse_Input(window); }) {}

// Boxes that nobody will answer any more count as refused, so that no thread waits for them.
C_Window_Manager::~C_Window_Manager() {
  for (const C_Open_Box& box : std::vector<C_Open_Box>(m_Boxes)) box.window->reject();
  while (!m_Dialogs.empty()) Close_Dialog(m_Dialogs.back().number);
  for (const auto& [number, chart] : m_Charts) delete chart;
}

const C_Window_Manager::C_Open_Dialog* C_Window_Manager::Find(int number) const {
  const auto found =
      std::find_if(m_Dialogs.begin(), m_Dialogs.end(), [number](const auto& open) { return open.number == number; });
  return found != m_Dialogs.end() ? &*found : nullptr;
}

QWidget* C_Window_Manager::Window_To_Stand_On(int owner) const {
  if (const C_Open_Dialog* dialog = Find(owner)) return dialog->window;
  return m_Dialogs.empty() ? nullptr : m_Dialogs.back().window;
}

bool C_Window_Manager::Carries(int dialog, int owner) const {
  for (const C_Open_Dialog* open = Find(owner); open != nullptr; open = Find(open->owner)) {
    if (open->number == dialog) return true;
  }
  return false;
}

const C_Window_Manager::C_Open_Dialog* C_Window_Manager::Find(const QWidget* window) const {
  const auto found =
      std::find_if(m_Dialogs.begin(), m_Dialogs.end(), [window](const auto& open) { return open.window == window; });
  return found != m_Dialogs.end() ? &*found : nullptr;
}

void C_Window_Manager::Refuse_Input(const QWidget* window) {
  QWidget* blocker = Blocker_Of(window);
  Find(window)->window->Say(QStringLiteral("请先处理：%1").arg(blocker->windowTitle()));
  Bring_To_Front(*blocker);
}

QWidget* C_Window_Manager::Blocker_Of(const QWidget* window) const {
  const C_Open_Dialog* blocked = Find(window);
  if (blocked == nullptr) return nullptr;
  for (auto box = m_Boxes.rbegin(); box != m_Boxes.rend(); ++box) {
    if (Carries(blocked->number, box->owner)) return box->window;
  }
  for (auto dialog = m_Dialogs.rbegin(); dialog != m_Dialogs.rend(); ++dialog) {
    if (dialog->confirms && Carries(blocked->number, dialog->owner)) return dialog->window;
  }
  return nullptr;
}

void C_Window_Manager::Open_Dialog(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link) {
  auto* window = new C_Dialog_Window(number, model, std::move(link), Window_To_Stand_On(model.owner));
  m_Dialogs.push_back({number, model.owner, model.confirms, window});
  window->Show_Stations(m_Tiles);
  Show_Last_Messages();
  Bring_To_Front(*window);
  for (const C_Open_Box& box : m_Boxes) {
    if (Find(box.owner) == nullptr) Stand_On(*box.window, window);
  }
}

void C_Window_Manager::Close_Dialog(int number) {
  const C_Open_Dialog* closing = Find(number);
  if (closing == nullptr) return;
  QWidget* window = closing->window;
  QWidget* under = window->parentWidget();
  m_Dialogs.erase(m_Dialogs.begin() + (closing - m_Dialogs.data()));
  // What else stands on this one stays open and moves down.
  for (const C_Open_Dialog& open : m_Dialogs) {
    if (open.window->parentWidget() == window) Stand_On(*open.window, under);
  }
  for (const C_Open_Box& box : m_Boxes) {
    if (box.window->parentWidget() == window) Stand_On(*box.window, under);
  }
  window->hide();
  window->deleteLater();
  if (under != nullptr) under->activateWindow();
}

void C_Window_Manager::Show_Waiting_Texts(int number) {
  if (const C_Open_Dialog* dialog = Find(number)) dialog->window->Show_Waiting_Texts();
}

void C_Window_Manager::Refuse_Entry(int number, int control, const std::wstring& reason) {
  if (const C_Open_Dialog* dialog = Find(number)) dialog->window->Refuse(control, To_Qt(reason));
}

void C_Window_Manager::Set_Command(int number, int control, C_Command_State state) {
  const C_Open_Dialog* dialog = Find(number);
  if (dialog == nullptr) return;
  dialog->window->Set_Command(control, state);
  const QString running = state == C_Command_State::Running ? dialog->window->Full_Name(control) : QString();
  for (const C_Open_Dialog& open : m_Dialogs) open.window->Show_Running(running);
}

void C_Window_Manager::Refuse_Press(int number, int control, const std::wstring& reason) {
  if (const C_Open_Dialog* dialog = Find(number)) dialog->window->Refuse_Press(control, To_Qt(reason));
}

void C_Window_Manager::Show_Message(const C_Message_Model& model, std::function<void(int)> answered) {
  const auto end = [this, answered = std::move(answered)](const C_Message_Window* box, int answer) {
    std::erase_if(m_Boxes, [box](const C_Open_Box& open) { return open.window == box; });
    Show_Last_Messages();
    answered(answer);
  };
  auto* box = new C_Message_Window(model, static_cast<int>(m_Boxes.size()), end, Window_To_Stand_On(model.owner));
  m_Boxes.push_back({model.owner, model.station, box});
  Note_Message(model);
  Bring_To_Front(*box);
}

void C_Window_Manager::Note_Message(const C_Message_Model& model) {
  const QString time = QDateTime::currentDateTime().toString(QStringLiteral("hh:mm:ss "));
  const QString text = To_Qt(model.text).simplified();
  m_Messages[model.station].text = time + text;
  m_News = time + (model.station == 0 ? QString() : To_Qt(Station_Name(model.station)) + QStringLiteral("：")) + text;
  Show_Last_Messages();
}

void C_Window_Manager::Show_Last_Messages() {
  for (auto& [station, message] : m_Messages) {
    const int number = station;
    message.waits =
        std::any_of(m_Boxes.begin(), m_Boxes.end(), [number](const auto& box) { return box.station == number; });
    for (const C_Open_Dialog& open : m_Dialogs) open.window->Show_Message(station, message.text, message.waits);
  }
  for (const C_Open_Dialog& open : m_Dialogs) open.window->Show_News(m_News);
}

void C_Window_Manager::Show_Stations(const std::vector<C_Station_Tile>& tiles) {
  m_Tiles = tiles;
  for (const C_Open_Dialog& open : m_Dialogs) open.window->Show_Stations(tiles);
}

void C_Window_Manager::Raise_Chart(unsigned chart) {
  const auto found = m_Charts.find(chart);
  if (found == m_Charts.end()) return;
  found->second->setWindowState(found->second->windowState() & ~Qt::WindowMinimized);
  Bring_To_Front(*found->second);
}

void C_Window_Manager::Draw_Chart(unsigned chart, const C_Chart_Model& model, std::function<void()> closed) {
  const auto found = m_Charts.find(chart);
  if (found != m_Charts.end()) {
    found->second->Redraw(model);
    return;
  }
  auto* window = new C_Chart_Window(model, [this, chart, closed = std::move(closed)] {
    m_Charts.erase(chart);
    closed();
  });
  // Each chart that stands open moves the next one down and to the left.
  const int place = static_cast<int>(m_Charts.size()) % Chart_Places;
  const QRect space = Desk_Space(*window);
  window->move(space.right() - window->width() - Chart_Set_Off * (place + 1),
               space.top() + Chart_Set_Off * (place + 1));
  m_Charts[chart] = window;
  window->show();
}

void C_Window_Manager::Close_Chart(unsigned chart) {
  const auto found = m_Charts.find(chart);
  if (found != m_Charts.end()) found->second->close();
}

}  // namespace orsanta
