#include "desktop/message_window.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "desktop/desk_space.h"
#include "desktop/theme.h"
#include "desktop/window_head.h"
#include "support/dialog/message_box.h"

namespace orsanta {

namespace {
constexpr int Guard_Ms = 400;  // a key typed for another window must not answer a box that has just come up
constexpr int Set_Off_X = 36;  // pixels between boxes that stand open together: the text of each stays in sight
constexpr int Set_Off_Y = 72;
constexpr int Places = 6;        // set-offs before the first place is used again
constexpr int Text_Width = 380;  // pixels of the narrowest text
constexpr int Greatest_Text_Width = 620;
constexpr int Around_Text = 120;  // pixels of width: icon, margins and frame
}  // namespace

C_Message_Window::C_Message_Window(const C_Message_Model& model, int place, C_Answered answered, QWidget* under)
    : QDialog(under), m_Yes_No((model.flags & Box_Yes_No) != 0), m_Answered(std::move(answered)) {
  Qt::WindowFlags flags = Qt::Dialog | Qt::WindowTitleHint | Qt::WindowCloseButtonHint;
  if ((model.flags & Box_System_Modal) != 0) flags |= Qt::WindowStaysOnTopHint;
  setWindowFlags(flags);
  setObjectName(QStringLiteral("message_box"));
  setWindowTitle(model.title.empty() ? QStringLiteral("Orsanta") : To_Qt(model.title));
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_StyledBackground);
  setProperty("stop", (model.flags & Box_Stop_Icon) != 0);

  auto* whole = new QVBoxLayout(this);
  whole->setContentsMargins(1, 1, 1, 1);
  whole->addWidget(new C_Window_Head(this));
  auto* layout = new QVBoxLayout;
  layout->setContentsMargins(23, 21, 23, 17);
  layout->setSpacing(18);
  whole->addLayout(layout);
  auto* row = new QHBoxLayout;
  row->setSpacing(18);
  auto* icon = new QLabel;
  const auto picture = (model.flags & Box_Stop_Icon) != 0 ? QStyle::SP_MessageBoxCritical
                       : m_Yes_No                         ? QStyle::SP_MessageBoxQuestion
                                                          : QStyle::SP_MessageBoxInformation;
  icon->setPixmap(style()->standardIcon(picture).pixmap(40, 40));
  icon->setObjectName((model.flags & Box_Stop_Icon) != 0 ? QStringLiteral("stop_icon") : QStringLiteral("icon"));
  row->addWidget(icon, 0, Qt::AlignTop);
  auto* text = new QLabel(With_Breaks(To_Qt(model.text)));
  text->setTextFormat(Qt::PlainText);
  text->setObjectName(QStringLiteral("message"));
  text->setWordWrap(true);
  text->ensurePolished();
  const int widest = text->fontMetrics().boundingRect(QRect(), 0, text->text()).width();
  const int greatest = std::min(Greatest_Text_Width, Desk_Space(*this).width() - Around_Text);
  text->setFixedWidth(std::clamp(widest + 2, Text_Width, greatest));
  text->setMinimumHeight(text->heightForWidth(text->width()));  // all its lines, however long a path in it is
  row->addWidget(text, 1);
  layout->addLayout(row);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  const auto add_button = [this, buttons](const QString& caption, const char* name, int answer) {
    auto* button = new QPushButton(caption);
    button->setObjectName(QLatin1String(name));
    button->setMinimumSize(120, theme::Row_Height);
    button->installEventFilter(this);
    QObject::connect(button, &QPushButton::clicked, this, [this, answer] { Answer(answer); });
    buttons->addWidget(button);
    return button;
  };
  if (m_Yes_No) {
    add_button(QStringLiteral("是(&Y)"), "confirm", Answer_Yes)->setDefault(true);
    add_button(QStringLiteral("否(&N)"), "no", Answer_No);
  } else {
    add_button(QStringLiteral("确定"), "confirm", Answer_Ok)->setDefault(true);
  }
  layout->addLayout(buttons);

  adjustSize();
  const QRect space = Desk_Space(*this);
  const QPoint first(space.center().x() - width() / 2, space.top() + space.height() / 3);  // below the stations
  move(first + (place % Places) * QPoint(Set_Off_X, Set_Off_Y));
  m_Shown.start();
}

void C_Message_Window::Answer(int answer) {
  if (!m_Answered) return;
  std::exchange(m_Answered, nullptr)(this, answer);
  QWidget* under = isActiveWindow() ? parentWidget() : nullptr;
  close();
  if (under != nullptr) under->activateWindow();  // a bare display leaves the keyboard to nobody
}

// Escape and the close button: OK to a notice, No to a question.
void C_Message_Window::reject() {
  if (m_Answered) {
    Answer(m_Yes_No ? Answer_No : Answer_Ok);
  } else {
    QDialog::reject();
  }
}

void C_Message_Window::keyPressEvent(QKeyEvent* event) {
  if (m_Shown.elapsed() < Guard_Ms) return;
  QDialog::keyPressEvent(event);
}

bool C_Message_Window::eventFilter(QObject* object, QEvent* event) {
  const bool is_key = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
  if (is_key && m_Shown.elapsed() < Guard_Ms) return true;
  return QDialog::eventFilter(object, event);
}

}  // namespace orsanta
