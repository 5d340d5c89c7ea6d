// The functions of the motion contract over the installation. Each opens it, enters the call in the journal and
// forwards it.
#include <algorithm>
#include <cstring>
#include <cwchar>
#include <type_traits>

#include "drive/tremalink.h"
#include "simulator/installation.h"
#include "support/time/clock.h"

namespace {

using simulator::C_Access;
using simulator::C_Instruction;
using simulator::Op;

// Appends an instruction to its thread; whole arguments and the value each in their order.
template <class... A>
int Queue(const char* function, Op op, int thread, A... arguments) {
  const C_Access access;
  access->journal.Call(access->now_ms, function, thread, arguments...);
  if (!access->connected) return 0;
  C_Instruction instruction{op, {}, 0.0};
  size_t place = 0;
  [[maybe_unused]] const auto put = [&](auto argument) {
    if constexpr (std::is_same_v<decltype(argument), double>) {
      instruction.value = argument;
    } else {
      instruction.i[place++] = argument;
    }
  };
  (put(arguments), ...);
  return access->server->Queue(thread, instruction) ? 1 : 0;
}

template <class T>
void Put(T* where, T value) {
  if (where != nullptr) *where = value;
}

}  // namespace

// --- Connection ---

int InitDevice_PC_Local_Controler(int local, int reserved) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, local, reserved);
  access->initialized = local == 1;
  return access->initialized ? 1 : 0;
}

int ConnectControlServer(const wchar_t* address, int reserved, const wchar_t** error_text) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, address, reserved);
  const bool local = address == nullptr || *address == L'\0' || std::wcscmp(address, L"127.0.0.1") == 0;
  const wchar_t* error = L"";
  if (!access->initialized) {
    error = L"the client is not prepared: call InitDevice_PC_Local_Controler(1, 0) first";
  } else if (!local) {
    error = L"this installation has a server on this machine only: leave the address empty";
  } else if (access->refused_connects > 0) {
    --access->refused_connects;
    error = L"the motion server refused the connection";
  } else {
    access->connected = true;
  }
  Put(error_text, error);
  return access->connected && *error == L'\0' ? 1 : 0;
}

int ReBuildSystem() {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1);
  access->Restart_Server();
  return 1;
}

int ReleaseDevice() {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1);
  access->Restart_Server();
  access->initialized = false;
  return 1;
}

int CloseMotionControlerServer() {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1);
  access->Restart_Server();
  return 1;
}

int OpenCloseErrorMsgAutoAssert(int open) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, open);
  return 1;
}

int GetError(int* ith, int* ins_point, wchar_t* str, int* str_len, int* ERROR_Num) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, str_len == nullptr ? 0 : *str_len);
  simulator::C_Instruction_Error error;
  if (!access->server->Take_Error(error)) {
    Put(str_len, 0);
    return 0;
  }
  Put(ith, error.thread);
  Put(ins_point, error.point);
  Put(ERROR_Num, static_cast<int>(error.fault));
  size_t length = 0;
  if (str != nullptr && str_len != nullptr && *str_len > 0) {
    length = std::min(error.text.size(), static_cast<size_t>(*str_len) - 1);
    std::copy_n(error.text.begin(), length, str);
    str[length] = L'\0';
  }
  Put(str_len, static_cast<int>(length));
  return 1;
}

// --- Bus and devices, direct ---

int CheckDeviceExist(int can_id, int* beExist) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, can_id);
  Put(beExist, access->connected && access->room.Answering(can_id) != nullptr ? 1 : 0);
  return access->connected ? 1 : 0;
}

namespace {

// The device's register, null if there is none or the count is not 1.
int32_t* Device_Register(const C_Access& access, int can_id, int reg, const void* buffer, int count) {
  simulator::C_Device* device = access->connected ? access->room.Answering(can_id) : nullptr;
  const bool valid =
      device != nullptr && buffer != nullptr && count == 1 && reg >= 0 && reg < simulator::C_Device::Register_Count;
  return valid ? &device->Registers()[static_cast<size_t>(reg)] : nullptr;
}

}  // namespace

int ReadDeviceReg(int can_id, int reg, void* buffer, int count, int* res) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, can_id, reg, count);
  const int32_t* source = Device_Register(access, can_id, reg, buffer, count);
  if (source != nullptr) std::memcpy(buffer, source, sizeof *source);
  Put(res, source != nullptr ? 1 : 0);
  return source != nullptr ? 1 : 0;
}

