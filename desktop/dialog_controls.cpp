#include "desktop/dialog_controls.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <map>

#include "desktop/status_display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr double Unit_Of_Panels = 20.0;  // pixels of one unit of width in windows of buttons
constexpr double Unit_Of_Forms = 36.0;   // and in windows of edits, whose captions are longer
constexpr int Narrow_Column = 122;       // pixels: the longest caption in narrow text
constexpr int Greatest_Stretch = 3;      // of a column in a wide window, against its least width, in halves
constexpr int Narrow_Text = 14;          // pixels
constexpr int Title_Height = 24;         // of the station's name above its column, pixels

void Set_Mark(QWidget* widget, const char* property, const QVariant& value) {
  if (widget->property(property) == value) return;
  widget->setProperty(property, value);
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

bool Is_Edit(C_Control_Kind kind) {
  return kind == C_Control_Kind::Text_Edit || kind == C_Control_Kind::Integer_Edit ||
         kind == C_Control_Kind::Number_Edit;
}

}  // namespace

C_Dialog_Controls::C_Dialog_Controls(const C_Dialog_Model& model, int row_height, std::function<void(int)> pressed,
                                     std::function<void(int)> edited)
    : m_Controls(model.controls.size()),
      m_Is_Form(model.confirms),
      m_Row_Height(row_height),
      m_Pressed(std::move(pressed)),
      m_Edited(std::move(edited)) {
  std::map<int, double> widths;
  for (const C_Control_Model& control : model.controls) {
    double& width = widths[control.column];
    width = std::max(width, static_cast<double>(control.width) * (m_Is_Form ? Unit_Of_Forms : Unit_Of_Panels));
  }
  double whole = 0.0;
  for (const auto& [number, width] : widths) whole += width + theme::Row_Gap;
  m_Is_Narrow = whole > screen()->availableGeometry().width();
  setProperty("narrow", m_Is_Narrow);
  const int margin = m_Is_Narrow ? 4 : 12;
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(margin, margin, margin, margin);
  row->setSpacing(m_Is_Narrow ? 4 : 10);
  for (const auto& [number, width] : widths) {
    QWidget* column = Make_Column(model, number);
    column->setMinimumWidth(m_Is_Narrow ? Narrow_Column : static_cast<int>(width));
    if (!m_Is_Form) column->setMaximumWidth(static_cast<int>(width) * Greatest_Stretch / 2);
    row->addWidget(column, static_cast<int>(width));
  }
}

// Rows shrink a little before a column scrolls, and grow where there is room.
int C_Dialog_Controls::Row_Height(const C_Dialog_Model& model, int space) {
  std::map<int, std::pair<int, int>> columns;  // rows of buttons, and pixels of all else
  int height = model.confirms ? theme::Row_Height : theme::Greatest_Row_Height;
  for (const C_Control_Model& control : model.controls) {
    auto& [rows, fixed] = columns[control.column];
    if (control.kind == C_Control_Kind::Dynamic_Display) {
      fixed += C_Status_Display::Height(control.rows, static_cast<double>(control.text_scale)) + theme::Row_Gap;
    } else {
      rows += control.rows;
    }
    const int title = model.stations.count(control.column) != 0 ? Title_Height : 0;
    if (rows > 0) height = std::min(height, (space - fixed - title) / rows - theme::Row_Gap);
  }
  return std::max(height, theme::Least_Row_Height);
}

QWidget* C_Dialog_Controls::Make_Column(const C_Dialog_Model& model, int number) {
  auto* column = new QFrame;
  column->setObjectName(m_Is_Form ? QStringLiteral("form") : QStringLiteral("column"));
  auto* layout = new QVBoxLayout(column);
  const int margin = m_Is_Narrow ? 3 : 10;
  layout->setContentsMargins(margin, margin, margin, margin);
  layout->setSpacing(m_Is_Form ? 4 : theme::Row_Gap);
  const auto station = model.stations.find(number);
  const QString name = station != model.stations.end() ? To_Qt(Station_Name(station->second)) : QString();
  if (model.shows_stations && !name.isEmpty()) {
    QLabel* title = Make_Label(name, "column_title");
    title->setFixedHeight(Title_Height - theme::Row_Gap);
    layout->addWidget(title);
  }
  for (size_t i = 0; i < model.controls.size(); ++i) {
    if (model.controls[i].column != number) continue;
    m_Controls[i].station = name;
    Add_Control(static_cast<int>(i), model.controls[i], *layout);
  }
  layout->addStretch(1);
  return column;
}

void C_Dialog_Controls::Add_Control(int index, const C_Control_Model& model, QVBoxLayout& column) {
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
  if (model.kind != C_Control_Kind::Text_Display)
    control.widget->setObjectName(QStringLiteral("control_%1").arg(index));
  column.addWidget(control.widget);
  if (m_Is_Form && Is_Edit(model.kind)) Add_Hint(control, model, column);
}

