/* Orsanta: control and measuring core of a constant-force thickness gauge. The public C interface of liborsanta.so.
 *
 * Stations are numbered from 1, in the order of the resource table. Forces are grams, lengths millimetres; a thickness
 * that failed shows in-band, as -99.0, 0.0 or a value worked out from a zero position. Failures that an operator can
 * see to are shown in message boxes from the calling thread, and the call then returns. Nothing is thrown.
 *
 * Calling order: (ORSA_resource_alloc), Orsanta_dll_init, then any of the others in any order and from any thread, and
 * last Orsanta_dll_uninit. No other call is allowed before Orsanta_dll_init.
 *
 * A station number above the number of stations shows a message box that names the function and the number; the call
 * then returns, with 0 if it returns an int, and writes nothing through its pointers. A station number below 1 is a
 * fault of the program: it ends the process with an assertion report.
 */
#ifndef ORSANTA_ORSANTA_H
#define ORSANTA_ORSANTA_H

#include <stdint.h>

#if defined(__GNUC__)
#define ORSANTA_API __attribute__((visibility("default")))
#else
#define ORSANTA_API
#endif

#ifdef __cplusplus
#define ORSANTA_NOEXCEPT noexcept
extern "C" {
#else
#define ORSANTA_NOEXCEPT
#endif

/* One station's bus assignment. */
typedef struct VCM_Resource_struct {
  int32_t CanID;         /* CAN id of the drive, 1 to 63; also the station's id in texts, and its IO input and output */
  int32_t AxisNum;       /* axis of the interpolation device that reads the temperature, where one is fitted */
  int32_t AuxAxisNum;    /* sensor input number of that device */
  int32_t ControllerNum; /* instruction thread of the motion server */
  int32_t SpareNum;      /* kept, read by nothing */
  int32_t ConnectServer; /* 1: this station's drive may open the connection to the motion server */
#ifdef __cplusplus
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

/* Replaces the resource table with `count` records. Optional; before Orsanta_dll_init. With count 0 the table is empty,
 * and Orsanta_dll_init fills it from the stored settings. */
ORSANTA_API void ORSA_resource_alloc(const VCM_Resource_struct* records, int count) ORSANTA_NOEXCEPT;

/* Starts the system: loads the settings (at the very first start the operator is asked for them), builds every station
 * and starts the loop. Blocks until all stations stand. IoMode: 0 without the IO card, 1 with it, any other value as
 * the settings say. */
ORSANTA_API void Orsanta_dll_init(int IoMode) ORSANTA_NOEXCEPT;

/* Stops the system: waits for running tasks, saves all stations, empties the resource table. Refused, with a message
 * box, while the panel is open. */
ORSANTA_API void Orsanta_dll_uninit(void) ORSANTA_NOEXCEPT;

/* --- Work --- */

/* Queues a task (ORSANTA_TASK_...) on the station and returns at once: 1 queued, 0 refused. Any other code is taken and
 * does nothing. */
ORSANTA_API int do_test(int station, int task_code) ORSANTA_NOEXCEPT;

/* Takes the latest result: 1 if it is new (once for each result), 0 if none was pending. Writes both outputs in either
 * case: *thickness in mm, *force the set force in grams. */
ORSANTA_API int get_ans(int station, double* thickness, double* force) ORSANTA_NOEXCEPT;

/* Measures the reference block and stores its surface as the zero of the thickness scale. Blocks for the landing and
 * the lift-off. */
ORSANTA_API void Check_User_Zero(int station) ORSANTA_NOEXCEPT;

/* 1 when the last lift-off has ended, 0 from the start of the next measuring task on. Does not clear the flag; the loop
 * takes it when the IO input of the station asks for a measurement. */
ORSANTA_API int Get_Force_Back_Finish(int station) ORSANTA_NOEXCEPT;

/* Runs the drive's own zero routine; 1 on success. */
ORSANTA_API int GoZero(int station) ORSANTA_NOEXCEPT;

/* --- Parameters --- */

/* Sets the first, second set force in grams for the next task, and saves the station. */
ORSANTA_API void Set_Force(int station, double force) ORSANTA_NOEXCEPT;
ORSANTA_API void Set_Force2(int station, double force) ORSANTA_NOEXCEPT;
/* *force := the first set force in grams. */
ORSANTA_API void Get_Force(int station, double* force) ORSANTA_NOEXCEPT;
/* Saves the station's parameters to its store. */
ORSANTA_API void Save_Parameter2file(int station) ORSANTA_NOEXCEPT;
/* The size of the reference block in mm, which is added to every thickness. Not saved by this call. */
ORSANTA_API void Set_Ans_Offset(int station, double offset) ORSANTA_NOEXCEPT;
ORSANTA_API void Get_Ans_Offset(int station, double* offset) ORSANTA_NOEXCEPT;
/* The greatest landing travel in mm, in single precision. Not saved by this call. */
ORSANTA_API void set_test_distance(int station, double distance) ORSANTA_NOEXCEPT;

/* --- IO card, by channel 0 to 7 --- */

/* Writes an output; always returns 1. */
ORSANTA_API int SetIO(int channel, int value) ORSANTA_NOEXCEPT;
/* Reads an input: 0 or 1, -1 if the read failed, 3 if no IO card is in use. */
ORSANTA_API int GetIO(int channel) ORSANTA_NOEXCEPT;

/* --- Panel --- */

/* Shows the operator's panel and returns when it is closed. */
ORSANTA_API void show_dlg(void) ORSANTA_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif /* ORSANTA_ORSANTA_H */