int WriteDeviceReg(int can_id, int reg, void* buffer, int count, int* res) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, can_id, reg, count);
  int32_t* destination = Device_Register(access, can_id, reg, buffer, count);
  if (destination != nullptr) std::memcpy(destination, buffer, sizeof *destination);
  Put(res, destination != nullptr ? 1 : 0);
  return destination != nullptr ? 1 : 0;
}

int ExecuteDeviceIns(int can_id, int instruction, int* res) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, can_id, instruction);
  simulator::C_Device* device = access->connected ? access->room.Answering(can_id) : nullptr;
  const int done = device != nullptr && device->Execute(instruction) ? 1 : 0;
  Put(res, done);
  return done;
}

int GetCurIoInput(int io, int* value) {
  const C_Access access;
  access->journal.Read(access->now_ms, __func__, -1, io);
  bool on = false;
  if (!access->connected || !access->server->Get_Io_Input(io, on)) return 0;
  access->journal.Result(on ? 1.0 : 0.0);
  Put(value, on ? 1 : 0);
  return 1;
}

int SetCurIoOutput(int io, uint8_t value) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, -1, io, value);
  return access->connected && access->server->Set_Io_Output(io, value != 0) ? 1 : 0;
}

int GetCurOutputPos(double* positions, int* count) {
  const C_Access access;
  access->journal.Read(access->now_ms, __func__, -1, count == nullptr ? 0 : *count);
  if (!access->connected || positions == nullptr || count == nullptr) return 0;
  *count = std::clamp(*count, 0, simulator::C_Server::Axis_Limit);
  for (int i = 0; i < *count; ++i) {
    const simulator::C_Axis* axis = access->server->Axis(i);
    positions[i] = axis == nullptr ? 0.0 : axis->Position();
    access->journal.Result(positions[i]);
  }
  return 1;
}

int BeAxisRun(int axis, int* be_map, int* run) {
  const C_Access access;
  access->journal.Read(access->now_ms, __func__, -1, axis);
  const simulator::C_Axis* found = access->connected ? access->server->Axis(axis) : nullptr;
  Put(be_map, found != nullptr ? 1 : 0);
  Put(run, found != nullptr && found->Is_Moving() ? 1 : 0);
  return access->connected ? 1 : 0;
}

// --- Maps and FIFOs, queued ---

int SET_INPUT_DATA_MAP(int thread, int can_id, int port, int format, int channel) {
  return Queue(__func__, Op::Set_Input_Data_Map, thread, can_id, port, format, channel);
}

int SET_OUTPUT_DATA_MAP(int thread, int can_id, int port, int format, int channel) {
  return Queue(__func__, Op::Set_Output_Data_Map, thread, can_id, port, format, channel);
}

int RESET_INPUT_DATA_FIFO(int thread, int channel, int depth) {
  return Queue(__func__, Op::Reset_Input_Data_Fifo, thread, channel, depth);
}

int SET_AXIS_MAP(int thread, int can_id, int reserved, int axis) {
  return Queue(__func__, Op::Set_Axis_Map, thread, can_id, reserved, axis);
}

int SET_IOIN_MAP(int thread, int can_id, int kind, int bit, int reserved, int io) {
  return Queue(__func__, Op::Set_Ioin_Map, thread, can_id, kind, bit, reserved, io);
}

int SET_IOOUT_MAP(int thread, int can_id, int kind, int bit, int io) {
  return Queue(__func__, Op::Set_Ioout_Map, thread, can_id, kind, bit, io);
}

int SetBackJmpInsSize(int thread, int size) {
  return Queue(__func__, Op::Set_Back_Jump_Size, thread, size);
}

// --- Data ---

int OUTPUT_DATA(int thread, int channel, double value) {
  return Queue(__func__, Op::Output_Data, thread, channel, value);
}

int GetInputChannelData(int channel, int max_count, int* nLen, double* pdata, uint64_t* p_data_index) {
  const C_Access access;
  access->journal.Read(access->now_ms, __func__, -1, channel, max_count);
  Put(nLen, 0);
  simulator::C_Sample_Fifo* fifo =
      access->connected && pdata != nullptr ? access->server->Input_Channel(channel) : nullptr;
  if (fifo == nullptr) return 0;
  const int taken = fifo->Take(max_count, pdata, p_data_index);
  for (int i = 0; i < taken; ++i) access->journal.Result(pdata[i]);
  Put(nLen, taken);
  return 1;
}

