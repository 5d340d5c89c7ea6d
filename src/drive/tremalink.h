// The motion contract: 48 functions of the client library libtremalink.so, through which everything reaches the CAN
// bus.
//
// The motion server behind them owns the bus, the devices and the instruction threads. An instruction thread is a
// numbered queue in the server: functions in capitals append an instruction and return at once; instructions of one
// thread run in order, different threads run side by side. Wait instructions hold their thread, never the caller; the
// caller blocks in WaitForAllInsFinish alone, and such a wait on one thread does not hold a call on another.
//
// Every function may be called from any thread, also at once from several, and none throws. Positions on channels are
// raw (see drive/motor.h); axis positions are in user units. Only src/drive calls these functions; simulator/
// implements them.
#pragma once

#include <cstdint>

#define TREMALINK_API extern "C" __attribute__((visibility("default")))

// --- Connection ---

// First call of all. local: 1 for a server on this machine.
TREMALINK_API int InitDevice_PC_Local_Controler(int local, int reserved);
// Connects; address empty for the local server. error_text: receives the reason, may be null. Non-zero once connected.
TREMALINK_API int ConnectControlServer(const wchar_t* address, int reserved, const wchar_t** error_text);
// Resets the server's side of the connection; the client connects anew after it.
TREMALINK_API int ReBuildSystem();
// Ends the connection and frees the device.
TREMALINK_API int ReleaseDevice();
// Stops the server.
TREMALINK_API int CloseMotionControlerServer();
// 0 turns the library's own error dialogs off.
TREMALINK_API int OpenCloseErrorMsgAutoAssert(int open);
// Fetches and removes the oldest instruction error: thread, position in its stream, text (str_len: in its room in
// characters, out the length), number. Returns 1 when there was one, else 0.
TREMALINK_API int GetError(int* ith, int* ins_point, wchar_t* str, int* str_len, int* ERROR_Num);

// --- Bus and devices, direct ---

// beExist: 1 if a device answers at that id, else 0. Non-zero if the query itself worked.
TREMALINK_API int CheckDeviceExist(int can_id, int* beExist);
// One register into or from the buffer; count is 1. res: 1 on success.
TREMALINK_API int ReadDeviceReg(int can_id, int reg, void* buffer, int count, int* res);
TREMALINK_API int WriteDeviceReg(int can_id, int reg, void* buffer, int count, int* res);
// Runs a device instruction. res: 1 on success.
TREMALINK_API int ExecuteDeviceIns(int can_id, int instruction, int* res);
// Present state of a mapped input. 1 if it was read.
TREMALINK_API int GetCurIoInput(int io, int* value);
// Sets a mapped output at once.
TREMALINK_API int SetCurIoOutput(int io, uint8_t value);
// Commanded positions, one for each axis from 0. count: in how many, out how many were written.
TREMALINK_API int GetCurOutputPos(double* positions, int* count);
// be_map: 1 if the axis is mapped. run: 1 if it moves.
TREMALINK_API int BeAxisRun(int axis, int* be_map, int* run);

// --- Maps and FIFOs, queued ---

// From now on the port's samples go to the input channel.
TREMALINK_API int SET_INPUT_DATA_MAP(int thread, int can_id, int port, int format, int channel);
// A value written to the output channel goes to the port.
TREMALINK_API int SET_OUTPUT_DATA_MAP(int thread, int can_id, int port, int format, int channel);
// Empties the channel's FIFO and sets its depth in samples. A full FIFO keeps its old samples and drops new ones.
TREMALINK_API int RESET_INPUT_DATA_FIFO(int thread, int channel, int depth);
// Ties the axis to the drive at can_id.
TREMALINK_API int SET_AXIS_MAP(int thread, int can_id, int reserved, int axis);
// Ties a device's input or output bit to an IO number. Kinds: 1 a drive's own input, 3 a card's output, 4 a card's
// input.
TREMALINK_API int SET_IOIN_MAP(int thread, int can_id, int kind, int bit, int reserved, int io);
TREMALINK_API int SET_IOOUT_MAP(int thread, int can_id, int kind, int bit, int io);
// Size of the thread's back-jump instruction buffer.
TREMALINK_API int SetBackJmpInsSize(int thread, int size);

// --- Data ---

// Sends the value to the mapped port, in instruction order.
TREMALINK_API int OUTPUT_DATA(int thread, int channel, double value);
// Takes out up to max_count samples, oldest first; nLen: how many. p_data_index: each sample's index, may be null.
// Non-zero on success, also when the FIFO was empty; 0 on a channel that was never mapped.
TREMALINK_API int GetInputChannelData(int channel, int max_count, int* nLen, double* pdata, uint64_t* p_data_index);

// --- Instruction stream, queued unless told otherwise ---

// Blocks the caller until the thread has run everything queued so far.
TREMALINK_API int WaitForAllInsFinish(int thread);
// buffer_len: free places; ins_finish: 1 when all is done. Does not block. 1 on success.
TREMALINK_API int GetThreadInsBufferRemainCount(int thread, int* buffer_len, int* ins_finish);
// Drops what is still queued, at once.
TREMALINK_API int ClearInsBuffer(int thread);
// Hold the thread: until the axis has stopped; for ms milliseconds; until the input is on, off; until the axis has
// paused; until another thread is empty.
TREMALINK_API int TILLSTOP(int thread, int axis);
TREMALINK_API int TILLTIME(int thread, int ms);
TREMALINK_API int TILLIO(int thread, int io);
TREMALINK_API int TILLIO_NEG(int thread, int io);
TREMALINK_API int TILL_AXIS_PAUSE(int thread, int axis);
TREMALINK_API int TILL_THREAD_INS_FINISH(int thread, int other_thread);
// Empties another thread.
TREMALINK_API int CLEAR_THREAD_INS(int thread, int other_thread);
// Lets a paused axis go on.
TREMALINK_API int AXIS_RESUME(int thread, int axis);
// Smooth move to the position within the set limits; with the target in a register; direct, unplanned move; smooth
// stop.
TREMALINK_API int SGO(int thread, int axis, double position);
TREMALINK_API int SGO_R(int thread, int axis, int reg);
TREMALINK_API int RAPID_GO(int thread, int axis, double position);
TREMALINK_API int STOP_S(int thread, int axis);
// Limits for later moves, in user units per second, second squared, second cubed.
TREMALINK_API int SET_MAX_VEL(int thread, int axis, double value);
TREMALINK_API int SET_MAX_ACC(int thread, int axis, double value);
TREMALINK_API int SET_MAX_JERK(int thread, int axis, double value);
// Raw units for each user unit; a negative scale turns the axis round.
TREMALINK_API int SET_AXIS_SCALE(int thread, int axis, double scale);
// Gives the axis' present position the value.
TREMALINK_API int SET_AXIS_ZEROS(int thread, int axis, double value);
// Output in instruction order.
TREMALINK_API int SET_OUTPUT_IO(int thread, int io, uint8_t value);
// Later register numbers of this thread are the thread's own.
TREMALINK_API int USE_LOCAL_REG(int thread);
// register := commanded position; register := register + constant.
TREMALINK_API int GET_OUTPUT_POS(int thread, int axis, int reg);
TREMALINK_API int ADD_R_C(int thread, int destination, int source, double constant);
