// Message boxes: a text that the operator acknowledges. The calling thread waits for the answer, with the displays of
// its dialogs going on and their buttons refused; any thread may call, and several boxes may stand open at once. The
// title is the present subject of the thread (support/dialog/subject.h). Without a display a box is one line on the
// standard error stream and counts as answered at once: with OK, a yes-or-no question with No.
#pragma once

#include "support/system/wide_string.h"

namespace orsanta {

constexpr unsigned Box_Plain = 0;
constexpr unsigned Box_Yes_No = 4;
constexpr unsigned Box_Stop_Icon = 16;
constexpr unsigned Box_System_Modal = 4096;  // above all windows

constexpr int Answer_Ok = 1;
constexpr int Answer_Yes = 6;
constexpr int Answer_No = 7;

// flags: Box_ values, joined. Returns an Answer_ value.
int Message_Box(const CMyStringW& text, unsigned flags = Box_Plain);

}  // namespace orsanta
