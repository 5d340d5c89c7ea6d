// The motion server's instructions for axes and registers.
#include <cmath>

#include "simulator/server.h"

namespace simulator {

namespace {

constexpr double Raw_Position_Limit = 0x1p47;  // a raw position has six bytes

}  // namespace

C_Axis* C_Server::Axis(int axis) const {
  const auto found = m_Axes.find(axis);
  if (found == m_Axes.end()) return nullptr;
  auto* device = dynamic_cast<C_Interpolation_Device*>(m_Room.Answering(found->second));
  return device == nullptr ? nullptr : &device->Axis();
}

void C_Server::Map_Axis(int number, const C_Instruction& ins) {
  const int can_id = ins.i[0];
  const int axis = ins.i[2];
  if (axis < 0 || axis >= Axis_Limit) return Report(number, Fault::No_Axis, axis);
  C_Device* device = m_Room.Answering(can_id);
  if (device == nullptr) return Report(number, Fault::No_Device, can_id);
  if (dynamic_cast<C_Interpolation_Device*>(device) == nullptr) return Report(number, Fault::No_Port, can_id);
  m_Axes[axis] = can_id;
}

bool C_Server::Holds_For_Axis(int number, const C_Instruction& ins, bool first_look) {
  C_Axis* axis = Axis(ins.i[0]);
  if (axis == nullptr) {
    Report(number, Fault::No_Axis, ins.i[0]);
    return false;
  }
  if (ins.op == Op::Till_Stop) return !axis->Is_Done();
  if (first_look) axis->Pause();
  return !axis->Is_Paused();
}

void C_Server::Execute_On_Axis(int number, C_Thread& thread, const C_Instruction& ins) {
  C_Axis* axis = Axis(ins.i[0]);
  if (axis == nullptr) return Report(number, Fault::No_Axis, ins.i[0]);
  switch (ins.op) {
    case Op::Axis_Resume:
      return axis->Resume();
    case Op::Sgo:
      return Go(number, *axis, ins.value, false);
    case Op::Sgo_Register:
      if (const double* reg = Register(number, thread, ins.i[1])) Go(number, *axis, *reg, false);
      return;
    case Op::Rapid_Go:
      return Go(number, *axis, ins.value, true);
    case Op::Stop_Smooth:
      return axis->Stop();
    case Op::Set_Max_Vel:
      return Set_Limit(number, axis->Limits().velocity, ins.value);
    case Op::Set_Max_Acc:
      return Set_Limit(number, axis->Limits().acceleration, ins.value);
    case Op::Set_Max_Jerk:
      return Set_Limit(number, axis->Limits().jerk, ins.value);
    case Op::Set_Axis_Scale:
      if (!std::isfinite(ins.value) || ins.value == 0.0) return Report(number, Fault::Bad_Value, ins.i[0]);
      if (!axis->Is_Done()) return Report(number, Fault::Axis_Busy, ins.i[0]);
      return axis->Set_Scale(ins.value);
    case Op::Set_Axis_Zeros:
      if (!std::isfinite(ins.value)) return Report(number, Fault::Bad_Value, ins.i[0]);
      return axis->Set_Position(ins.value);
    case Op::Get_Output_Pos:
      if (double* reg = Register(number, thread, ins.i[1])) *reg = axis->Position();
      return;
    default:
      return;
  }
}

void C_Server::Set_Limit(int number, double& limit, double value) {
  if (!std::isfinite(value) || value <= 0.0) return Report(number, Fault::Bad_Value, 0);
  limit = value;
}

void C_Server::Go(int number, C_Axis& axis, double target, bool at_once) {
  if (!(std::abs(axis.Raw(target)) < Raw_Position_Limit)) return Report(number, Fault::Bad_Value, 0);
  if (!at_once) return axis.Go(target);
  if (axis.Is_Pause_Asked()) return Report(number, Fault::Axis_Busy, 0);
  axis.Jump(target);
}

void C_Server::Add_Register(int number, C_Thread& thread, const C_Instruction& ins) {
  double* destination = Register(number, thread, ins.i[0]);
  const double* source = Register(number, thread, ins.i[1]);
  if (destination != nullptr && source != nullptr) *destination = *source + ins.value;
}

double* C_Server::Register(int number, C_Thread& thread, int reg) {
  if (reg < 0 || reg >= Register_Limit) {
    Report(number, Fault::No_Register, reg);
    return nullptr;
  }
  return &(thread.use_local_registers ? thread.registers : m_Registers)[reg];
}

}  // namespace simulator
