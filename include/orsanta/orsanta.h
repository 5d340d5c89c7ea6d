/* Orsanta: control and measuring core of a constant-force thickness gauge. The public C interface of liborsanta.so.
 * For C from C89 and C++ from C++98 on; needs <stdint.h>.
 *
 * Units: forces are grams, lengths millimetres. Stations are numbered from 1, in the order of the resource table.
 *
 * Calling order: (ORSA_resource_alloc), Orsanta_dll_init, then any of the others in any order and from any thread, and
 * last Orsanta_dll_uninit; then again from the start, if wanted. One system runs in a process: a second
 * Orsanta_dll_init without an Orsanta_dll_uninit shows a message box and changes nothing.
 *
 * Failures that an operator can see to are shown in message boxes: the thread that meets one waits until the box is
 * answered, be it the caller's or one of the library's. Without a display a box is a line on the error stream and
 * counts as answered. Nothing is thrown, and no error code exists beyond the results told below.
 *
 * What a measurement gives that failed: a result like any other, which no part can give.
 *   no position came from the drive, or   -99.0 or 0.0, and the correction that the operator has set
 *   the cycle met what is no number
 *   the position did not settle in time   the height of the reference surface above the lifted probe and the block's
 *                                         size: more than fits under the probe
 * So take a thickness for good only where it lies between the least and the greatest that your parts can have, written
 * so that a number that is no number fails too: if (t >= least && t <= greatest).
 *
 * Wrong arguments. A station number above the number of stations, a value that is no finite number, and an IO channel
 * outside 0 to 7 show a message box that names the function, the number and the station; the call then changes nothing,
 * saves nothing, writes nothing through its pointers, and returns 0 unless something else stands with it. Pointers must
 * not be null.
 *
 * A station number below 1, or a call outside the calling order, is a fault of the program: it ends the process with an
 * assertion report, at once, with exit status 3 and without destructors or exit handlers. The report leaves a text
 * file, PROGRAM_PID_TIME.dmp, with what failed and the stack of the failing thread in the working directory, or in the
 * folder for temporary files where that does not take it; the last line on the standard error stream tells both, and so
 * does a window where there is a display.
 *
 * What the library does to the process: the stores of the stations, the settings and the dumps are files in its working
 * directory, which must not change while the system runs; the process and the thread that calls Orsanta_dll_init get a
 * raised priority, where the system grants it, and keep it.
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

/* One station's bus assignment: nine numbers, in this order and with nothing between them, in every language.
 * Two stations may not have one CanID, nor may a station have 15, the IO card's: at the start such a station is told in
 * a message box and rests, while the others work.
 *
 * The temperature board of a station is a device of its own on the bus; its CAN id is one of the station's stored
 * parameters. Give each station a board of its own: two stations on one board take its samples from each other, and a
 * cycle that finds none records 0.0 as its temperature, which cannot be told from a measured one. Of cycles that start
 * together a quarter did so. Thicknesses are not touched by it. */
typedef struct VCM_Resource_struct {
  int32_t CanID;         /* CAN id of the drive, 1 to 63; also the station's id in texts, and its IO input and output */
  int32_t AxisNum;       /* axis of the interpolation device that reads the temperature, where one is fitted */
  int32_t AuxAxisNum;    /* sensor input number of that device */
  int32_t ControllerNum; /* instruction thread of the motion server */
  int32_t SpareNum;      /* kept, read by nothing */
  int32_t ConnectServer; /* 1: this station's drive may open the connection to the motion server */
#if defined(__cplusplus) && __cplusplus >= 201402L
  int32_t Reserved1 = -1; /* these three: -1, never read */
  int32_t Reserved2 = -1;
  int32_t Reserved3 = -1;
#else
  int32_t Reserved1; /* these three: -1, never read */
  int32_t Reserved2;
  int32_t Reserved3;
#endif
} VCM_Resource_struct;

/* Task codes of do_test. */
enum {
  ORSANTA_TASK_MEASURE = 1,          /* measure at the set speed; the probe stays on the part, under force */
  ORSANTA_TASK_FORCE_BACK = 2,       /* lift the probe off the part */
  ORSANTA_TASK_FORCE_DIFFERENCE = 3, /* difference of two measurements at the two set forces */
  ORSANTA_TASK_MEASURE_SLOW = 4      /* measure at 3 mm/s */
};

/* --- Set-up --- */

