#include "desktop/chart_window.h"

#include <QCloseEvent>
#include <QDateTime>
#include <QFileDialog>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPixmap>
#include <QPushButton>
#include <QRegularExpression>
#include <QSaveFile>
#include <QVBoxLayout>
#include <algorithm>

#include "desktop/chart_view.h"
#include "desktop/theme.h"
#include "desktop/window_head.h"

namespace orsanta {

namespace {
constexpr int Title_Height = 40;  // of a saved picture, pixels
constexpr int Note_Height = 28;   // of one line under the buttons, pixels
}  // namespace

C_Chart_Window::C_Chart_Window(const C_Chart_Model& model, std::function<void()> closed)
    : QWidget(nullptr, Qt::Window), m_Closed(std::move(closed)) {
  setAttribute(Qt::WA_DeleteOnClose);
  setAttribute(Qt::WA_StyledBackground);
  setObjectName(QStringLiteral("chart_window"));
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->setSpacing(0);

  layout->addWidget(new C_Window_Head(this));
  m_View = new C_Chart_View;
  layout->addWidget(m_View, 1);

  auto* foot = new QHBoxLayout;
  foot->setContentsMargins(10, 6, 10, 8);
  foot->setSpacing(8);
  const auto add_button = [this, foot](const QString& caption, const char* name, std::function<void()> work) {
    auto* button = new QPushButton(caption);
    button->setObjectName(QLatin1String(name));
    button->setMinimumHeight(30);
    QObject::connect(button, &QPushButton::clicked, this, std::move(work));
    foot->addWidget(button);
  };
  add_button(QStringLiteral("显示全部"), "follow", [this] {
    m_View->Follow();
    m_View->setFocus();  // the arrows go on moving the chart
  });
  add_button(QStringLiteral("保存图片"), "save_png",
             [this] { Ask_And_Save(QStringLiteral("PNG (*.png)"), QStringLiteral("png"), &C_Chart_Window::Save_Png); });
  add_button(QStringLiteral("保存数据"), "save_csv",
             [this] { Ask_And_Save(QStringLiteral("CSV (*.csv)"), QStringLiteral("csv"), &C_Chart_Window::Save_Csv); });
  m_Note = new QLabel;
  m_Note->setObjectName(QStringLiteral("hint"));
  m_Note->setTextFormat(Qt::PlainText);
  m_Note->setWordWrap(true);
  m_Note->setMinimumHeight(Note_Height);
  m_Note->setContentsMargins(10, 0, 10, 0);
  foot->addStretch(1);
  layout->addLayout(foot);
  layout->addWidget(m_Note);

  resize(std::max(model.width, minimumSizeHint().width()), std::max(model.height, minimumSizeHint().height()));
  Redraw(model);
  m_View->setFocus();
}

void C_Chart_Window::Redraw(const C_Chart_Model& model) {
  m_Model = model;
  setWindowTitle(To_Qt(model.title));
  m_View->Set_Model(model);
  if (!model.note.empty()) Note(To_Qt(model.note));
}

void C_Chart_Window::Note(const QString& text) {
  m_Note->setText(With_Breaks(text));
}

void C_Chart_Window::Ask_And_Save(const QString& filter, const QString& suffix,
                                  QString (C_Chart_Window::*save)(const QString&)) {
  auto* dialog = new QFileDialog(this, windowTitle(), QString(), filter);
  dialog->setOption(QFileDialog::DontUseNativeDialog);  // its texts are ours, in the language of the panel
  dialog->selectFile(File_Name() + QLatin1Char('.') + suffix);
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  dialog->setDefaultSuffix(suffix);
  QObject::connect(dialog, &QFileDialog::fileSelected, this, [this, save](const QString& path) {
    const QString failure = (this->*save)(path);
    Note(failure.isEmpty() ? QStringLiteral("已保存：%1").arg(path) : failure);
  });
  dialog->open();
}

// The station, what is drawn, and its unit.
QString C_Chart_Window::Full_Title() const {
  if (m_Model.station == 0) return windowTitle();
  return To_Qt(Station_Name(m_Model.station)) + QLatin1Char(' ') + windowTitle();
}

// Title and time, without what a file system may not take.
QString C_Chart_Window::File_Name() const {
  QString name = Full_Title() + QDateTime::currentDateTime().toString(QStringLiteral(" yyyy-MM-dd hh.mm.ss"));
  return name.replace(QRegularExpression(QStringLiteral("[/\\\\:：*?\"<>|]")), QStringLiteral(" "));
}

// The drawing under its title and the time.
QString C_Chart_Window::Save_Png(const QString& path) {
  const QPixmap drawing = m_View->grab();
  QPixmap picture(drawing.size() + QSize(0, static_cast<int>(Title_Height * drawing.devicePixelRatio())));
  picture.setDevicePixelRatio(drawing.devicePixelRatio());
  picture.fill(theme::Paper);
  QPainter painter(&picture);
  painter.setPen(theme::Ink);
  const QRect head(12, 0, m_View->width() - 24, Title_Height);
  painter.drawText(head, Qt::AlignLeft | Qt::AlignVCenter, Full_Title());
  painter.drawText(head, Qt::AlignRight | Qt::AlignVCenter,
                   QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")));
  painter.drawPixmap(0, Title_Height, drawing);
  painter.end();
  QSaveFile file(path);
  if (file.open(QIODevice::WriteOnly) && picture.save(&file, "PNG") && file.commit()) return QString();
  return QStringLiteral("无法写入 %1：%2").arg(path, file.errorString());
}

QString C_Chart_Window::Save_Csv(const QString& path) {
  QSaveFile file(path);
  bool good =
      file.open(QIODevice::WriteOnly | QIODevice::Text) && file.write(("序号,\"" + Full_Title() + "\"\n").toUtf8()) > 0;
  const size_t count = std::min(m_Model.x.size(), m_Model.y.size());
  for (size_t i = 0; good && i < count; ++i) {
    const QByteArray line = QByteArray::number(m_Model.x[i], 'g', 17) + ',' + QByteArray::number(m_Model.y[i], 'g', 17);
    good = file.write(line + '\n') > 0;
  }
  if (good && file.commit()) return QString();
  return QStringLiteral("无法写入 %1：%2").arg(path, file.errorString());
}

void C_Chart_Window::closeEvent(QCloseEvent* event) {
  if (m_Closed) std::exchange(m_Closed, nullptr)();
  QWidget::closeEvent(event);
}

}  // namespace orsanta
