// All windows that stand open, and which of them stands on which. Lives on the Qt thread; nothing else touches it.
//
// A dialog or box stands on the dialog of its own thread, which it blocks if it asks for an answer, or else on the
// newest window, which it does not block. What stands on a window is kept above it and is put away with it, by whatever
// manages the windows of the desktop.
#pragma once

#include <QString>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "desktop/dialog_link.h"
#include "desktop/input_gate.h"
#include "support/dialog/front.h"

namespace orsanta {

class C_Chart_Window;
class C_Dialog_Window;
class C_Message_Window;

class C_Window_Manager {
 public:
  C_Window_Manager();
  ~C_Window_Manager();

  void Open_Dialog(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link);
  void Close_Dialog(int number);
  void Show_Waiting_Texts(int number);
  void Refuse_Entry(int number, int control, const std::wstring& reason);
  void Set_Command(int number, int control, C_Command_State state);
  void Refuse_Press(int number, int control, const std::wstring& reason);

  void Show_Message(const C_Message_Model& model, std::function<void(int)> answered);

  // closed: the operator closed the chart.
  void Draw_Chart(unsigned chart, const C_Chart_Model& model, std::function<void()> closed);
  void Close_Chart(unsigned chart);
  void Raise_Chart(unsigned chart);

  void Show_Stations(const std::vector<C_Station_Tile>& tiles);

 private:
  struct C_Open_Dialog {
    int number;
    int owner;
    bool confirms;
    C_Dialog_Window* window;
  };
  struct C_Open_Box {
    int owner;
    int station;
    C_Message_Window* window;
  };

  struct C_Last_Message {
    QString text;  // with its time
    bool waits = false;
  };

  // Keeps the message, so that it can be read once its box is answered.
  void Note_Message(const C_Message_Model& model);
  void Show_Last_Messages();

  const C_Open_Dialog* Find(int number) const;
  const C_Open_Dialog* Find(const QWidget* window) const;
  QWidget* Window_To_Stand_On(int owner) const;
  // True where the dialog is `owner`, or one that `owner` stands on.
  bool Carries(int dialog, int owner) const;
  // The window that has to be answered before the given one; null where that may be used.
  QWidget* Blocker_Of(const QWidget* window) const;
  // Says so to who pressed in a blocked window.
  void Refuse_Input(const QWidget* window);

  std::vector<C_Open_Dialog> m_Dialogs;  // in the order of their opening
  std::vector<C_Open_Box> m_Boxes;
  std::map<unsigned, C_Chart_Window*> m_Charts;
  std::vector<C_Station_Tile> m_Tiles;
  std::map<int, C_Last_Message> m_Messages;  // by station; 0 for those of none
  QString m_News;                            // the newest message of all
  C_Input_Gate m_Gate;
};

}  // namespace orsanta
