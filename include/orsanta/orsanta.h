/** @file
 * Orsanta: control and measuring core of a constant-force thickness gauge. The public C interface of liborsanta.so.
 * For C from C89 and C++ from C++98 on; needs <stdint.h>. ORSANTA_VERSION is in orsanta/version.h.
 *
 * Units: forces are grams, lengths millimetres. Stations are numbered from 1, in the order of the resource table.
 *
 * STATES
 *
 *   state     | entered by                 | calls allowed
 *   ----------|----------------------------|---------------------------------------------------------------------
 *   none      | load, Orsanta_dll_uninit   | ORSA_resource_alloc, Orsanta_dll_init; Orsanta_dll_uninit does nothing
 *   running   | Orsanta_dll_init           | all, from any thread and several at once; but ORSA_resource_alloc has no
 *             |                            | effect then
 *   panel     | show_dlg, until it returns | as running; Orsanta_dll_uninit is refused with a message box
 *
 * Orsanta_dll_init and Orsanta_dll_uninit are for one thread, and no other call may run beside them. After an uninit
 * everything starts again from the top, if wanted. One system runs in a process: a second Orsanta_dll_init without an
 * Orsanta_dll_uninit shows a message box and changes nothing. A process may also end without an uninit: what has not
 * been saved is lost, nothing else.
 *
 * WHAT A CALL WAITS FOR
 *
 *   at once            do_test, get_ans, Get_Force_Back_Finish, ORSA_resource_alloc, and the Get_ and Set_ functions
 *                      that save nothing
 *   a save to disk     Set_Force, Set_Force2, Save_Parameter2file: milliseconds, as the disk takes to flush
 *   the IO card        SetIO, GetIO: the motion server's answer
 *   the drive          Check_User_Zero: the station's running task, then a landing and a lift-off, some seconds;
 *                      GoZero: the drive's answer; both for ever while a drive reports that it moves and never stops
 *   everything         Orsanta_dll_init: some seconds, and up to 20 s more while the motion server does not answer;
 *                      Orsanta_dll_uninit: all queued tasks, for ever where a drive has gone silent
 *   the operator       show_dlg, until the panel is closed; and any call that meets a failure, in a message box
 *
 * MESSAGE BOXES
 *
 * Failures that an operator can see to are shown in message boxes: the thread that meets one waits until the box is
 * answered, be it the caller's or one of the library's, and only that one. Without a display (neither DISPLAY nor
 * WAYLAND_DISPLAY is set, or the desktop front is not installed) a box is a line on the standard error stream and
 * counts as answered: with OK, a question with No; a dialog counts as cancelled. So a host that nobody sits at never
 * hangs on a box. Texts are Chinese, in UTF-8. Nothing is thrown, and no error code exists beyond the results told
 * below.
 *
 * FAILED MEASUREMENTS
 *
 * A measurement that failed gives a result like any other, which no part can give:
 *
 *   what happened                          | thickness of task 1 and 4; a box told it
 *   ---------------------------------------|-------------------------------------------------------------------
 *   no position came from the drive, or    | -99.0 or 0.0, and the correction that the operator has set
 *   the cycle met what is no number        |
 *   the position did not settle in time    | the height of the reference surface above the lifted probe and the
 *                                          | block's size: more than fits under the probe
 *   the station never had a reference      | no failure, and yet no thickness: a negative number
 *
 * So take a thickness for good only where it lies between the least and the greatest that your parts can have, written
 * so that a number that is no number fails too: if (t >= least && t <= greatest). A difference (task 3) has no such
 * range: it holds whatever its two landings gave. Check_User_Zero gives no result: measure the block afterwards, and go
 * on only where that is the block's size.
 *
 * WRONG ARGUMENTS
 *
 * A station number above the number of stations, a value that is no finite number, and an IO channel outside 0 to 7
 * show a message box that names the function, the number and the station; the call then changes nothing, saves nothing,
 * writes nothing through its pointers, and returns 0 unless something else stands with it. Pointers must not be null.
 * Finite values are taken as they are: what the panel lets an operator set stands with each function as its range.
 *
 * HOW THE LIBRARY CAN END THE PROCESS
 *
 *   exit status 3   at once, without destructors or exit handlers, with an assertion report: a station number below 1,
 *                   a call that its state does not allow, a motion server that refuses the connection for some 20 s,
 *                   or a fault of the library. The report leaves a text file, PROGRAM_PID_TIME.dmp, with what failed
 *                   and the stack of the failing thread, in the working directory, or in the folder for temporary
 *                   files where that does not take it; the last line on the standard error stream tells both, and so
 *                   does a window where there is a display.
 *   exit status 0   from Orsanta_dll_init, after a message box: two processes named "Orsanta.exe" run, as the one
 *                   host of a machine may be called.
 *
 * WHAT THE LIBRARY DOES TO THE PROCESS
 *
 *   files       Stores of the stations ("音圈电机N参数", N the CAN id) and of the settings ("全局电机参数",
 *               "电机N串口参数", "pw_file.dat"), NAME.lock while they are in use, copies NAME.bad of damaged ones,
 *               "历史数据/" with exported histories, orsanta_trace.log and *.dmp: all in the working directory that
 *               Orsanta_dll_init finds; a later change of it moves none. Stores are for their owner alone. A link
 *               "COMn" there to a device is serial port n.
 *   priority    Orsanta_dll_init lowers the nice value of the process to -10, of its calling thread to -15, where the
 *               system grants it, and they keep it; the loop and the readers of samples ask for a real-time class.
 *   threads     Some eight for each station, gone with Orsanta_dll_uninit; with a display also those of the desktop
 *               front, which stay.
 *   signals     No handler is set before the process ends as above. A write of the library raises no SIGPIPE.
 *   unloading   After Orsanta_dll_uninit the library may be unloaded, and loaded again. A thread that has run a dialog
 *               holds it until that thread ends; the desktop front stays.
 *   network     It listens on none. The client library of the motion server connects to this machine's own address.
 */