QPushButton* C_Dialog_Controls::Make_Button(int index, const C_Control_Model& model) {
  auto* button = new QPushButton(To_Qt(model.caption));
  button->setMinimumHeight(model.rows * m_Row_Height);
  QFont text_font = font();
  const int size = m_Is_Narrow ? Narrow_Text : theme::Normal_Text;
  text_font.setPixelSize(static_cast<int>(size * static_cast<double>(model.text_scale)));
  button->setFont(text_font);
  button->setProperty("main", model.is_main);
  button->setProperty("narrow", m_Is_Narrow);
  button->setAutoDefault(true);
  QObject::connect(button, &QPushButton::clicked, this, [this, index] { m_Pressed(index); });
  return button;
}

QLineEdit* C_Dialog_Controls::Make_Edit(int index, const C_Control_Model& model) {
  auto* edit = new QLineEdit(To_Qt(model.text));
  edit->setMinimumHeight(model.rows * m_Row_Height);
  edit->setAccessibleName(To_Qt(model.caption));
  QObject::connect(edit, &QLineEdit::textEdited, this, [this, index] {
    m_Edited(index);
    Clear_Refusal(index);
  });
  return edit;
}

void C_Dialog_Controls::Add_Hint(C_Control& control, const C_Control_Model& model, QVBoxLayout& column) {
  if (model.has_range) {
    control.range = QStringLiteral("范围 %1 到 %2").arg(Plain_Number(model.min), Plain_Number(model.max));
  }
  control.hint = Make_Label(control.range, "hint");
  control.hint->setWordWrap(true);
  control.hint->setVisible(model.kind != C_Control_Kind::Text_Edit);  // takes any text
  column.addWidget(control.hint);
}

C_Dialog_Controls::C_Control* C_Dialog_Controls::Find(int control) {
  const bool is_there = control >= 0 && control < static_cast<int>(m_Controls.size());
  return is_there ? &m_Controls[static_cast<size_t>(control)] : nullptr;
}

std::vector<C_Control_Entry> C_Dialog_Controls::Read_Entries() const {
  std::vector<C_Control_Entry> entries;
  for (const C_Control& control : m_Controls) {
    C_Control_Entry& entry = entries.emplace_back();
    if (Is_Edit(control.kind)) {
      entry.text = static_cast<QLineEdit*>(control.widget)->text().toStdWString();
    } else if (control.kind == C_Control_Kind::Check_Box) {
      entry.selected = static_cast<QCheckBox*>(control.widget)->isChecked() ? 1 : 0;
    } else if (control.kind == C_Control_Kind::Dropdown) {
      entry.selected = static_cast<QComboBox*>(control.widget)->currentIndex();
    }
  }
  return entries;
}

void C_Dialog_Controls::Set_Text(int control, const QString& text) {
  const C_Control* target = Find(control);
  if (target == nullptr) return;
  switch (target->kind) {
    case C_Control_Kind::Button:
    case C_Control_Kind::Check_Box:
      static_cast<QAbstractButton*>(target->widget)->setText(text);
      break;
    case C_Control_Kind::Dynamic_Display:
      static_cast<C_Status_Display*>(target->widget)->Set_Text(text);
      break;
    case C_Control_Kind::Text_Display:
      static_cast<QLabel*>(target->widget)->setText(text);
      break;
    case C_Control_Kind::Text_Edit:
    case C_Control_Kind::Integer_Edit:
    case C_Control_Kind::Number_Edit:
      static_cast<QLineEdit*>(target->widget)->setText(text);
      break;
    case C_Control_Kind::Dropdown:
    case C_Control_Kind::Blank:
      break;
  }
}

void C_Dialog_Controls::Refuse(int control, const QString& reason) {
  const C_Control* refused = Find(control);
  if (refused == nullptr || refused->hint == nullptr) return;
  Set_Mark(refused->widget, "refused", true);
  Set_Mark(refused->hint, "refused", true);
  refused->hint->setText(reason);
  refused->hint->show();
  refused->widget->setFocus(Qt::OtherFocusReason);
  static_cast<QLineEdit*>(refused->widget)->selectAll();
}

void C_Dialog_Controls::Clear_Refusal(int control) {
  const C_Control* refused = Find(control);
  if (refused == nullptr || refused->hint == nullptr) return;
  Set_Mark(refused->widget, "refused", false);
  Set_Mark(refused->hint, "refused", false);
  refused->hint->setText(refused->range);
}

QString C_Dialog_Controls::Full_Name(int control) const {
  const C_Control& named = m_Controls.at(static_cast<size_t>(control));
  const auto* button = qobject_cast<QAbstractButton*>(named.widget);
  const QString caption = button != nullptr ? button->text() : named.widget->accessibleName();
  return named.station.isEmpty() ? caption : named.station + QLatin1Char(' ') + caption;
}

void C_Dialog_Controls::Mark_Button(int control, const char* mark) {
  const C_Control* marked = Find(control);
  if (marked != nullptr) Set_Mark(marked->widget, "command", QString::fromLatin1(mark));
}

void C_Dialog_Controls::Focus_First_Edit() {
  for (const C_Control& control : m_Controls) {
    if (control.hint == nullptr) continue;
    control.widget->setFocus(Qt::OtherFocusReason);
    static_cast<QLineEdit*>(control.widget)->selectAll();
    return;
  }
}

}  // namespace orsanta
