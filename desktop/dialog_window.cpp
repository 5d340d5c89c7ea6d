#include "desktop/dialog_window.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

#include "desktop/busy_indicator.h"
#include "desktop/status_display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr int Pressed_Ms = 150;          // the least time that a button shows its press
constexpr double Unit_Of_Panels = 20.0;  // pixels of one unit of width in windows of buttons
constexpr double Unit_Of_Forms = 36.0;   // and in windows of edits, whose captions are longer
constexpr int Window_Width = 1280;       // windows are no larger than this at opening
constexpr int Window_Height = 800;
constexpr int Window_Frame = 32;     // room for the frame that the desktop draws
constexpr int Around_Columns = 100;  // head and margins, pixels of height

void Set_Mark(QWidget* widget, const char* mark, bool on) {
  if (widget->property(mark).toBool() == on) return;
  widget->setProperty(mark, on);
  widget->style()->unpolish(widget);
  widget->style()->polish(widget);
}

// A number as an operator writes it, without an exponent and without idle zeros.
QString Plain_Number(double value) {
  QString text = QString::number(value, 'f', 6);
  while (text.endsWith(QLatin1Char('0'))) text.chop(1);
  if (text.endsWith(QLatin1Char('.'))) text.chop(1);
  return text;
}

QLabel* Make_Label(const QString& text, const char* name) {
  auto* label = new QLabel(text);
  label->setTextFormat(Qt::PlainText);
  label->setObjectName(QLatin1String(name));
  return label;
}

}  // namespace

C_Dialog_Window::C_Dialog_Window(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link,
                                 QWidget* parent)
    : QDialog(parent), m_Link(std::move(link)), m_Controls(model.controls.size()), m_Confirms(model.confirms) {
  setObjectName(QStringLiteral("dialog_%1").arg(number));
  setWindowTitle(model.title.empty() ? QStringLiteral("Orsanta") : To_Qt(model.title));
  setWindowFlags(Qt::Window | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint |
                 (m_Confirms ? Qt::WindowFlags() : Qt::WindowMinMaxButtonsHint));
  if (m_Confirms) setWindowModality(Qt::WindowModal);

  setAttribute(Qt::WA_StyledBackground);
  setProperty("window", true);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->setSpacing(0);
  layout->addWidget(Make_Head());
  m_Busy_Mark = new C_Busy_Indicator;
  layout->addWidget(m_Busy_Mark);
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFocusPolicy(Qt::NoFocus);
  m_Row_Height = Choose_Row_Height(model);
  m_Body = Make_Columns(model);
  scroll->setWidget(m_Body);
  layout->addWidget(scroll, 1);
  if (m_Confirms) layout->addWidget(Make_Foot());
  Choose_Size();
  Focus_First_Edit();
}

// Typing replaces what stands in the first edit.
void C_Dialog_Window::Focus_First_Edit() {
  for (const C_Control& control : m_Controls) {
    if (control.hint == nullptr) continue;
    control.widget->setFocus(Qt::OtherFocusReason);
    static_cast<QLineEdit*>(control.widget)->selectAll();
    return;
  }
}

QWidget* C_Dialog_Window::Make_Head() {
  auto* head = new QWidget;
  head->setObjectName(QStringLiteral("header"));
  head->setAttribute(Qt::WA_StyledBackground);
  auto* row = new QHBoxLayout(head);
  row->setContentsMargins(16, 9, 16, 9);
  row->addWidget(Make_Label(windowTitle(), "title"), 1);
  m_Busy_Text = Make_Label(QStringLiteral("正在执行…"), "busy");
  QSizePolicy keep = m_Busy_Text->sizePolicy();
  keep.setRetainSizeWhenHidden(true);
  m_Busy_Text->setSizePolicy(keep);
  m_Busy_Text->hide();
  row->addWidget(m_Busy_Text);
  return head;
}

// Rows shrink a little before a column scrolls.
int C_Dialog_Window::Choose_Row_Height(const C_Dialog_Model& model) const {
  std::map<int, int> rows;
  int most = 1;
  for (const C_Control_Model& control : model.controls) {
    most = std::max(most, rows[control.column] += control.rows);
  }
  const int space = std::min(Window_Height, screen()->availableGeometry().height()) - Window_Frame - Around_Columns;
  return std::clamp(space / most - theme::Row_Gap, theme::Least_Row_Height, theme::Row_Height);
}

QWidget* C_Dialog_Window::Make_Columns(const C_Dialog_Model& model) {
  const double unit = m_Confirms ? Unit_Of_Forms : Unit_Of_Panels;
  std::map<int, double> widths;
  for (const C_Control_Model& control : model.controls) {
    double& width = widths[control.column];
    width = std::max(width, static_cast<double>(control.width));
  }
  auto* body = new QWidget;
  auto* row = new QHBoxLayout(body);
  row->setContentsMargins(12, 12, 12, 12);
  row->setSpacing(10);
  for (const auto& [number, width] : widths) {
    auto* column = new QFrame;
    column->setObjectName(m_Confirms ? QStringLiteral("form") : QStringLiteral("column"));
    column->setMinimumWidth(static_cast<int>(width * unit));
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(10, 10, 10, 10);
    layout->setSpacing(m_Confirms ? 4 : theme::Row_Gap);
    for (size_t i = 0; i < model.controls.size(); ++i) {
      if (model.controls[i].column == number) Add_Control(static_cast<int>(i), model.controls[i], *layout);
    }
    layout->addStretch(1);
    row->addWidget(column, static_cast<int>(width * 10.0));
  }
  return body;
}

