// The desktop front: windows of Qt Widgets on a thread of their own.
//
// Any thread may call any operation; each posts its work to the Qt thread and returns. Only the open flags of charts,
// the texts of displays and the listeners are shared between the threads, each behind a leaf lock.
#pragma once

#include <atomic>
#include <map>
#include <memory>

#include "desktop/dialog_link.h"
#include "desktop/qt_thread.h"
#include "desktop/window_manager.h"
#include "support/dialog/front.h"
#include "support/time/lock.h"

namespace orsanta {

class C_Desktop_Front : public C_Front {
 public:
  C_Desktop_Front() = default;
  ~C_Desktop_Front() override;

  // Comes before everything else; false, with the reason, when there is no display.
  bool Start(std::string& reason);

  int Open_Dialog(const C_Dialog_Model& model, C_Dialog_Listener& listener) override;
  void Close_Dialog(int dialog) override;
  void Set_Control_Text(int dialog, int control, const std::wstring& text) override;
  void Refuse_Entry(int dialog, int control, const std::wstring& reason) override;
  void Set_Command(int dialog, int control, C_Command_State state) override;
  void Refuse_Press(int dialog, int control, const std::wstring& reason) override;
  void Post_Message(const C_Message_Model& model, C_Message_Listener& listener) override;
  void Draw_Chart(unsigned chart, const C_Chart_Model& model) override;
  bool Is_Chart_Open(unsigned chart) override;
  void Close_Chart(unsigned chart) override;
  void Raise_Chart(unsigned chart) override;
  void Show_Stations(const std::vector<C_Station_Tile>& tiles) override;

 private:
  struct C_Chart_State {
    bool open = false;
    std::unique_ptr<C_Chart_Model> waiting;  // the newest drawing that the Qt thread has not taken yet
  };

  struct C_Open_Message {
    C_Message_Listener* listener = nullptr;
    int refusal = 0;  // what counts as its answer when nobody can give one
  };

  // For a display that went away while windows stood open: every dialog and box is cancelled, and the process goes on.
  // Qt thread only.
  void Give_Up();
  std::shared_ptr<C_Dialog_Link> Find(int dialog);
  void Answer(int message, int answer);
  void Draw_Waiting(unsigned chart);

  C_Leaf_Lock m_Lock;
  int m_Last_Dialog GUARDED_BY(m_Lock) = 0;
  std::map<int, std::shared_ptr<C_Dialog_Link>> m_Links GUARDED_BY(m_Lock);
  int m_Last_Message GUARDED_BY(m_Lock) = 0;
  std::map<int, C_Open_Message> m_Messages GUARDED_BY(m_Lock);
  std::map<unsigned, C_Chart_State> m_Charts GUARDED_BY(m_Lock);
  std::vector<C_Station_Tile> m_Tiles GUARDED_BY(m_Lock);  // as last shown
  std::unique_ptr<C_Window_Manager> m_Windows;             // made, used and ended on the Qt thread
  C_Qt_Thread& m_Thread = C_Qt_Thread::Get();
};

}  // namespace orsanta
