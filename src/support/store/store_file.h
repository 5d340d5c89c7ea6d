// The form of a store's file: UTF-8 text that an operator can read and mend in an editor.
//
//   orsanta store 1
//   C_InitDlg Num 0 = int 1
//   C_VoiceMotor Val_Force_OffSet 0 = double 0.1
//   C_VoiceMotor m_P 0 = array CMyArray<double> 2
//   C_VoiceMotor/CMyArray m_P 0 = double -1.5
//   C_VoiceMotor/CMyArray m_P 1 = double nan:7ff8000000000000
//   C_ORS_Dlg password_str 0 = text "mocha"
//   end
//
// One entry a line: class path, key, index, kind, value. Every value reads back to the same bits. Names with blanks are
// quoted like texts, with \" \\ \n \r \t and, for the other control characters, \xHH. Empty lines may stand anywhere;
// lines that start with # are kept. The last line shows that the file is whole.
//
// No file is touched here, and no call depends on the locale or keeps state: any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "support/base/hash.h"

namespace orsanta {

struct C_Store_Entry {
  std::string path;  // class names joined by '/'
  std::string key;
  int index = 0;
  C_Entry_Kind kind = C_Entry_Kind::Raw;
  std::string bytes;  // the value as it stands in memory; a text in UTF-8; of an array, the type of the array
  int count = 0;      // of an array
  int line = 0;       // on which it stands, from 1; Parse_Store fills it in
};

struct C_Store_Content {
  std::vector<std::string> comments;
  std::vector<C_Store_Entry> entries;
};

struct C_Store_Fault {
  int line = 0;       // from 1
  std::wstring text;  // what is wrong there, for the operator
};

enum class C_Store_State {
  Missing,
  Whole,
  Faulty,  // some lines cannot be taken, all others can
  Broken,  // it is no store or not the whole of one, so that nothing of it can be taken
  Unread,  // it stands, but the system does not give its bytes
};

// The word for a kind in the file.
const char* Kind_Word(C_Entry_Kind kind);

std::string Format_Store(const C_Store_Content& content);
// Takes what can be taken of a file: Whole, Faulty or Broken. A line that cannot be read costs only its own entry, an
// element of an array the array, and a place that stands twice both entries. faults: what was not taken, by lines.
C_Store_State Parse_Store(std::string_view text, C_Store_Content& content, std::vector<C_Store_Fault>& faults);
// The entries of `present` that `written` does not name, and its comments, added to `written`. Elements beyond the end
// of an array that was written anew are dropped.
void Keep_Unknown_Entries(const C_Store_Content& present, C_Store_Content& written);

}  // namespace orsanta
