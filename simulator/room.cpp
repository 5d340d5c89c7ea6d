#include "simulator/room.h"

namespace simulator {

// Where two devices are asked for at one id, the first of these takes it: the card, a temperature board, a drive.
C_Room::C_Room(const Settings& settings) {
  if (settings.io_card)
    m_Devices.emplace(C_Simulated_Io_Card::Can_Id_Of_Card, std::make_unique<C_Simulated_Io_Card>(settings));
  const auto is_free = [this](int can_id) {
    return can_id >= 1 && can_id < Can_Id_Limit && !m_Devices.contains(can_id);
  };
  for (const int can_id : settings.temperature_boards) {
    if (is_free(can_id)) m_Devices.emplace(can_id, std::make_unique<C_Interpolation_Device>(settings, can_id));
  }
  for (int can_id = 1; can_id < Can_Id_Limit; ++can_id) {
    const int64_t place = int64_t{can_id} - settings.first_drive_id;
    const bool asked_for = place >= 0 && place < settings.drives;
    if (asked_for && is_free(can_id)) m_Devices.emplace(can_id, std::make_unique<C_Drive>(settings, can_id));
  }
}

C_Device* C_Room::Find(int can_id) const {
  const auto found = m_Devices.find(can_id);
  return found == m_Devices.end() ? nullptr : found->second.get();
}

C_Device* C_Room::Answering(int can_id) const {
  C_Device* device = Find(can_id);
  return device != nullptr && !device->Is_Absent() ? device : nullptr;
}

void C_Room::Advance(Ticks to) {
  for (const auto& [can_id, device] : m_Devices) device->Advance(to);
}

void C_Room::Unsubscribe(const C_Sample_Fifo* fifo) {
  for (const auto& [can_id, device] : m_Devices) device->Unsubscribe(fifo);
}

void C_Room::Unsubscribe_All() {
  for (const auto& [can_id, device] : m_Devices) device->Unsubscribe_All();
}

}  // namespace simulator
