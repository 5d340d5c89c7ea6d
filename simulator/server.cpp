#include "simulator/server.h"

#include <algorithm>
#include <cmath>

namespace simulator {

namespace {

// How often a wait for something that moves or switches is checked.
constexpr Ticks Look_Ticks = Ticks_Per_Ms / 10;

bool Is_Wait(Op op) {
  return op >= Op::Till_Stop && op <= Op::Till_Thread_Finish;
}

}  // namespace

const wchar_t* Fault_Words(Fault fault) {
  switch (fault) {
    case Fault::Thread_Number:
      return L"no such instruction thread";
    case Fault::Queue_Full:
      return L"the thread's instruction buffer is full";
    case Fault::No_Device:
      return L"no device answers at this CAN id";
    case Fault::No_Port:
      return L"the device has no such port or IO bit";
    case Fault::No_Channel:
      return L"the channel is not mapped or out of range";
    case Fault::Bad_Value:
      return L"the value is not a number, out of range, or does not fit the port";
    case Fault::No_Io:
      return L"the IO number is not mapped or out of range";
    case Fault::No_Axis:
      return L"the axis is not mapped or out of range";
    case Fault::Axis_Busy:
      return L"not possible while the axis moves or is paused";
    case Fault::No_Register:
      return L"no such register";
    case Fault::Waits_For_Itself:
      return L"the thread would wait for itself";
  }
  return L"";
}

// --- Time ---

void C_Server::Advance(Ticks to) {
  Run_Threads();
  while (m_Now < to) {
    m_Now = Next_Look(to);
    m_Room.Advance(m_Now);
    Run_Threads();
  }
}

// The next time at which a waiting thread might continue, at most `to`.
Ticks C_Server::Next_Look(Ticks to) const {
  Ticks next = to;
  if (m_Unfinished == 0) return next;
  for (const auto& [number, thread] : m_Threads) {
    if (!thread.queue.empty()) next = std::min(next, Next_Look_At(thread));
  }
  return std::max(next, m_Now + 1);
}

Ticks C_Server::Next_Look_At(const C_Thread& thread) const {
  if (m_Now < thread.due) return thread.due;
  return thread.queue.front().op == Op::Till_Time ? thread.wait_until : m_Now + Look_Ticks;
}

// --- Threads ---

bool C_Server::Queue(int thread, const C_Instruction& instruction) {
  if (thread < 0 || thread >= Thread_Limit) {
    Report(thread, Fault::Thread_Number, thread);
    return false;
  }
  C_Thread& t = m_Threads[thread];
  if (t.queue.size() >= static_cast<size_t>(Queue_Limit)) {
    Report(thread, Fault::Queue_Full, thread);
    return false;
  }
  if (t.queue.empty()) t.due = m_Now + m_Pace;
  t.queue.push_back(instruction);
  ++t.queued;
  ++m_Unfinished;
  Run_Threads();
  return true;
}

uint64_t C_Server::Queued(int thread) const {
  const auto found = m_Threads.find(thread);
  return found == m_Threads.end() ? 0 : found->second.queued;
}

uint64_t C_Server::Finished(int thread) const {
  const auto found = m_Threads.find(thread);
  return found == m_Threads.end() ? 0 : found->second.finished;
}

int C_Server::Free_Places(int thread) const {
  return Queue_Limit - static_cast<int>(Queued(thread) - Finished(thread));
}

bool C_Server::Is_Idle(int thread) const {
  return Queued(thread) == Finished(thread);
}

void C_Server::Clear_Thread(int thread) {
  const auto found = m_Threads.find(thread);
  if (found == m_Threads.end()) return;
  C_Thread& t = found->second;
  t.finished += t.queue.size();
  m_Unfinished -= t.queue.size();
  t.queue.clear();
  t.wait_begun = false;
}

void C_Server::Run_Threads() {
  bool progress = true;
  while (progress && m_Unfinished > 0) {  // one thread may have waited for what another did
    progress = false;
    for (auto& [number, thread] : m_Threads) {
      if (!thread.queue.empty()) progress = Run(number, thread) || progress;
    }
  }
}

// Runs the thread up to a wait that is not over or an instruction that is not due. True if anything was done.
bool C_Server::Run(int number, C_Thread& thread) {
  bool done_any = false;
  while (!thread.queue.empty() && m_Now >= thread.due) {
    const C_Instruction ins = thread.queue.front();
    const bool wait = Is_Wait(ins.op);
    if (wait && Holds(number, thread, ins)) break;
    thread.queue.pop_front();
    thread.due = m_Now + m_Pace;
    thread.wait_begun = false;
    if (!wait) Execute(number, thread, ins);
    ++thread.finished;
    --m_Unfinished;
    done_any = true;
  }
  return done_any;
}

bool C_Server::Holds(int number, C_Thread& thread, const C_Instruction& ins) {
  const bool first_look = !thread.wait_begun;
  thread.wait_begun = true;
  const int subject = ins.i[0];
  switch (ins.op) {
    case Op::Till_Time:
      if (first_look) thread.wait_until = m_Now + std::max(subject, 0) * Ticks_Per_Ms;
      return m_Now < thread.wait_until;
    case Op::Till_Io:
    case Op::Till_Io_Neg: {
      if (!m_Io_Inputs.contains(subject)) {
        Report(number, Fault::No_Io, subject);
        return false;
      }
      bool on = false;
      return !Get_Io_Input(subject, on) || on != (ins.op == Op::Till_Io);
    }
    case Op::Till_Thread_Finish:
      if (subject == number) {
        Report(number, Fault::Waits_For_Itself, subject);
        return false;
      }
      return !Is_Idle(subject);
    default:
      return Holds_For_Axis(number, ins, first_look);
  }
}

void C_Server::Execute(int number, C_Thread& thread, const C_Instruction& ins) {
  switch (ins.op) {
    case Op::Set_Input_Data_Map:
      return Map_Input(number, ins);
    case Op::Set_Output_Data_Map:
      return Map_Output(number, ins);
    case Op::Reset_Input_Data_Fifo:
      return Reset_Fifo(number, ins);
    case Op::Set_Ioin_Map:
      return Map_Io(number, ins, true);
    case Op::Set_Ioout_Map:
      return Map_Io(number, ins, false);
    case Op::Set_Back_Jump_Size:
      if (ins.i[0] < 0 || ins.i[0] > Back_Jump_Limit) return Report(number, Fault::Bad_Value, ins.i[0]);
      thread.back_jump_size = ins.i[0];
      return;
    case Op::Output_Data:
      return Output(number, ins);
    case Op::Clear_Thread:
      return Clear_Thread(ins.i[0]);
    case Op::Set_Output_Io:
      if (!Set_Io_Output(ins.i[0], ins.i[1] != 0)) Report(number, Fault::No_Io, ins.i[0]);
      return;
    case Op::Set_Axis_Map:
      return Map_Axis(number, ins);
    case Op::Use_Local_Reg:
      thread.use_local_registers = true;
      return;
    case Op::Add_Register:
      return Add_Register(number, thread, ins);
    default:
      return Execute_On_Axis(number, thread, ins);
  }
}

void C_Server::Report(int thread, Fault fault, int subject) {
  if (m_Errors.size() >= static_cast<size_t>(Error_Limit)) return;
  const std::wstring text = std::wstring(Fault_Words(fault)) + L": " + std::to_wstring(subject);
  m_Errors.push_back({thread, static_cast<int>(Finished(thread)), fault, text});
}

bool C_Server::Take_Error(C_Instruction_Error& error) {
  if (m_Errors.empty()) return false;
  error = m_Errors.front();
  m_Errors.pop_front();
  return true;
}

// --- Maps ---

void C_Server::Map_Input(int thread, const C_Instruction& ins) {
  const auto [can_id, port, format, channel, unused] = ins.i;
  if (channel < 0 || channel >= Channel_Limit) return Report(thread, Fault::No_Channel, channel);
  if (format < Format_Least || format > Format_Double) return Report(thread, Fault::Bad_Value, format);
  auto& fifo = m_Inputs[channel];
  if (fifo == nullptr) {
    fifo = std::make_unique<C_Sample_Fifo>();
  } else {
    m_Room.Unsubscribe(fifo.get());
  }
  C_Device* device = m_Room.Answering(can_id);
  if (device == nullptr) return Report(thread, Fault::No_Device, can_id);
  if (!device->Has_Input_Port(port)) return Report(thread, Fault::No_Port, port);
  device->Subscribe(port, format, fifo.get());
}

void C_Server::Map_Output(int thread, const C_Instruction& ins) {
  const auto [can_id, port, format, channel, unused] = ins.i;
  if (channel < 0 || channel >= Channel_Limit) return Report(thread, Fault::No_Channel, channel);
  if (format < Format_Least || format > Format_Double) return Report(thread, Fault::Bad_Value, format);
  C_Device* device = m_Room.Answering(can_id);
  if (device == nullptr) return Report(thread, Fault::No_Device, can_id);
  if (!device->Has_Output_Port(port)) return Report(thread, Fault::No_Port, port);
  m_Outputs[channel] = {can_id, port, format};
}

void C_Server::Reset_Fifo(int thread, const C_Instruction& ins) {
  const auto found = m_Inputs.find(ins.i[0]);
  if (found == m_Inputs.end()) return Report(thread, Fault::No_Channel, ins.i[0]);
  if (ins.i[1] < 1 || ins.i[1] > C_Sample_Fifo::Depth_Limit) return Report(thread, Fault::Bad_Value, ins.i[1]);
  found->second->Reset(ins.i[1]);
}

void C_Server::Map_Io(int thread, const C_Instruction& ins, bool input) {
  const auto [can_id, kind, bit, reserved, last] = ins.i;
  const int io = input ? last : reserved;  // an output map has no reserved argument before the IO number
  if (io < 0 || io >= Io_Limit) return Report(thread, Fault::No_Io, io);
  const C_Device* device = m_Room.Answering(can_id);
  if (device == nullptr) return Report(thread, Fault::No_Device, can_id);
  if (!(input ? device->Has_Input(kind, bit) : device->Has_Output(kind, bit)))
    return Report(thread, Fault::No_Port, bit);
  (input ? m_Io_Inputs : m_Io_Outputs)[io] = {can_id, kind, bit};
}

// --- Data ---

void C_Server::Output(int thread, const C_Instruction& ins) {
  const auto found = m_Outputs.find(ins.i[0]);
  if (found == m_Outputs.end()) return Report(thread, Fault::No_Channel, ins.i[0]);
  const auto [can_id, port, format] = found->second;
  C_Device* device = m_Room.Answering(can_id);
  if (device == nullptr) return Report(thread, Fault::No_Device, can_id);
  const bool taken = Fits_Format(ins.value, format) &&
                     device->Write_Port(port, format < Format_Double ? std::trunc(ins.value) : ins.value);
  if (!taken) Report(thread, Fault::Bad_Value, ins.i[0]);
}

C_Sample_Fifo* C_Server::Input_Channel(int channel) {
  const auto found = m_Inputs.find(channel);
  return found == m_Inputs.end() ? nullptr : found->second.get();
}

bool C_Server::Get_Io_Input(int io, bool& on) const {
  const auto found = m_Io_Inputs.find(io);
  if (found == m_Io_Inputs.end()) return false;
  const C_Device* device = m_Room.Answering(found->second.can_id);
  if (device == nullptr) return false;
  on = device->Get_Input(found->second.kind, found->second.bit);
  return true;
}

bool C_Server::Set_Io_Output(int io, bool on) {
  const auto found = m_Io_Outputs.find(io);
  if (found == m_Io_Outputs.end()) return false;
  C_Device* device = m_Room.Answering(found->second.can_id);
  if (device == nullptr) return false;
  device->Set_Output(found->second.kind, found->second.bit, on);
  return true;
}

}  // namespace simulator
