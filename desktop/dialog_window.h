// The window of one dialog model: a head with title and busy mark, columns of controls, and for a dialog that confirms
// a foot with the two answers. Qt thread only.
//
// Keys: Tab and arrows move, Enter confirms or presses, Escape cancels; the panel, on which all else stands, takes no
// Escape.
#pragma once

#include <QDialog>
#include <memory>
#include <vector>

#include "desktop/dialog_link.h"

class QLabel;
class QLineEdit;
class QPushButton;
class QVBoxLayout;

namespace orsanta {

class C_Busy_Indicator;
class C_Status_Display;

class C_Dialog_Window : public QDialog {
 public:
  // parent: the dialog under this one, null for the first.
  C_Dialog_Window(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link, QWidget* parent);

  void Show_Waiting_Texts();
  void Refuse(int control, const QString& reason);
  // The command of a press runs, or has ended.
  void Set_Busy(bool busy);

  void reject() override;  // Escape and the close button of the window: cancels, and waits to be closed

 protected:
  void accept() override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  struct C_Control {
    C_Control_Kind kind = C_Control_Kind::Blank;
    QWidget* widget = nullptr;
    QLabel* hint = nullptr;  // range or refusal of an edit
    QString range;
  };

  int Choose_Row_Height(const C_Dialog_Model& model) const;
  QWidget* Make_Head();
  QWidget* Make_Columns(const C_Dialog_Model& model);
  QWidget* Make_Foot();
  void Add_Control(int index, const C_Control_Model& model, QVBoxLayout& column);
  QPushButton* Make_Button(int index, const C_Control_Model& model);
  QLineEdit* Make_Edit(int index, const C_Control_Model& model);
  void Add_Hint(C_Control& control, const C_Control_Model& model, QVBoxLayout& column);
  void Press(int index, QPushButton* button);
  void Let_Go();
  void Set_Text(int control, const QString& text);
  void Clear_Refusal(int control);
  void Choose_Size();
  void Focus_First_Edit();

  std::shared_ptr<C_Dialog_Link> m_Link;
  std::vector<C_Control> m_Controls;
  bool m_Confirms;
  bool m_Busy = false;
  int m_Row_Height = 0;              // pixels
  QPushButton* m_Pressed = nullptr;  // the button whose command runs
  C_Busy_Indicator* m_Busy_Mark = nullptr;
  QLabel* m_Busy_Text = nullptr;
  QWidget* m_Body = nullptr;
};

}  // namespace orsanta
