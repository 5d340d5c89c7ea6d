// The look of all windows: font, colours and sizes. Qt thread only.
#pragma once

#include <QColor>
#include <QString>

namespace orsanta {

// Sets font and style of the application. False when no font has Chinese, so that texts will show as boxes.
bool Set_Up_Look();

// With places to break its long words, so that a label can wrap it: behind the slashes of a path, and where a part of
// it is longer than a line.
QString With_Breaks(const QString& text);

inline QString To_Qt(const std::wstring& text) {
  return QString::fromStdWString(text);
}

namespace theme {
const QColor Ink(0x14, 0x20, 0x2B);           // text
const QColor Quiet(0x5A, 0x68, 0x76);         // secondary text
const QColor Paper(0xFF, 0xFF, 0xFF);         // cards, charts
const QColor Rule(0xD5, 0xDB, 0xE1);          // borders, grid
const QColor Accent(0x0B, 0x5C, 0xAD);        // focus, presses, lines
const QColor Display_Back(0x0C, 0x1A, 0x24);  // status displays
const QColor Display_Ink(0xE9, 0xF7, 0xEF);
const QColor Display_Caption(0x9F, 0xB6, 0xC4);
const QColor Alarm(0xB4, 0x1E, 0x1E);
constexpr int Row_Height = 38;  // pixels of one row of controls
constexpr int Greatest_Row_Height = 52;
constexpr int Row_Gap = 6;            // between rows
constexpr int Least_Row_Height = 28;  // of a row, where many must fit
constexpr int Normal_Text = 16;       // pixel size of text at scale 1
}  // namespace theme

}  // namespace orsanta
