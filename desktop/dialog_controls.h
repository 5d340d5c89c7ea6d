// The controls of a dialog model, in columns: made from the model, read and written by their places in its list. Qt
// thread only.
#pragma once

#include <QWidget>
#include <functional>
#include <vector>

#include "support/dialog/front.h"

class QAbstractButton;
class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace orsanta {

class C_Dialog_Controls : public QWidget {
 public:
  // row_height: pixels. pressed: a button was pressed. edited: somebody typed into an edit.
  C_Dialog_Controls(const C_Dialog_Model& model, int row_height, std::function<void(int)> pressed,
                    std::function<void(int)> edited);

  // Of columns with that many rows at most, in a window of that height, pixels.
  static int Row_Height(const C_Dialog_Model& model, int space);

  // What stands in each control.
  std::vector<C_Control_Entry> Read_Entries() const;
  void Set_Text(int control, const QString& text);
  void Refuse(int control, const QString& reason);
  void Clear_Refusal(int control);
  // The station of the control, where it has one, and its caption.
  QString Full_Name(int control) const;
  // Marks a button: "waiting", "running", "asks", or nothing.
  void Mark_Button(int control, const char* mark);
  // Typing replaces what stands in the first edit.
  void Focus_First_Edit();

 private:
  struct C_Control {
    C_Control_Kind kind = C_Control_Kind::Blank;
    QWidget* widget = nullptr;
    QLabel* hint = nullptr;  // range or refusal of an edit
    QString range;
    QString station;  // its name, empty for none
  };

  C_Control* Find(int control);
  QWidget* Make_Column(const C_Dialog_Model& model, int number);
  void Add_Control(int index, const C_Control_Model& model, QVBoxLayout& column);
  QPushButton* Make_Button(int index, const C_Control_Model& model);
  QLineEdit* Make_Edit(int index, const C_Control_Model& model);
  void Add_Hint(C_Control& control, const C_Control_Model& model, QVBoxLayout& column);

  std::vector<C_Control> m_Controls;
  bool m_Is_Form;
  bool m_Is_Narrow = false;  // more columns than the screen takes at their full width
  int m_Row_Height;          // pixels
  std::function<void(int)> m_Pressed;
  std::function<void(int)> m_Edited;
};

}  // namespace orsanta