// --- Instruction stream ---

int WaitForAllInsFinish(int thread) {
  uint64_t session = 0;
  uint64_t queued = 0;
  {
    const C_Access access;
    access->journal.Call(access->now_ms, __func__, thread);
    session = access->session;
    queued = access->server->Queued(thread);
  }
  for (;;) {
    {
      const C_Access access;
      if (!access->connected || access->session != session) return 0;
      if (access->server->Finished(thread) >= queued) return 1;
    }
    orsanta::Sleep(1);
  }
}

int GetThreadInsBufferRemainCount(int thread, int* buffer_len, int* ins_finish) {
  const C_Access access;
  access->journal.Read(access->now_ms, __func__, thread);
  if (!access->connected || thread < 0 || thread >= simulator::C_Server::Thread_Limit) return 0;
  const int free_places = access->server->Free_Places(thread);
  access->journal.Result(free_places);
  Put(buffer_len, free_places);
  Put(ins_finish, free_places == simulator::C_Server::Queue_Limit ? 1 : 0);
  return 1;
}

int ClearInsBuffer(int thread) {
  const C_Access access;
  access->journal.Call(access->now_ms, __func__, thread);
  if (!access->connected) return 0;
  access->server->Clear_Thread(thread);
  return 1;
}

int TILLSTOP(int thread, int axis) {
  return Queue(__func__, Op::Till_Stop, thread, axis);
}
int TILLTIME(int thread, int ms) {
  return Queue(__func__, Op::Till_Time, thread, ms);
}
int TILLIO(int thread, int io) {
  return Queue(__func__, Op::Till_Io, thread, io);
}
int TILLIO_NEG(int thread, int io) {
  return Queue(__func__, Op::Till_Io_Neg, thread, io);
}
int TILL_AXIS_PAUSE(int thread, int axis) {
  return Queue(__func__, Op::Till_Axis_Pause, thread, axis);
}

int TILL_THREAD_INS_FINISH(int thread, int other_thread) {
  return Queue(__func__, Op::Till_Thread_Finish, thread, other_thread);
}

int CLEAR_THREAD_INS(int thread, int other_thread) {
  return Queue(__func__, Op::Clear_Thread, thread, other_thread);
}
int AXIS_RESUME(int thread, int axis) {
  return Queue(__func__, Op::Axis_Resume, thread, axis);
}
int SGO(int thread, int axis, double position) {
  return Queue(__func__, Op::Sgo, thread, axis, position);
}
int SGO_R(int thread, int axis, int reg) {
  return Queue(__func__, Op::Sgo_Register, thread, axis, reg);
}
int RAPID_GO(int thread, int axis, double position) {
  return Queue(__func__, Op::Rapid_Go, thread, axis, position);
}
int STOP_S(int thread, int axis) {
  return Queue(__func__, Op::Stop_Smooth, thread, axis);
}
int SET_MAX_VEL(int thread, int axis, double value) {
  return Queue(__func__, Op::Set_Max_Vel, thread, axis, value);
}
int SET_MAX_ACC(int thread, int axis, double value) {
  return Queue(__func__, Op::Set_Max_Acc, thread, axis, value);
}
int SET_MAX_JERK(int thread, int axis, double value) {
  return Queue(__func__, Op::Set_Max_Jerk, thread, axis, value);
}

int SET_AXIS_SCALE(int thread, int axis, double scale) {
  return Queue(__func__, Op::Set_Axis_Scale, thread, axis, scale);
}

int SET_AXIS_ZEROS(int thread, int axis, double value) {
  return Queue(__func__, Op::Set_Axis_Zeros, thread, axis, value);
}

int SET_OUTPUT_IO(int thread, int io, uint8_t value) {
  return Queue(__func__, Op::Set_Output_Io, thread, io, static_cast<int>(value));
}

int USE_LOCAL_REG(int thread) {
  return Queue(__func__, Op::Use_Local_Reg, thread);
}

int GET_OUTPUT_POS(int thread, int axis, int reg) {
  return Queue(__func__, Op::Get_Output_Pos, thread, axis, reg);
}

int ADD_R_C(int thread, int destination, int source, double constant) {
  return Queue(__func__, Op::Add_Register, thread, destination, source, constant);
}
