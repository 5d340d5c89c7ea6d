// Process and thread levels, mapped to what the system grants: a nice value for the process, a real-time class for
// time-critical threads. Where the system grants neither, one trace line for the process says so and the run continues
// at the present priority. Under simulated time nothing is asked for. Any thread.
//
// Levels are absolute: to ask for one twice changes nothing, and a thread of this system has the level that it asks
// for, whatever level its starter had.
#pragma once

namespace orsanta {

constexpr int Priority_Normal = 0;          // thread level: that of the process
constexpr int Priority_Above_Normal = 1;    // thread level
constexpr int Priority_Time_Critical = 15;  // thread level
constexpr int Priority_Sample_Reader = 16;  // thread level, ahead of all others: a late read loses samples
constexpr int Process_Class_High = 128;     // process class

// Raises the process, all its present and future threads, to the class asked for.
void SetPriorityClass(int process_class);
// Puts the calling thread on the level asked for. At a level above normal a thread that has a better nice value of its
// own keeps it. What a time-critical thread starts begins in the ordinary class.
void SetThreadPriority(int level);
// Keeps the calling thread on the processor it runs on, if it has a real-time class; any other thread is left alone.
// Where several real-time threads are due at once, the system would move them to other processors, which costs three
// times as much as the wake-up itself. For threads that run for microseconds; those they start would stay there too.
void Stay_On_Processor();

}  // namespace orsanta
