#include "simulator/device.h"

#include <algorithm>
#include <cmath>

#include "simulator/noise.h"

namespace simulator {

double Fit_Into_Format(double value, int format) {
  if (format >= Format_Double) return value;
  if (format <= Format_Least || !(std::abs(value) < 0x1p62)) return 0.0;
  const int spare_bits = 64 - 8 * format;
  const auto bits = static_cast<uint64_t>(static_cast<int64_t>(value)) << spare_bits;
  return static_cast<double>(static_cast<int64_t>(bits) >> spare_bits);
}

bool Fits_Format(double value, int format) {
  if (!std::isfinite(value)) return false;
  return format >= Format_Double || Fit_Into_Format(value, format) == std::trunc(value);
}

C_Device::C_Device(const Settings& settings, int can_id)
    : m_Can_Id(can_id),
      m_Noise_Key(Mix(settings.seed ^ Mix(static_cast<uint64_t>(can_id)))),
      m_Period(std::max<Ticks>(std::llround(settings.sample_ms * static_cast<double>(Ticks_Per_Ms)), 1)),
      m_Next_Sample(1 + static_cast<Ticks>(m_Noise_Key % static_cast<uint64_t>(m_Period))) {}

void C_Device::Advance(Ticks to) {
  while (m_Now < to) {
    if (!Is_At_Rest()) {
      ++m_Now;
      Step();
    } else if (Wants_Samples()) {
      m_Now = std::min(to, m_Next_Sample);
    } else {  // nothing moves and every FIFO is full: one step to the end
      m_Now = to;
      if (m_Next_Sample < to) m_Next_Sample += (to - m_Next_Sample + m_Period - 1) / m_Period * m_Period;
    }
    if (m_Now == m_Next_Sample) {
      Send_Cyclic();
      m_Next_Sample += m_Period;
    }
  }
}

bool C_Device::Wants_Samples() const {
  if (m_Silent || m_Absent) return false;
  return std::any_of(m_Subscriptions.begin(), m_Subscriptions.end(),
                     [this](const C_Subscription& s) { return !s.fifo->Full() && Is_Cyclic(s.port); });
}

void C_Device::Send_Cyclic() {
  if (m_Silent || m_Absent) return;
  for (const C_Subscription& s : m_Subscriptions) {
    if (s.fifo->Full() || !Is_Cyclic(s.port)) continue;
    s.fifo->Push(Fit_Into_Format(Port_Value(s.port), s.format), static_cast<uint64_t>(m_Now));
  }
}

void C_Device::Send(int port) {
  if (m_Silent || m_Absent) return;
  for (const C_Subscription& s : m_Subscriptions) {
    if (s.port == port) s.fifo->Push(Fit_Into_Format(Port_Value(port), s.format), static_cast<uint64_t>(m_Now));
  }
}

double C_Device::Noise(int port) const {
  return Gauss(m_Noise_Key + static_cast<uint64_t>(m_Now) * 256 + static_cast<uint64_t>(port));
}

void C_Device::Subscribe(int port, int format, C_Sample_Fifo* fifo) {
  Unsubscribe(fifo);
  m_Subscriptions.push_back({port, format, fifo});
}

void C_Device::Unsubscribe(const C_Sample_Fifo* fifo) {
  std::erase_if(m_Subscriptions, [fifo](const C_Subscription& s) { return s.fifo == fifo; });
}

bool C_Device::Is_Cyclic(int) const {
  return true;
}
bool C_Device::Has_Input(int, int) const {
  return false;
}
bool C_Device::Has_Output(int, int) const {
  return false;
}
bool C_Device::Get_Input(int, int) const {
  return false;
}
void C_Device::Set_Output(int, int, bool) {}
bool C_Device::Execute(int) {
  return false;
}

}  // namespace simulator
