// What all devices with a probe have: the servo with its mechanics, the encoder, fault bits and the faults of the
// simulator.
#pragma once

#include "simulator/device.h"
#include "simulator/encoder.h"
#include "simulator/servo.h"

namespace simulator {

class C_Motor_Device : public C_Device {
 public:
  // The probe's mechanics, for reading.
  const C_Plant& Plant() const { return m_Servo.Plant(); }

  void Set_Frozen(bool frozen) { m_Frozen = frozen; }
  void Set_Stuck(bool stuck);
  void Set_Weak_Lift(bool weak);
  void Set_Fault_Bits(uint64_t bits) { m_Fault_Bits = bits; }

 protected:
  C_Motor_Device(const Settings& settings, int can_id, const Force_Truth& force, double upper_stop_mm,
                 double lower_stop_mm);

  // Raw position as the encoder sees it now.
  double Position_Sample();
  double Current_Sample() const;
  double Load_Percent() const;
  uint64_t Fault_Bits() const { return m_Fault_Bits; }
  // Software version and date of the firmware, packed into six bytes.
  static double Version_Word();
  // False if out of range.
  bool Set_Clamp(bool upper, double ampere);

  const C_Encoder m_Encoder;
  C_Servo m_Servo;

 private:
  uint64_t m_Fault_Bits = 0;
  bool m_Frozen = false;
  double m_Last_Position = 0.0;  // raw, as last sent
};

}  // namespace simulator
