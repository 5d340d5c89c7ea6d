// A device on the bus: ports that can be written, ports that send samples into the server's FIFOs, registers, IO bits.
//
// A device has a time of its own, which Advance moves forward; samples are sent at fixed instants of that time. The
// caller holds the simulator's lock.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "simulator/sample_fifo.h"
#include "simulator/simulator.h"
#include "simulator/ticks.h"
#include "support/time/uncopied.h"

namespace simulator {

// The code of a port's width: whole numbers of 1 to 7 bytes, or a floating-point value of 8.
enum : int { Format_Least = 0, Format_Double = 8 };
// A value as it comes out of a port of that width: whole, and wrapped round at its bytes.
double Fit_Into_Format(double value, int format);
// Whether the value can be sent through a port of that width.
bool Fits_Format(double value, int format);

class C_Device : private orsanta::C_Uncopied {
 public:
  C_Device(const Settings& settings, int can_id);
  virtual ~C_Device() = default;

  int Can_Id() const { return m_Can_Id; }
  void Advance(Ticks to);

  virtual bool Has_Input_Port(int port) const = 0;
  virtual bool Has_Output_Port(int port) const = 0;
  // False if the device refuses the value.
  virtual bool Write_Port(int port, double value) = 0;
  // IO bits; kinds as in the motion contract. Has_... return whether there is such a bit.
  virtual bool Has_Input(int kind, int bit) const;
  virtual bool Has_Output(int kind, int bit) const;
  virtual bool Get_Input(int kind, int bit) const;
  virtual void Set_Output(int kind, int bit, bool on);
  // True if the device knows the instruction.
  virtual bool Execute(int instruction);

  static constexpr int Register_Count = 256;
  std::array<int32_t, Register_Count>& Registers() { return m_Registers; }

  void Subscribe(int port, int format, C_Sample_Fifo* fifo);
  void Unsubscribe(const C_Sample_Fifo* fifo);
  void Unsubscribe_All() { m_Subscriptions.clear(); }

  void Set_Absent(bool absent) { m_Absent = absent; }
  bool Is_Absent() const { return m_Absent; }
  void Set_Silent(bool silent) { m_Silent = silent; }

 protected:
  Ticks Now() const { return m_Now; }
  // One tick of physics; Now() is its end.
  virtual void Step() = 0;
  // True while Step would change nothing.
  virtual bool Is_At_Rest() const = 0;
  // What the port reads now. Called once for each sample and subscription.
  virtual double Port_Value(int port) = 0;
  // False for ports that send only when their value is made.
  virtual bool Is_Cyclic(int port) const;
  // Sends a sample of the port at once, in addition to the cyclic ones.
  void Send(int port);
  // Normal noise of standard deviation 1, a fresh value for each port and tick.
  double Noise(int port) const;

 private:
  struct C_Subscription {
    int port;
    int format;
    C_Sample_Fifo* fifo;
  };

  bool Wants_Samples() const;
  void Send_Cyclic();

  const int m_Can_Id;
  const uint64_t m_Noise_Key;
  const Ticks m_Period;
  Ticks m_Now = 0;
  Ticks m_Next_Sample;
  bool m_Absent = false;
  bool m_Silent = false;
  std::vector<C_Subscription> m_Subscriptions;
  std::array<int32_t, Register_Count> m_Registers{};
};

}  // namespace simulator