void C_Dialog_Window::Add_Control(int index, const C_Control_Model& model, QVBoxLayout& column) {
  C_Control& control = m_Controls[static_cast<size_t>(index)];
  control.kind = model.kind;
  const QString caption = To_Qt(model.caption);
  const int height = model.rows * m_Row_Height;
  switch (model.kind) {
    case C_Control_Kind::Button:
      control.widget = Make_Button(index, model);
      break;
    case C_Control_Kind::Dynamic_Display: {
      auto* display = new C_Status_Display(caption, model.rows, static_cast<double>(model.text_scale));
      display->Set_Text(To_Qt(model.text));
      control.widget = display;
      break;
    }
    case C_Control_Kind::Text_Display:
      column.addWidget(Make_Label(caption, "caption"));
      control.widget = Make_Label(To_Qt(model.text), "fixed");
      break;
    case C_Control_Kind::Check_Box: {
      auto* box = new QCheckBox(caption);
      box->setChecked(model.selected != 0);
      box->setMinimumHeight(height);
      control.widget = box;
      break;
    }
    case C_Control_Kind::Dropdown: {
      column.addWidget(Make_Label(caption, "caption"));
      auto* list = new QComboBox;
      for (const std::wstring& item : model.items) list->addItem(To_Qt(item));
      list->setCurrentIndex(model.selected);
      list->setMinimumHeight(height);
      control.widget = list;
      break;
    }
    case C_Control_Kind::Text_Edit:
    case C_Control_Kind::Integer_Edit:
    case C_Control_Kind::Number_Edit:
      column.addWidget(Make_Label(caption, "caption"));
      control.widget = Make_Edit(index, model);
      break;
    case C_Control_Kind::Blank:
      control.widget = new QWidget;
      control.widget->setMinimumHeight(height);
      break;
  }
  control.widget->setObjectName(QStringLiteral("control_%1").arg(index));
  if (model.kind == C_Control_Kind::Text_Display) control.widget->setObjectName(QStringLiteral("fixed"));
  column.addWidget(control.widget);
  if (m_Confirms) Add_Hint(control, model, column);
}

QPushButton* C_Dialog_Window::Make_Button(int index, const C_Control_Model& model) {
  auto* button = new QPushButton(To_Qt(model.caption));
  button->setMinimumHeight(model.rows * m_Row_Height);
  QFont text_font = font();
  text_font.setPixelSize(static_cast<int>(theme::Normal_Text * static_cast<double>(model.text_scale)));
  button->setFont(text_font);
  button->setAutoDefault(true);
  QObject::connect(button, &QPushButton::clicked, this, [this, index, button] { Press(index, button); });
  return button;
}

QLineEdit* C_Dialog_Window::Make_Edit(int index, const C_Control_Model& model) {
  auto* edit = new QLineEdit(To_Qt(model.text));
  edit->setMinimumHeight(model.rows * m_Row_Height);
  edit->setAccessibleName(To_Qt(model.caption));
  QObject::connect(edit, &QLineEdit::textEdited, this, [this, index] {
    m_Link->Forget(index);
    Clear_Refusal(index);
  });
  return edit;
}

