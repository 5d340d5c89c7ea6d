// A device whose probe follows an axis of the motion server, and which measures temperatures: a temperature board is
// one.
//
// Ports written: 4 and 12 upper and lower current clamp, A; 17 enable, 0 or 1; 8, 15, 16, 18 stored and without effect.
// Ports sent:
//   1 position, raw; 15 load, percent of 40 A; 16 coil current, A; 17 speed, mm/s; 18 position error, mm; 19 commanded
//   speed, mm/s; 20 commanded position, mm; 21 commanded acceleration, mm/s^2; 22 coil gain, g/A; 23 holding current,
//   A; 24 force on what is touched, g; 25 encoder position, mm; 26 enable; 27 thermistor input, ADC counts; 28
//   temperature of the board, whole degrees; 29 hours since power-up; 30 to 33 encoder position, speed, current,
//   position error; 40 to 44 thermistor counts, board temperature, load, enable, commanded position; 50 largest
//   position error since power-up, mm; 199 and 201 fault bits; 200 version; 202 and 203 encoder errors, which this
//   encoder does not make.
// Inputs of kind 1: bits 2 and 6, the two home sensors.
// The caller holds the simulator's lock.
#pragma once

#include "simulator/axis.h"
#include "simulator/motor_device.h"

namespace simulator {

class C_Interpolation_Device final : public C_Motor_Device {
 public:
  enum : int { Kind_Own_Input = 1, Sensor_Bit = 2, Second_Sensor_Bit = 6 };

  C_Interpolation_Device(const Settings& settings, int can_id);

  bool Has_Input_Port(int port) const override;
  bool Has_Output_Port(int port) const override;
  bool Write_Port(int port, double value) override;
  bool Has_Input(int kind, int bit) const override;
  bool Get_Input(int kind, int bit) const override;
  bool Execute(int instruction) override;

  C_Axis& Axis() { return m_Axis; }

  void Set_Temperature(double celsius) { m_Celsius = celsius; }
  double Temperature() const { return m_Celsius; }
  // The sensor at that bit is on at places from the edge on, upwards or downwards.
  void Set_Sensor(int bit, double edge_mm, bool on_above);

 private:
  struct C_Sensor {
    double edge_mm;
    bool on_above;
  };

  void Step() override;
  bool Is_At_Rest() const override;
  double Port_Value(int port) override;
  Setpoint Commanded() const;
  int Thermistor_Counts() const;

  C_Axis m_Axis;
  C_Sensor m_Sensor;
  C_Sensor m_Second_Sensor;
  bool m_Enabled = true;
  double m_Followed = 0.0;  // mm, the commanded position of the last tick
  double m_Largest_Error = 0.0;
  double m_Celsius = 25.0;
};

}  // namespace simulator
