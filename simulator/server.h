// The motion server: instruction threads, channel and IO maps, FIFOs, axes.
//
// Instructions of a thread run in order, each when its pace has passed since the one before or since it was queued; a
// wait blocks its own thread alone. At a pace of 0 a thread with nothing to wait for runs to its end inside the call
// that queued the instruction. The caller holds the simulator's lock.
#pragma once

#include <deque>
#include <map>
#include <memory>
#include <unordered_map>

#include "simulator/instruction.h"
#include "simulator/room.h"

namespace simulator {

class C_Server {
 public:
  static constexpr int Thread_Limit = 256;     // instruction threads 0 to 255
  static constexpr int Queue_Limit = 4096;     // instructions of one thread that may wait
  static constexpr int Channel_Limit = 65536;  // input and output channels, each from 0
  static constexpr int Axis_Limit = 64;
  static constexpr int Register_Limit = 1024;  // of each thread, and of the server
  static constexpr int Io_Limit = 1024;        // IO numbers, inputs and outputs each from 0
  static constexpr int Error_Limit = 64;       // errors kept; later ones are dropped until one is fetched
  static constexpr int Back_Jump_Limit = 65536;

  // pace: time for each instruction. now: the time of the room.
  C_Server(C_Room& room, Ticks pace, Ticks now) : m_Room(room), m_Pace(pace), m_Now(now) {}

  Ticks Now() const { return m_Now; }

  // Advances the room and all threads.
  void Advance(Ticks to);

  // False where it cannot be queued; the errors then have the reason.
  bool Queue(int thread, const C_Instruction& instruction);
  // Instructions queued so far, and done or dropped so far; 0 for a thread that was never used.
  uint64_t Queued(int thread) const;
  uint64_t Finished(int thread) const;
  int Free_Places(int thread) const;
  void Clear_Thread(int thread);
  bool Take_Error(C_Instruction_Error& error);

  // Null for a channel that was never mapped.
  C_Sample_Fifo* Input_Channel(int channel);
  // False if the IO number is not mapped or its device does not answer.
  bool Get_Io_Input(int io, bool& on) const;
  bool Set_Io_Output(int io, bool on);
  // Null for an axis that is not mapped or whose device does not answer.
  C_Axis* Axis(int axis) const;

 private:
  using C_Registers = std::map<int, double>;  // 0 where nothing was stored
  struct C_Thread {
    std::deque<C_Instruction> queue;
    uint64_t queued = 0;
    uint64_t finished = 0;
    Ticks due = 0;            // when the server executes the head of the queue
    bool wait_begun = false;  // the wait at the head of the queue has been checked
    Ticks wait_until = 0;     // of a wait for a time
    int back_jump_size = 0;
    bool use_local_registers = false;
    C_Registers registers;
  };
  struct C_Output_Map {
    int can_id, port, format;
  };
  struct C_Io_Map {
    int can_id, kind, bit;
  };

  void Run_Threads();
  bool Run(int number, C_Thread& thread);
  bool Holds(int number, C_Thread& thread, const C_Instruction& ins);
  void Execute(int number, C_Thread& thread, const C_Instruction& ins);
  Ticks Next_Look(Ticks to) const;
  Ticks Next_Look_At(const C_Thread& thread) const;
  void Report(int thread, Fault fault, int subject);
  bool Is_Idle(int thread) const;

  void Map_Input(int thread, const C_Instruction& ins);
  void Map_Output(int thread, const C_Instruction& ins);
  void Reset_Fifo(int thread, const C_Instruction& ins);
  void Map_Io(int thread, const C_Instruction& ins, bool input);
  void Output(int thread, const C_Instruction& ins);

  // server_axes.cpp
  bool Holds_For_Axis(int number, const C_Instruction& ins, bool first_look);
  void Execute_On_Axis(int number, C_Thread& thread, const C_Instruction& ins);
  void Map_Axis(int number, const C_Instruction& ins);
  void Set_Limit(int number, double& limit, double value);
  void Go(int number, C_Axis& axis, double target, bool at_once);
  void Add_Register(int number, C_Thread& thread, const C_Instruction& ins);
  // Null, and reported, if there is no such register.
  double* Register(int number, C_Thread& thread, int reg);

  C_Room& m_Room;
  const Ticks m_Pace;
  Ticks m_Now;
  std::map<int, C_Thread> m_Threads;
  size_t m_Unfinished = 0;  // instructions of all threads; mostly there are none, and no thread is looked at
  std::deque<C_Instruction_Error> m_Errors;
  std::unordered_map<int, std::unique_ptr<C_Sample_Fifo>> m_Inputs;
  std::unordered_map<int, C_Output_Map> m_Outputs;
  std::map<int, C_Io_Map> m_Io_Inputs;
  std::map<int, C_Io_Map> m_Io_Outputs;
  std::map<int, int> m_Axes;  // axis to CAN id
  C_Registers m_Registers;
};

}  // namespace simulator
