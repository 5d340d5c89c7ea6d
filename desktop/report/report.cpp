// orsanta_report: the window with the report of a process that ended by a failed check. The library starts it once that
// process is gone; the window stays until an operator closes it.
//
// Usage: orsanta_report REPORT DUMP. DUMP is the path of the dump, empty where none could be written.
#include <QApplication>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileInfo>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QStyle>
#include <QVBoxLayout>
#include <cstdio>
#include <string>

#include "desktop/display.h"
#include "desktop/theme.h"

namespace orsanta {

namespace {

constexpr int Text_Width = 760;  // pixels, at the least: signatures are long

QLabel* Add_Text(QVBoxLayout& layout, const QString& text, const char* name) {
  auto* label = new QLabel(text);
  label->setObjectName(QLatin1String(name));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  label->setMinimumWidth(Text_Width);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  layout.addWidget(label);
  return label;
}

class C_Report_Window : public QDialog {
 public:
  C_Report_Window(const QString& report, const QString& dump)
      : QDialog(nullptr, Qt::Window | Qt::WindowTitleHint | Qt::WindowCloseButtonHint | Qt::WindowStaysOnTopHint) {
    setObjectName(QStringLiteral("message_box"));
    setProperty("stop", true);
    setWindowTitle(QStringLiteral("Orsanta 已停止"));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(24, 22, 24, 18);
    layout->setSpacing(14);

    auto* head = new QHBoxLayout;
    auto* icon = new QLabel;
    icon->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxCritical).pixmap(40, 40));
    auto* title = new QLabel(QStringLiteral("程序遇到无法继续的错误，已停止，测量已中断。"));
    title->setObjectName(QStringLiteral("message"));
    head->addWidget(icon);
    head->addSpacing(14);
    head->addWidget(title, 1);
    layout->addLayout(head);

    Add_Text(*layout, report.trimmed(), "report");
    Add_Text(*layout,
             dump.isEmpty() ? QStringLiteral("未能写入 .dmp 文件。")
                            : QStringLiteral(".dmp 文件：") + QFileInfo(dump).absoluteFilePath(),
             "dump");
    auto* buttons = new QDialogButtonBox;
    QPushButton* close = buttons->addButton(QStringLiteral("确定"), QDialogButtonBox::AcceptRole);
    close->setObjectName(QStringLiteral("confirm"));
    QObject::connect(close, &QPushButton::clicked, this, &QDialog::accept);
    layout->addWidget(buttons);

    adjustSize();
    const QRect space = screen()->availableGeometry();
    move(space.center().x() - width() / 2, space.top() + space.height() / 6);
  }
};

int Run(std::string platform, const QString& report, const QString& dump) {
  std::string name = "orsanta_report", option = "-platform";
  char* arguments[] = {name.data(), option.data(), platform.data(), nullptr};
  int count = 3;
  const QApplication application(count, arguments);
  Set_Up_Look();
  C_Report_Window(report, dump).exec();
  return 0;
}

}  // namespace

}  // namespace orsanta

int main(int argc, char** argv) {
  if (argc != 3) {
    fputs("Usage: orsanta_report REPORT DUMP: shows the text of a report and the path of its dump\n", stderr);
    return 2;
  }
  const orsanta::C_Display display = orsanta::Find_Display();
  if (display.platform.empty()) {
    fprintf(stderr, "orsanta_report: no window: %s\n", display.reason.c_str());
    return 1;
  }
  return orsanta::Run(display.platform, QString::fromUtf8(argv[1]), QFile::decodeName(argv[2]));
}
