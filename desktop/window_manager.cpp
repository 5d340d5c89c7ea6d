#include "desktop/window_manager.h"

#include <QApplication>
#include <QScreen>
#include <algorithm>

#include "desktop/chart_window.h"
#include "desktop/dialog_window.h"
#include "desktop/message_window.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {
constexpr int Chart_Set_Off = 40;  // pixels between charts that stand open together
constexpr int Chart_Places = 8;
}  // namespace

// Boxes that nobody will answer any more count as refused, so that no thread waits for them.
C_Window_Manager::~C_Window_Manager() {
  for (C_Message_Window* box : std::vector<C_Message_Window*>(m_Messages)) box->reject();
  while (!m_Dialogs.empty()) Close_Dialog(m_Dialogs.back().first);
  for (const auto& [number, chart] : m_Charts) delete chart;
}

C_Dialog_Window* C_Window_Manager::Find(int number) const {
  const auto found =
      std::find_if(m_Dialogs.begin(), m_Dialogs.end(), [number](const auto& entry) { return entry.first == number; });
  return found != m_Dialogs.end() ? found->second : nullptr;
}

void C_Window_Manager::Open_Dialog(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link) {
  QWidget* under = m_Dialogs.empty() ? nullptr : m_Dialogs.back().second;
  auto* window = new C_Dialog_Window(number, model, std::move(link), under);
  m_Dialogs.emplace_back(number, window);
  window->show();
  window->raise();
  window->activateWindow();
  for (C_Message_Window* box : m_Messages) box->raise();
}

void C_Window_Manager::Close_Dialog(int number) {
  C_Dialog_Window* window = Find(number);
  if (window == nullptr) return;
  QWidget* under = window->parentWidget();
  // A dialog of another thread may stand on this one; it stays open and moves down.
  for (const auto& [other_number, other] : m_Dialogs) {
    if (other->parentWidget() != window) continue;
    const bool visible = other->isVisible();
    other->setParent(under, other->windowFlags());
    if (visible) other->show();
  }
  m_Dialogs.erase(std::find(m_Dialogs.begin(), m_Dialogs.end(), std::make_pair(number, window)));
  window->hide();
  window->deleteLater();
  if (under != nullptr) under->activateWindow();
}

void C_Window_Manager::Show_Waiting_Texts(int number) {
  if (C_Dialog_Window* window = Find(number)) window->Show_Waiting_Texts();
}

void C_Window_Manager::Refuse_Entry(int number, int control, const std::wstring& reason) {
  if (C_Dialog_Window* window = Find(number)) window->Refuse(control, To_Qt(reason));
}

void C_Window_Manager::Set_Busy(int number, bool busy) {
  if (C_Dialog_Window* window = Find(number)) window->Set_Busy(busy);
}

void C_Window_Manager::Show_Message(const C_Message_Model& model, std::function<void(int)> answered) {
  auto* box = new C_Message_Window(model, static_cast<int>(m_Messages.size()), std::move(answered));
  m_Messages.push_back(box);
  QObject::connect(box, &QObject::destroyed, qApp, [this, box] {
    m_Messages.erase(std::remove(m_Messages.begin(), m_Messages.end(), box), m_Messages.end());
  });
  box->show();
  box->raise();
  box->activateWindow();
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
  const QRect space = window->screen()->availableGeometry();
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
