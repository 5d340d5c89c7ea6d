// The control surface of simulator.h over the installation.
#include <algorithm>
#include <cmath>

#include "simulator/installation.h"
#include "simulator/simulator.h"

namespace simulator {

namespace {

constexpr double Kelvin = 273.15;

// Applies a function to a device; to none where there is no device of that kind at the id.
template <class T, class F>
void With(int can_id, F&& action) {
  const C_Access access;
  if (T* device = access->room.Find_As<T>(can_id)) action(*device);
}

// Applies a function to a probe and returns its result; 0 where there is no probe at the id.
template <class F>
double Of_Probe(int can_id, F&& read) {
  double value = 0.0;
  With<C_Motor_Device>(can_id, [&](const C_Motor_Device& device) { value = read(device.Plant()); });
  return value;
}

}  // namespace

void Reset(const Settings& settings) {
  Replace_Installation(settings);
}

void Place_Part(int can_id, double thickness_mm) {
  if (!std::isfinite(thickness_mm) || thickness_mm < 0.0) return;
  With<C_Drive>(can_id, [&](C_Drive& drive) { drive.Set_Part(thickness_mm); });
}

void Remove_Part(int can_id) {
  Place_Part(can_id, 0.0);
}

void Set_Head_Height(int can_id, double mm) {
  if (!std::isfinite(mm)) return;
  With<C_Drive>(can_id, [&](C_Drive& drive) { drive.Set_Head_Height(mm); });
}

double True_Contact_Position(int can_id) {
  return Of_Probe(can_id, [](const C_Plant& probe) { return probe.Surface(); });
}

double True_Position(int can_id) {
  return Of_Probe(can_id, [](const C_Plant& probe) { return probe.Position(); });
}

double True_Force(int can_id) {
  return Of_Probe(can_id, [](const C_Plant& probe) { return probe.Contact_Force(); });
}

double Force_Gauge(int can_id) {
  return std::round(True_Force(can_id) * 100.0) / 100.0;
}

void Set_Temperature(int can_id, double celsius) {
  if (!(celsius > -Kelvin) || !std::isfinite(celsius)) return;
  With<C_Interpolation_Device>(can_id, [&](C_Interpolation_Device& device) { device.Set_Temperature(celsius); });
}

double True_Temperature(int can_id) {
  double celsius = 0.0;
  With<C_Interpolation_Device>(can_id, [&](const C_Interpolation_Device& device) { celsius = device.Temperature(); });
  return celsius;
}

void Set_Home_Sensor(int can_id, int bit, double edge_mm, bool on_above) {
  if (std::isnan(edge_mm)) return;
  With<C_Interpolation_Device>(can_id,
                               [&](C_Interpolation_Device& device) { device.Set_Sensor(bit, edge_mm, on_above); });
}

void Set_Input(int bit, int value) {
  const C_Access access;
  C_Simulated_Io_Card* card = access->room.Find_Card();
  if (card != nullptr && C_Simulated_Io_Card::Is_Bit(bit)) card->Set_Input(bit, value != 0);
}

int Get_Output(int bit) {
  const C_Access access;
  const C_Simulated_Io_Card* card = access->room.Find_Card();
  return card != nullptr && C_Simulated_Io_Card::Is_Bit(bit) && card->Get_Output(bit) ? 1 : 0;
}

void Set_Absent(int can_id, bool absent) {
  With<C_Device>(can_id, [&](C_Device& device) { device.Set_Absent(absent); });
}

void Set_Silent(int can_id, bool silent) {
  With<C_Device>(can_id, [&](C_Device& device) { device.Set_Silent(silent); });
}

void Set_Frozen(int can_id, bool frozen) {
  With<C_Motor_Device>(can_id, [&](C_Motor_Device& device) { device.Set_Frozen(frozen); });
}

void Set_Stuck(int can_id, bool stuck) {
  With<C_Motor_Device>(can_id, [&](C_Motor_Device& device) { device.Set_Stuck(stuck); });
}

void Set_Weak_Lift(int can_id, bool weak) {
  With<C_Motor_Device>(can_id, [&](C_Motor_Device& device) { device.Set_Weak_Lift(weak); });
}

void Set_Restless(int can_id, double amplitude_mm) {
  if (!std::isfinite(amplitude_mm)) return;
  With<C_Drive>(can_id, [&](C_Drive& drive) { drive.Set_Restless(std::clamp(amplitude_mm, 0.0, Restless_Limit_Mm)); });
}

void Set_Fault_Bits(int can_id, uint64_t bits) {
  With<C_Motor_Device>(can_id, [&](C_Motor_Device& device) { device.Set_Fault_Bits(bits); });
}

void Set_Refused_Connects(int count) {
  const C_Access access;
  access->refused_connects = count;
}

void Set_Io_Card_Missing(bool missing) {
  Set_Absent(C_Simulated_Io_Card::Can_Id_Of_Card, missing);
}

void Set_Slow_Homing(int can_id, bool slow) {
  With<C_Drive>(can_id, [&](C_Drive& drive) { drive.Set_Slow_Homing(slow); });
}

void Journal_Keep_Reads(bool keep) {
  const C_Access access;
  access->journal.Keep_Reads(keep);
}

void Journal_Clear() {
  const C_Access access;
  access->journal.Clear();
}

std::vector<Journal_Entry> Journal() {
  const C_Access access;
  return access->journal.Entries();
}

std::string Journal_Text() {
  const C_Access access;
  return access->journal.Text();
}

uint64_t Journal_Checksum() {
  const C_Access access;
  return access->journal.Checksum();
}

}  // namespace simulator