/* Replaces the resource table with `count` records, which it copies. Optional; before Orsanta_dll_init. With count 0
 * the table is empty, and Orsanta_dll_init fills it from the stored settings. */
ORSANTA_API void ORSA_resource_alloc(const VCM_Resource_struct* records, int count) ORSANTA_NOEXCEPT;

/* Starts the system: loads the settings (at the very first start the operator is asked for them), builds every station
 * and starts the loop. Blocks until all stations stand, some seconds. IoMode: 0 without the IO card, 1 with it, any
 * other value as the settings say. Every probe is then lifted, which goes on after the return: see
 * Get_Force_Back_Finish. */
ORSANTA_API void Orsanta_dll_init(int IoMode) ORSANTA_NOEXCEPT;

/* Stops the system: waits for running tasks, for ever where a drive has gone silent; saves all stations; empties the
 * resource table. Refused, with a message box, while the panel is open. No other call may run meanwhile. */
ORSANTA_API void Orsanta_dll_uninit(void) ORSANTA_NOEXCEPT;

/* --- Work --- */

/* Queues a task (ORSANTA_TASK_...) on the station and returns at once: 1 queued, 0 refused, as for a station that
 * rests. Any other code is taken and does nothing. The tasks of one station run one after the other, those of several
 * side by side. */
ORSANTA_API int do_test(int station, int task_code) ORSANTA_NOEXCEPT;

/* Takes the latest result: 1 if it is new (once for each result), 0 if none was pending. Returns at once. Writes both
 * outputs in either case: *thickness in mm, *force the set force in grams. A result comes within some seconds, also
 * from a measurement that failed (see above), unless its drive has gone silent: poll with a limit. */
ORSANTA_API int get_ans(int station, double* thickness, double* force) ORSANTA_NOEXCEPT;

/* Measures the reference block and takes its surface as the zero of the thickness scale. Kept for later starts with the
 * next save and at the stop. Blocks for the landing and the lift-off, after the station's running task. */
ORSANTA_API void Check_User_Zero(int station) ORSANTA_NOEXCEPT;

/* 0 from the start of a measuring task until the lift-off after it has ended, else 1. It is 1 at the start already,
 * while the first lift-off is still under way: only after a measuring task and a lift-off does it tell that the probe
 * is up. Does not clear the flag; the loop takes it when the IO input of the station asks for a measurement, so that a
 * host that polls beside the IO card can miss it. */
ORSANTA_API int Get_Force_Back_Finish(int station) ORSANTA_NOEXCEPT;

/* Runs the drive's own zero routine; 1 on success. Blocks until it has ended. */
ORSANTA_API int GoZero(int station) ORSANTA_NOEXCEPT;

/* --- Parameters --- */

/* Sets the first, second set force in grams for the next task, and saves the station. It is the true force once the
 * station's force has been calibrated, from the panel. */
ORSANTA_API void Set_Force(int station, double force) ORSANTA_NOEXCEPT;
ORSANTA_API void Set_Force2(int station, double force) ORSANTA_NOEXCEPT;
/* *force := the first set force in grams. */
ORSANTA_API void Get_Force(int station, double* force) ORSANTA_NOEXCEPT;
/* Saves the station's parameters to its store. */
ORSANTA_API void Save_Parameter2file(int station) ORSANTA_NOEXCEPT;
/* The size of the reference block in mm, which is added to every thickness. Not saved by this call, but with the next
 * save and at the stop. */
ORSANTA_API void Set_Ans_Offset(int station, double offset) ORSANTA_NOEXCEPT;
ORSANTA_API void Get_Ans_Offset(int station, double* offset) ORSANTA_NOEXCEPT;
/* The greatest landing travel in mm, in single precision: how far down a probe goes that meets no part. Saved as the
 * offset is. */
ORSANTA_API void set_test_distance(int station, double distance) ORSANTA_NOEXCEPT;

/* --- IO card, by channel 0 to 7 --- */

/* Writes an output, 0 or 1; always returns 1. */
ORSANTA_API int SetIO(int channel, int value) ORSANTA_NOEXCEPT;
/* Reads an input: 0 or 1, -1 if the read failed or the channel is wrong, 3 if no IO card is in use. */
ORSANTA_API int GetIO(int channel) ORSANTA_NOEXCEPT;

/* --- Panel --- */

/* Shows the operator's panel and returns when it is closed. */
ORSANTA_API void show_dlg(void) ORSANTA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* ORSANTA_ORSANTA_H */
