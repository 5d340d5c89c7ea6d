#include "drive/channel_map.h"

#include <algorithm>

#include "drive/tremalink.h"

namespace orsanta {

void C_Mapped_Device::Map_Input(int can_id, int port, int format, int channel, int depth) {
  SET_INPUT_DATA_MAP(m_ThreadNum, can_id, port, format, channel);
  RESET_INPUT_DATA_FIFO(m_ThreadNum, channel, depth);
}

int C_Mapped_Device::Map_Fifo_Channel(int can_id, int port, int channel, C_FIFO2Window* window, int format, int depth) {
  Map_Input(can_id, port, format, channel, depth);
  window->Set_Window_Len(C_FIFO2Window::Default_Window_Len);
  WaitForAllInsFinish(m_ThreadNum);  // the thread may not read before the map has reached the server
  window->Start_Read(channel);
  m_WindowList.Add(window);
  return 1;
}

void C_Mapped_Device::Map_Inputs(int can_id, std::span<const C_Input_Row> rows) {
  for (const auto& [port, format, channel, depth, window] : rows) {
    if (window == nullptr) {
      Map_Input(can_id, port, format, channel, depth);
    } else {
      Map_Fifo_Channel(can_id, port, channel, window, format, depth);
    }
  }
}

void C_Mapped_Device::Map_Outputs(int can_id, std::span<const C_Output_Row> rows) {
  for (const auto& [port, format, channel] : rows) SET_OUTPUT_DATA_MAP(m_ThreadNum, can_id, port, format, channel);
}

void C_Mapped_Device::End_Windows() {
  for (C_FIFO2Window* window : m_WindowList) window->ReleaseSubClass_CBaseBindThread();
  m_WindowList.Clear();
}

int C_Mapped_Ids::Map_Once(int can_id, const std::function<int()>& map) {
  const C_Lock_Guard hold(m_Lock);
  if (std::find(m_Ids.begin(), m_Ids.end(), can_id) != m_Ids.end()) return 1;
  const int result = map();
  if (result != 0) m_Ids.Add(can_id);
  return result;
}

void C_Mapped_Ids::Clear() {
  const C_Lock_Guard hold(m_Lock);
  m_Ids.Clear();
}

}  // namespace orsanta
