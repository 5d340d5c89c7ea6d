// The window of one dialog model: columns of controls, under those of buttons a line that says what goes on, and for a
// dialog that confirms a foot with the two answers. Qt thread only.
//
// Keys: Tab and arrows move, Enter confirms or presses, Escape cancels; the panel, on which all else stands, takes no
// Escape.
#pragma once

#include <QDialog>
#include <QElapsedTimer>
#include <map>
#include <memory>
#include <vector>

#include "desktop/dialog_link.h"

class QScrollArea;

namespace orsanta {

class C_Busy_Indicator;
class C_Dialog_Controls;
class C_Station_Board;
class C_Status_Line;

class C_Dialog_Window : public QDialog {
 public:
  // under: the window on which this one stands, null for none.
  C_Dialog_Window(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link, QWidget* under);

  void Show_Waiting_Texts();
  void Refuse(int control, const QString& reason);

  void Set_Command(int control, C_Command_State state);
  void Refuse_Press(int control, const QString& reason);
  // Says at the bottom that the command with that name runs, here or in another dialog; empty for none.
  void Show_Running(const QString& name);
  void Show_News(const QString& text);
  // In a window that shows the stations; in others they do nothing.
  void Show_Stations(const std::vector<C_Station_Tile>& tiles);
  void Show_Message(int station, const QString& text, bool waits);
  // Says it for some seconds.
  void Say(const QString& text);
  // The station of a control, where it has one, and its caption.
  QString Full_Name(int control) const;

  void reject() override;  // Escape and the close button of the window: cancels, and waits to be closed

 protected:
  void accept() override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  enum class C_Mark { Waiting, Running, Asks };  // pressed and not begun; its callback runs; it waits in a dialog
  struct C_Command {
    C_Mark mark = C_Mark::Waiting;
    QElapsedTimer pressed;
  };

  void Press(int control);
  void Mark(int control, C_Mark mark);
  void Let_Go(int control);
  QWidget* Make_Foot();
  void Choose_Size();
  bool Is_Panel() const;

  std::shared_ptr<C_Dialog_Link> m_Link;
  bool m_Confirms;
  std::map<int, C_Command> m_Commands;  // by the control of the button
  C_Busy_Indicator* m_Busy_Mark = nullptr;
  C_Dialog_Controls* m_Controls = nullptr;
  QScrollArea* m_Scroll = nullptr;
  C_Status_Line* m_Status = nullptr;   // null in a dialog that confirms
  C_Station_Board* m_Board = nullptr;  // null in a window that does not show the stations
};

}  // namespace orsanta
