// All windows that stand open. Lives on the Qt thread; nothing else touches it.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "desktop/dialog_link.h"
#include "support/dialog/front.h"

namespace orsanta {

class C_Chart_Window;
class C_Dialog_Window;
class C_Message_Window;

class C_Window_Manager {
 public:
  ~C_Window_Manager();

  void Open_Dialog(int number, const C_Dialog_Model& model, std::shared_ptr<C_Dialog_Link> link);
  void Close_Dialog(int number);
  void Show_Waiting_Texts(int number);
  void Refuse_Entry(int number, int control, const std::wstring& reason);
  void Set_Busy(int number, bool busy);

  void Show_Message(const C_Message_Model& model, std::function<void(int)> answered);

  // closed: the operator closed the chart.
  void Draw_Chart(unsigned chart, const C_Chart_Model& model, std::function<void()> closed);
  void Close_Chart(unsigned chart);

 private:
  C_Dialog_Window* Find(int number) const;

  std::vector<std::pair<int, C_Dialog_Window*>> m_Dialogs;  // in the order of their opening
  std::vector<C_Message_Window*> m_Messages;
  std::map<unsigned, C_Chart_Window*> m_Charts;
};

}  // namespace orsanta