#ifndef ORSANTA_ORSANTA_H
#define ORSANTA_ORSANTA_H

#include <stdint.h>

#if defined(__GNUC__)
#define ORSANTA_API __attribute__((visibility("default")))
#else
#define ORSANTA_API
#endif

#if !defined(__cplusplus)
#define ORSANTA_NOEXCEPT
#elif __cplusplus >= 201103L
#define ORSANTA_NOEXCEPT noexcept
#else
#define ORSANTA_NOEXCEPT throw()
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** One station's bus assignment: nine numbers, in this order and with nothing between them, in every language.
 *
 * Two stations may not have one CanID, nor may a station have 15, the IO card's: at the start such a station is told in
 * a message box and rests, while the others work.
 *
 * The temperature board of a station is a device of its own on the bus; its CAN id is one of the station's stored
 * parameters. Give each station a board of its own: two stations on one board take its samples from each other, and a
 * cycle that finds none records 0.0 as its temperature, which cannot be told from a measured one. Of cycles that start
 * together a quarter did so. Thicknesses are not touched by it. */
typedef struct VCM_Resource_struct {
  int32_t CanID;      /**< CAN id of the drive, 1 to 63; also the station's id in texts, and its IO input and output */
  int32_t AxisNum;    /**< axis of the interpolation device that reads the temperature, where one is fitted */
  int32_t AuxAxisNum; /**< sensor input number of that device */
  int32_t ControllerNum; /**< instruction thread of the motion server */
  int32_t SpareNum;      /**< kept, read by nothing */
  int32_t ConnectServer; /**< 1: this station's drive may open the connection to the motion server */
#if defined(__cplusplus) && __cplusplus >= 201402L
  int32_t Reserved1 = -1; /**< this and the next two: -1, never read */
  int32_t Reserved2 = -1; /**< -1 */
  int32_t Reserved3 = -1; /**< -1 */
#else
  int32_t Reserved1; /**< this and the next two: -1, never read */
  int32_t Reserved2; /**< -1 */
  int32_t Reserved3; /**< -1 */
#endif
} VCM_Resource_struct;

/** Task codes of do_test. */
enum {
  ORSANTA_TASK_MEASURE = 1,          /**< measure at the set speed; the probe stays on the part, under force */
  ORSANTA_TASK_FORCE_BACK = 2,       /**< lift the probe off the part */
  ORSANTA_TASK_FORCE_DIFFERENCE = 3, /**< difference of two measurements at the two set forces */
  ORSANTA_TASK_MEASURE_SLOW = 4      /**< measure at 3 mm/s */
};

/* --- Set-up --- */

/** Replaces the resource table with copies of `count` records. Optional, and before Orsanta_dll_init: later it has no
 * effect on the stations that stand. With count 0 or below the table is empty, and Orsanta_dll_init fills it from the
 * stored settings; Orsanta_dll_uninit empties it. Give the records every time before a start. */
ORSANTA_API void ORSA_resource_alloc(const VCM_Resource_struct* records, int count) ORSANTA_NOEXCEPT;

/** Starts the system: loads the settings (at the very first start in a folder the operator is asked for them), builds
 * every station and starts the loop. IoMode: 0 without the IO card, 1 with it, any other value as the settings say.
 *
 * Blocks until all stations stand, some seconds; each station whose drive does not answer costs some more and a message
 * box, and its measurements fail. Every probe is lifted then, which goes on after the return: see
 * Get_Force_Back_Finish. Without a motion server the process ends, see above. */
ORSANTA_API void Orsanta_dll_init(int IoMode) ORSANTA_NOEXCEPT;

