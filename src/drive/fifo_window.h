// C_FIFO2Window: the newest samples of one input channel, as a sliding window that any thread can look at.
//
// The motion server fills a FIFO for each input channel. A reader thread of the window's own empties that FIFO every 2
// ms and appends the samples here, so that a station sees the last 4096 positions without keeping up with the drive.
//
// Threads: the window thread is the only writer of samples (Push_Sample); every other operation may be called from any
// thread. Start_Read, ReleaseSubClass_CBaseBindThread and the destructor belong to the owner.
//
// How the window slides: samples are appended behind the live part, and a full window advances m_Start by one. Only
// when the arrays have run to twice the window is the live part moved down to the front, so a push costs the same
// whether the window holds 10 samples or 10000:
//
//     front          m_Start                    end
//       | dropped ... | oldest ... live ... newest |  ... room up to twice m_WindowLen
//
// Invariant: m_Data and m_Index have the same length; the live part, from m_Start to the end, is at most m_WindowLen
// long.
#pragma once

#include <cstdint>

#include "support/base/array.h"
#include "support/threads/thread.h"
#include "support/time/critical_section.h"
#include "support/time/lock.h"
#include "support/time/shared.h"

namespace orsanta {

class C_FIFO2Window : public CBaseBindThread {
 public:
  static constexpr int Default_Window_Len = 4096;

  C_FIFO2Window() = default;
  ~C_FIFO2Window() override;

  // Sets the number of samples kept and empties the window. Returns 1; a window whose present length is below 1 returns
  // 0 and changes nothing, so that a window once set to nothing stays so.
  int Set_Window_Len(int length);
  // Starts the reader thread on an input channel above 0; any other channel leaves the window unbound, and its thread
  // then reads nothing. Returns 1.
  int Start_Read(int channel);

  // out := the live samples, oldest first, raw as the library delivered them. They stay in the window: the next reader
  // sees them again. Keeps their indices for Get_Read_Index. Returns 1 if there was at least one, else 0.
  int Get_Window(CMyArray<double>& out);
  // value := the newest live sample, raw, at the cost of that one; no indices are kept. Returns 1, or 0 without
  // touching value while the window is empty.
  int Newest(double& value);
  // out := the indices of the samples of the last Get_Window, by whichever thread called it. Returns 1.
  int Get_Read_Index(CMyArray<uint64_t>& out) const;
  // The same as a returned copy.
  CMyArray<uint64_t> Get_Read_Index_Copy() const;
  // Number of live samples.
  int Get_Count();
  // Drops all samples. Returns 1.
  int Clear_Window();
  // Waits until the reader thread has read once more from start to end. Returns 1, or 0 when it did not come to that
  // within two seconds, and at once for an unbound window. A window that is still empty after a 1 has nothing to read;
  // without the wait it may be empty because a busy machine has not let its thread run yet.
  int Wait_Pass();
  // Appends one sample with its index; a full window drops its oldest. Returns 1.
  int Push_Sample(double value, uint64_t index);

 protected:
  void OnThreadBegin(void* param) override;
  void OnThreadLoop(void* param) override;

 private:
  int Live_Count() const REQUIRES(m_Lock) { return m_Data.GetSize() - m_Start; }
  void Empty() REQUIRES(m_Lock);
  void Drop_Oldest() REQUIRES(m_Lock);

  Shared<int> m_Channel = -1;                    // -1: none yet
  Shared<int> m_WindowLen = Default_Window_Len;  // samples
  Shared<uint64_t> m_Passes = 0;                 // of the reader thread, finished
  CMyCriticalSection m_Lock;                     // held for a copy or a push
  CMyArray<double> m_Data GUARDED_BY(m_Lock);
  CMyArray<uint64_t> m_Index GUARDED_BY(m_Lock);
  int m_Start GUARDED_BY(m_Lock) = 0;

  // The indices that belong to the last Get_Window. They are read outside m_Lock, so that a reader of indices does not
  // hold up the window thread; a leaf lock of their own keeps a copy whole.
  mutable C_Leaf_Lock m_ReadIndexLock;
  CMyArray<uint64_t> m_ReadIndex GUARDED_BY(m_ReadIndexLock);

  // The window thread's read buffers, kept between passes; their size follows m_WindowLen.
  CMyArray<double> m_PassData;
  CMyArray<uint64_t> m_PassIndex;
};

}  // namespace orsanta
