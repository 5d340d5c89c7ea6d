#include "desktop/theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QPalette>
#include <QRegularExpression>
#include <QStyleFactory>

namespace orsanta {

namespace {

QString Find_Font() {
  const QStringList chinese = QFontDatabase::families(QFontDatabase::SimplifiedChinese);
  for (const char* name : {"Noto Sans CJK SC", "Source Han Sans SC", "Noto Sans SC", "WenQuanYi Micro Hei",
                           "WenQuanYi Zen Hei", "Droid Sans Fallback"}) {
    if (chinese.contains(QLatin1String(name))) return QLatin1String(name);
  }
  for (const QString& name : chinese) {
    if (!name.contains(QLatin1String("Mono"))) return name;
  }
  return chinese.isEmpty() ? QString() : chinese.front();
}

const char* const Style_Sheet = R"(
QDialog[window="true"] { border: 1px solid #14202B; }
QDialog#message_box { background: #FFFFFF; border: 1px solid #14202B; }
QDialog#message_box[stop="true"] { border: 2px solid #B41E1E; }
QWidget#chart_window { border: 1px solid #14202B; }
QWidget#header { background: #14202B; }
QLabel#title { color: #FFFFFF; font-weight: 600; font-size: 18px; }
QPushButton#close { background: transparent; color: #FFFFFF; border: 1px solid #5A6876; font-size: 18px; padding: 0; }
QPushButton#close:hover { background: #B41E1E; }
QLabel#status_line { background: #14202B; color: #C9D6DF; font-size: 15px; }
QLabel#status_line[kind="running"] { color: #FFD27A; }
QLabel#status_line[kind="said"] { background: #FFD27A; color: #14202B; font-weight: 600; }
QFrame#column, QFrame#form { background: #FFFFFF; border: 1px solid #D5DBE1; border-radius: 6px; }
QPushButton { background: #F4F6F8; color: #14202B; border: 1px solid #A9B4BF; border-radius: 4px; padding: 2px 8px; }
QPushButton[narrow="true"] { padding: 2px 1px; }
QPushButton[main="true"] { background: #0B5CAD; color: #FFFFFF; border: 1px solid #083A6E; font-weight: 700; }
QPushButton[main="true"]:focus { border: 3px solid #14202B; }
QPushButton:hover { background: #E6EEF7; border-color: #0B5CAD; }
QPushButton:focus { border: 2px solid #0B5CAD; }
QPushButton[main="true"]:hover { background: #0A4F95; }
QPushButton[command="waiting"] { background: #CFE2F6; color: #14202B; border: 2px dashed #0B5CAD; }
QPushButton[command="running"] { background: #FFD27A; color: #14202B; border: 2px solid #8A5A00; }
QPushButton[command="asks"] { background: #CFE2F6; color: #14202B; border: 3px solid #0B5CAD; font-weight: 600; }
QPushButton:pressed { background: #0B5CAD; color: #FFFFFF; border-color: #0B5CAD; }
QPushButton:disabled { background: #ECEFF2; color: #A9B4BF; border-color: #D5DBE1; }
QPushButton:checked { background: #0B5CAD; color: #FFFFFF; }
QPushButton#confirm { background: #0B5CAD; color: #FFFFFF; border: 1px solid #0B5CAD; }
QPushButton#confirm:hover { background: #0A4F95; }
QPushButton#confirm:focus { border: 2px solid #14202B; }
QPushButton#confirm:pressed { background: #083A6E; }
QLineEdit { background: #FFFFFF; color: #14202B; border: 1px solid #8A97A4; border-radius: 4px;
  padding: 3px 8px; selection-background-color: #0B5CAD; }
QLineEdit:focus { border: 2px solid #0B5CAD; }
QLineEdit[refused="true"] { border: 2px solid #B41E1E; background: #FDF1F1; }
QCheckBox { spacing: 10px; }
QCheckBox::indicator { width: 20px; height: 20px; }
QLabel#column_title { color: #14202B; font-weight: 700; font-size: 15px; }
QLabel#caption { color: #14202B; }
QLabel#hint { color: #5A6876; font-size: 14px; margin-bottom: 5px; }
QLabel#hint[refused="true"] { color: #B41E1E; font-weight: 600; }
QLabel#fixed { font-size: 20px; padding: 8px; }
QLabel#message { font-size: 18px; }
QScrollArea { border: none; background: transparent; }
)";

}  // namespace

QString With_Breaks(const QString& text) {
  static const QRegularExpression long_words(QStringLiteral("\\S{30,}"));
  static const QRegularExpression places(QStringLiteral("(/|[^/]{30})"));
  QString broken = text;
  for (auto found = long_words.globalMatch(text); found.hasNext();) {
    const QString word = found.next().captured();
    broken.replace(word, QString(word).replace(places, QStringLiteral("\\1\u200B")));
  }
  return broken;
}

bool Set_Up_Look() {
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QFont font = QApplication::font();
  const QString family = Find_Font();
  if (!family.isEmpty()) font.setFamily(family);
  font.setPixelSize(theme::Normal_Text);
  QApplication::setFont(font);

  QPalette palette;
  palette.setColor(QPalette::Window, QColor(0xEC, 0xEF, 0xF2));
  palette.setColor(QPalette::WindowText, theme::Ink);
  palette.setColor(QPalette::Text, theme::Ink);
  palette.setColor(QPalette::Highlight, theme::Accent);
  palette.setColor(QPalette::HighlightedText, theme::Paper);
  QApplication::setPalette(palette);
  qApp->setStyleSheet(QString::fromUtf8(Style_Sheet));
  return !family.isEmpty();
}

}  // namespace orsanta