void C_Dialog_Window::Add_Hint(C_Control& control, const C_Control_Model& model, QVBoxLayout& column) {
  const bool is_edit = model.kind == C_Control_Kind::Text_Edit || model.kind == C_Control_Kind::Integer_Edit ||
                       model.kind == C_Control_Kind::Number_Edit;
  if (!is_edit) return;
  if (model.has_range) {
    control.range = QStringLiteral("范围 %1 到 %2").arg(Plain_Number(model.min), Plain_Number(model.max));
  }
  control.hint = Make_Label(control.range, "hint");
  control.hint->setWordWrap(true);
  control.hint->setVisible(model.kind != C_Control_Kind::Text_Edit);  // takes any text
  column.addWidget(control.hint);
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

// As large as the controls ask for, within the screen; what does not fit scrolls.
void C_Dialog_Window::Choose_Size() {
  const QRect space = screen()->availableGeometry();
  const int bar = style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 2;
  const QSize head(0, layout()->sizeHint().height() - m_Body->parentWidget()->parentWidget()->sizeHint().height());
  const QSize wanted = m_Body->sizeHint() + head + QSize(4, 4);
  const int most_width = std::min(Window_Width, space.width());
  const int most_height = std::min(Window_Height, space.height()) - Window_Frame;
  const bool wide = wanted.width() > most_width;
  const bool tall = wanted.height() > most_height;
  const bool is_panel = !m_Confirms && parentWidget() == nullptr;  // takes all the width, for the sake of its displays
  resize(is_panel ? most_width : std::min(wanted.width() + (tall ? bar : 0), most_width),
         std::min(wanted.height() + (wide ? bar : 0), most_height));
  if (parentWidget() == nullptr) {
    move(space.center() - rect().center());
    return;
  }
  const QRect under = parentWidget()->window()->geometry();
  QPoint place = under.center() - rect().center();
  place.setX(std::clamp(place.x(), space.left(), std::max(space.left(), space.right() - width())));
  place.setY(std::clamp(place.y(), space.top(), std::max(space.top(), space.bottom() - height())));
  move(place);
}

void C_Dialog_Window::Press(int index, QPushButton* button) {
  Let_Go();
  m_Pressed = button;
  Set_Mark(button, "active", true);
  m_Link->Send({C_Dialog_Event::Kind::Press, index, {}});
  QTimer::singleShot(Pressed_Ms, this, [this] {
    if (!m_Busy) Let_Go();
  });
}

void C_Dialog_Window::Let_Go() {
  if (m_Pressed != nullptr) Set_Mark(m_Pressed, "active", false);
  m_Pressed = nullptr;
}

void C_Dialog_Window::Set_Busy(bool busy) {
  m_Busy = busy;
  m_Busy_Mark->Run(busy);
  m_Busy_Text->setVisible(busy);
  if (busy) return;
  QTimer::singleShot(Pressed_Ms, this, [this] {
    if (!m_Busy) Let_Go();
  });
}

void C_Dialog_Window::keyPressEvent(QKeyEvent* event) {
  const bool is_panel = !m_Confirms && parentWidget() == nullptr;
  if (is_panel && event->key() == Qt::Key_Escape) return;
  QDialog::keyPressEvent(event);
}

void C_Dialog_Window::accept() {
  if (!m_Confirms) return;
  C_Dialog_Event event;
  event.kind = C_Dialog_Event::Kind::Confirm;
  for (size_t i = 0; i < m_Controls.size(); ++i) {
    Clear_Refusal(static_cast<int>(i));
    C_Control_Entry entry;
    QWidget* widget = m_Controls[i].widget;
    switch (m_Controls[i].kind) {
      case C_Control_Kind::Text_Edit:
      case C_Control_Kind::Integer_Edit:
      case C_Control_Kind::Number_Edit:
        entry.text = static_cast<QLineEdit*>(widget)->text().toStdWString();
        break;
      case C_Control_Kind::Check_Box:
        entry.selected = static_cast<QCheckBox*>(widget)->isChecked() ? 1 : 0;
        break;
      case C_Control_Kind::Dropdown:
        entry.selected = static_cast<QComboBox*>(widget)->currentIndex();
        break;
      default:
        break;
    }
    event.entries.push_back(std::move(entry));
  }
  m_Link->Send(event);
}

void C_Dialog_Window::reject() {
  C_Dialog_Event event;
  event.kind = C_Dialog_Event::Kind::Cancel;
  m_Link->Send(event);
}

void C_Dialog_Window::Show_Waiting_Texts() {
  for (const auto& [control, text] : m_Link->Take_Texts()) Set_Text(control, To_Qt(text));
}

void C_Dialog_Window::Set_Text(int control, const QString& text) {
  if (control < 0 || control >= static_cast<int>(m_Controls.size())) return;
  QWidget* widget = m_Controls[static_cast<size_t>(control)].widget;
  switch (m_Controls[static_cast<size_t>(control)].kind) {
    case C_Control_Kind::Button:
    case C_Control_Kind::Check_Box:
      static_cast<QAbstractButton*>(widget)->setText(text);
      break;
    case C_Control_Kind::Dynamic_Display:
      static_cast<C_Status_Display*>(widget)->Set_Text(text);
      break;
    case C_Control_Kind::Text_Display:
      static_cast<QLabel*>(widget)->setText(text);
      break;
    case C_Control_Kind::Text_Edit:
    case C_Control_Kind::Integer_Edit:
    case C_Control_Kind::Number_Edit:
      static_cast<QLineEdit*>(widget)->setText(text);
      break;
    case C_Control_Kind::Dropdown:
    case C_Control_Kind::Blank:
      break;
  }
}

void C_Dialog_Window::Refuse(int control, const QString& reason) {
  if (control < 0 || control >= static_cast<int>(m_Controls.size())) return;
  C_Control& refused = m_Controls[static_cast<size_t>(control)];
  if (refused.hint == nullptr) return;
  Set_Mark(refused.widget, "refused", true);
  Set_Mark(refused.hint, "refused", true);
  refused.hint->setText(reason);
  refused.hint->show();
  refused.widget->setFocus(Qt::OtherFocusReason);
  static_cast<QLineEdit*>(refused.widget)->selectAll();
}

void C_Dialog_Window::Clear_Refusal(int control) {
  C_Control& refused = m_Controls[static_cast<size_t>(control)];
  if (refused.hint == nullptr) return;
  Set_Mark(refused.widget, "refused", false);
  Set_Mark(refused.hint, "refused", false);
  refused.hint->setText(refused.range);
}

}  // namespace orsanta
