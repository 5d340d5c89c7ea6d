#include "desktop/dialog_window.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desktop/busy_indicator.h"
#include "desktop/desk_space.h"
#include "desktop/dialog_controls.h"
#include "desktop/station_board.h"
#include "desktop/status_line.h"
#include "desktop/theme.h"
#include "desktop/window_head.h"

namespace orsanta {

namespace {
constexpr int Pressed_Ms = 150;      // the least time that a button shows its press
constexpr int Window_Frame = 32;     // room for the frame that the desktop draws
constexpr int Around_Columns = 100;  // lines, foot and margins, pixels of height
}  // namespace

C_Dialog_Window::C_Dialog_Window(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link,
                                 QWidget* under)
    : QDialog(under), m_Link(std::move(link)), m_Confirms(model.confirms) {
  setObjectName(QStringLiteral("dialog_%1").arg(number));
  setWindowTitle(model.title.empty() ? QStringLiteral("Orsanta") : To_Qt(model.title));
  // As a dialog it is kept above the window that it stands on, by whatever manages the windows.
  const Qt::WindowFlags kind = under != nullptr ? Qt::Dialog : Qt::Window | Qt::WindowMinMaxButtonsHint;
  setWindowFlags(kind | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);
  setAttribute(Qt::WA_StyledBackground);
  setProperty("window", true);

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->setSpacing(0);
  layout->addWidget(new C_Window_Head(this));
  int space = Desk_Space(*this).height() - Window_Frame - Around_Columns;
  if (model.shows_stations) {
    m_Board = new C_Station_Board(static_cast<int>(model.stations.size()), [this](const QString& text) { Say(text); });
    layout->addWidget(m_Board);
    space -= m_Board->height();
  }
  m_Busy_Mark = new C_Busy_Indicator;
  layout->addWidget(m_Busy_Mark);
  m_Controls = new C_Dialog_Controls(
      model, C_Dialog_Controls::Row_Height(model, space), [this](int control) { Press(control); },
      [this](int control) { m_Link->Forget(control); });
  m_Scroll = new QScrollArea;
  m_Scroll->setWidgetResizable(true);
  m_Scroll->setFocusPolicy(Qt::NoFocus);
  m_Scroll->setWidget(m_Controls);
  layout->addWidget(m_Scroll, 1);
  if (m_Confirms) {
    layout->addWidget(Make_Foot());
  } else {
    m_Status = new C_Status_Line;
    layout->addWidget(m_Status);
  }
  Choose_Size();
  m_Controls->Focus_First_Edit();
}

bool C_Dialog_Window::Is_Panel() const {
  return !m_Confirms && parentWidget() == nullptr;
}

QWidget* C_Dialog_Window::Make_Foot() {
  auto* foot = new QWidget;
  auto* row = new QHBoxLayout(foot);
  row->setContentsMargins(12, 0, 12, 12);
  row->addStretch(1);
  auto* confirm = new QPushButton(QStringLiteral("确定"));
  confirm->setObjectName(QStringLiteral("confirm"));
  auto* cancel = new QPushButton(QStringLiteral("取消"));
  cancel->setObjectName(QStringLiteral("cancel"));
  for (QPushButton* button : {confirm, cancel}) {
    button->setMinimumSize(120, theme::Row_Height);
    row->addWidget(button);
  }
  confirm->setDefault(true);
  QObject::connect(confirm, &QPushButton::clicked, this, [this] { accept(); });
  QObject::connect(cancel, &QPushButton::clicked, this, [this] { reject(); });
  return foot;
}

// As large as the controls ask for, within the screen; what does not fit scrolls. The panel takes the screen, and
// leaves to the simulator strip what is its.
void C_Dialog_Window::Choose_Size() {
  const QRect space = Desk_Space(*this);
  if (Is_Panel()) {
    setGeometry(space);
    if (Strip_Height() == 0) return setWindowState(Qt::WindowMaximized);
    return setMaximumSize(space.size());
  }
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 2;
  const QSize around(0, layout()->sizeHint().height() - m_Scroll->sizeHint().height());
  const QSize wanted = m_Controls->sizeHint() + around + QSize(4, 4);
  const QSize most = space.size() - QSize(0, Window_Frame);
  const QSize bars(wanted.height() > most.height() ? bar : 0, wanted.width() > most.width() ? bar : 0);
  resize((wanted + bars).boundedTo(most));
  const QRect under = parentWidget() != nullptr ? parentWidget()->window()->geometry() : space;
  move(under.center() - rect().center());
}

void C_Dialog_Window::Press(int control) {
  const auto command = m_Commands.find(control);
  if (command != m_Commands.end() && command->second.mark != C_Mark::Asks)
    return Say(Full_Name(control) + QStringLiteral("：正在执行，请等它完成"));
  if (command == m_Commands.end()) Mark(control, C_Mark::Waiting);
  m_Commands[control].pressed.start();
  m_Link->Send({C_Dialog_Event::Kind::Press, control, {}});
}

void C_Dialog_Window::Mark(int control, C_Mark mark) {
  m_Commands[control].mark = mark;
  m_Controls->Mark_Button(control, mark == C_Mark::Waiting ? "waiting" : mark == C_Mark::Running ? "running" : "asks");
}

void C_Dialog_Window::Set_Command(int control, C_Command_State state) {
  if (state == C_Command_State::Ended) return Let_Go(control);
  Mark(control, state == C_Command_State::Running ? C_Mark::Running : C_Mark::Asks);
}

void C_Dialog_Window::Let_Go(int control) {
  const auto command = m_Commands.find(control);
  if (command == m_Commands.end()) return;
  const auto shown_ms = static_cast<int>(command->second.pressed.elapsed());
  m_Commands.erase(command);
  QTimer::singleShot(std::max(0, Pressed_Ms - shown_ms), this, [this, control] {
    if (m_Commands.count(control) == 0) m_Controls->Mark_Button(control, "");
  });
}

void C_Dialog_Window::Refuse_Press(int control, const QString& reason) {
  Let_Go(control);
  Say(Full_Name(control) + QStringLiteral("：") + reason);
}

void C_Dialog_Window::Show_Running(const QString& name) {
  m_Busy_Mark->Run(!name.isEmpty());
  if (m_Status != nullptr) m_Status->Show_Running(name);
}

void C_Dialog_Window::Show_News(const QString& text) {
  if (m_Status != nullptr) m_Status->Show_News(text);
}

void C_Dialog_Window::Show_Stations(const std::vector<C_Station_Tile>& tiles) {
  if (m_Board != nullptr) m_Board->Show(tiles);
}

void C_Dialog_Window::Show_Message(int station, const QString& text, bool waits) {
  if (m_Board != nullptr) m_Board->Show_Message(station, text, waits);
}

void C_Dialog_Window::Say(const QString& text) {
  if (m_Status != nullptr) m_Status->Say(text);
}

QString C_Dialog_Window::Full_Name(int control) const {
  return m_Controls->Full_Name(control);
}

void C_Dialog_Window::keyPressEvent(QKeyEvent* event) {
  if (Is_Panel() && event->key() == Qt::Key_Escape) return;
  QDialog::keyPressEvent(event);
}

void C_Dialog_Window::accept() {
  if (!m_Confirms) return;
  const std::vector<C_Control_Entry> entries = m_Controls->Read_Entries();
  for (int control = 0; control < static_cast<int>(entries.size()); ++control) m_Controls->Clear_Refusal(control);
  m_Link->Send({C_Dialog_Event::Kind::Confirm, -1, entries});
}

void C_Dialog_Window::reject() {
  m_Link->Send({C_Dialog_Event::Kind::Cancel, -1, {}});
}

void C_Dialog_Window::Show_Waiting_Texts() {
  for (const auto& [control, text] : m_Link->Take_Texts()) m_Controls->Set_Text(control, To_Qt(text));
}

void C_Dialog_Window::Refuse(int control, const QString& reason) {
  m_Controls->Refuse(control, reason);
}

}  // namespace orsanta