/** Stops the system: waits for all queued tasks, for ever where a drive has gone silent; saves all stations; empties
 * the resource table. Refused, with a message box, while the panel is open: call it again later. No other call may run
 * meanwhile. */
ORSANTA_API void Orsanta_dll_uninit(void) ORSANTA_NOEXCEPT;

/* --- Work --- */

/** Queues a task (ORSANTA_TASK_...) on the station and returns at once: 1 queued, 0 refused, as for a station that
 * rests. Any other code is taken and does nothing. The tasks of one station run one after the other, those of several
 * side by side. */
ORSANTA_API int do_test(int station, int task_code) ORSANTA_NOEXCEPT;

/** Takes the latest result: 1 if it is new (once for each result), 0 if none was pending. Returns at once. Writes both
 * outputs in either case: *thickness in mm, *force the set force in grams, which is not a measured one.
 *
 * One result is kept: the next one takes its place. Results of tasks that an IO input, a serial line or the panel has
 * started come here too. A result comes within some seconds, also from a measurement that failed (see above), unless
 * its drive has gone silent: poll with a limit, every millisecond or so. */
ORSANTA_API int get_ans(int station, double* thickness, double* force) ORSANTA_NOEXCEPT;

/** Measures the reference block and takes its surface as the zero of the thickness scale, with the first set force and
 * the block's size as Set_Ans_Offset gave it. Kept for later starts with the next save and at the stop. Blocks for the
 * landing and the lift-off, after the station's running task. Gives no result: see the failed measurements above. */
ORSANTA_API void Check_User_Zero(int station) ORSANTA_NOEXCEPT;

/** 0 from the start of a measuring task until the lift-off after it has ended, else 1. It is 1 at the start already,
 * while the first lift-off is still under way: only after a measuring task and a lift-off does it tell that the probe
 * is up. Rises also where the drive reports a fault or the probe did not come free: a message box tells the second, the
 * station's IO output stays low for the first. Does not clear the flag; the loop takes it when the IO input of the
 * station asks for a measurement, so that a host that polls beside the IO card can miss it. */
ORSANTA_API int Get_Force_Back_Finish(int station) ORSANTA_NOEXCEPT;

/** Runs the drive's own zero routine; 1 on success. Blocks until it has ended. No task of the station may run. */
ORSANTA_API int GoZero(int station) ORSANTA_NOEXCEPT;

/* --- Parameters --- */

/** Sets the first set force in grams, of the next task, and saves the station. Range 0 to 1000; 200 at first. It is the
 * true force once the station's force has been calibrated, from the panel. */
ORSANTA_API void Set_Force(int station, double force) ORSANTA_NOEXCEPT;
/** As Set_Force, the second set force, which ORSANTA_TASK_FORCE_DIFFERENCE uses. */
ORSANTA_API void Set_Force2(int station, double force) ORSANTA_NOEXCEPT;
/** Writes the first set force in grams to *force. */
ORSANTA_API void Get_Force(int station, double* force) ORSANTA_NOEXCEPT;
/** Saves the station's parameters to its store. A store that cannot be written is told in a message box; the old one
 * then stands. */
ORSANTA_API void Save_Parameter2file(int station) ORSANTA_NOEXCEPT;
/** The size of the reference block in mm, which is added to every thickness. Range 0 to 500; 0 at first. Not saved by
 * this call, but with the next save and at the stop. A cycle that is under way takes it. */
ORSANTA_API void Set_Ans_Offset(int station, double offset) ORSANTA_NOEXCEPT;
/** Writes the size of the reference block in mm to *offset. */
ORSANTA_API void Get_Ans_Offset(int station, double* offset) ORSANTA_NOEXCEPT;
/** The greatest landing travel in mm, in single precision: how far down a probe goes that meets no part. Range 1 to 30;
 * 10 at first. Saved as the block's size is. Beyond 1000 mm a landing is refused with a message box and gives -99.0. */
ORSANTA_API void set_test_distance(int station, double distance) ORSANTA_NOEXCEPT;

/* --- IO card, by channel 0 to 7 --- */

/** Writes an output, 0 or 1; always returns 1, also without a card. The library itself writes the outputs of the
 * stations, by their CAN ids: 0 when a measurement begins, 1 when the probe is up. */
ORSANTA_API int SetIO(int channel, int value) ORSANTA_NOEXCEPT;
/** Reads an input: 0 or 1, -1 if the read failed or the channel is wrong, 3 if no IO card is in use. */
ORSANTA_API int GetIO(int channel) ORSANTA_NOEXCEPT;

/* --- Panel --- */

/** Shows the operator's panel and returns when it is closed. Without a display it returns after half a
 * second. */
ORSANTA_API void show_dlg(void) ORSANTA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* ORSANTA_ORSANTA_H */
