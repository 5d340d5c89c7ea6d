#include "drive/fifo_window.h"

#include <algorithm>

#include "drive/tremalink.h"
#include "support/system/priority.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

template <class T>
void Copy_Live_Part(const CMyArray<T>& from, int start, CMyArray<T>& to) {
  const int count = from.GetSize() - start;
  to.ReallocateMem(count);
  std::copy_n(from.GetData() + start, count, to.GetData());
}

}  // namespace

C_FIFO2Window::~C_FIFO2Window() {
  ReleaseSubClass_CBaseBindThread();
}

int C_FIFO2Window::Set_Window_Len(int length) {
  const C_Lock_Guard hold(m_Lock);
  if (m_WindowLen < 1) return 0;
  m_WindowLen = length;
  Empty();
  return 1;
}

int C_FIFO2Window::Start_Read(int channel) {
  if (channel > 0) m_Channel = channel;
  constexpr int Stop_Timeout_Ms = 300000;
  BeginThread(nullptr, Priority_Sample_Reader, 2, Stop_Timeout_Ms, nullptr);
  return 1;
}

int C_FIFO2Window::Get_Window(CMyArray<double>& out) {
  const C_Lock_Guard hold(m_Lock);
  Copy_Live_Part(m_Data, m_Start, out);
  {
    const C_Lock_Guard hold_indices(m_ReadIndexLock);
    Copy_Live_Part(m_Index, m_Start, m_ReadIndex);
  }
  return out.GetSize() > 0 ? 1 : 0;
}

int C_FIFO2Window::Newest(double& value) {
  const C_Lock_Guard hold(m_Lock);
  if (Live_Count() < 1) return 0;
  value = m_Data.GetEndData();
  return 1;
}

int C_FIFO2Window::Get_Read_Index(CMyArray<uint64_t>& out) const {
  const C_Lock_Guard hold(m_ReadIndexLock);
  out = m_ReadIndex;
  return 1;
}

CMyArray<uint64_t> C_FIFO2Window::Get_Read_Index_Copy() const {
  CMyArray<uint64_t> out;
  Get_Read_Index(out);
  return out;
}

int C_FIFO2Window::Get_Count() {
  const C_Lock_Guard hold(m_Lock);
  return Live_Count();
}

int C_FIFO2Window::Clear_Window() {
  const C_Lock_Guard hold(m_Lock);
  Empty();
  return 1;
}

int C_FIFO2Window::Wait_Pass() {
  constexpr int Limit_Ms = 2000;  // counted in sleeps
  if (m_Channel == -1) return 0;
  const uint64_t passes = m_Passes + 2;  // the one under way may have read before this call
  for (int waited_ms = 0; m_Passes < passes; ++waited_ms) {
    if (waited_ms >= Limit_Ms) return 0;
    Sleep(1);
  }
  return 1;
}

int C_FIFO2Window::Push_Sample(double value, uint64_t index) {
  const C_Lock_Guard hold(m_Lock);
  if (Live_Count() >= m_WindowLen) Drop_Oldest();
  m_Data.Add(value);
  m_Index.Add(index);
  return 1;
}

// The count goes to 0 and the blocks stay, since they fill up again.
void C_FIFO2Window::Empty() {
  m_Data.ReallocateMem(0);
  m_Index.ReallocateMem(0);
  m_Start = 0;
}

void C_FIFO2Window::Drop_Oldest() {
  MY_ASSERT(Live_Count() >= 1);
  ++m_Start;
  if (m_Data.GetSize() < 2 * m_WindowLen) return;
  m_Data.RemoveData(0, m_Start);
  m_Index.RemoveData(0, m_Start);
  m_Start = 0;
}

// The window thread, at its own level already, runs ahead of all other work of the process, so that no FIFO of a drive
// overflows.
void C_FIFO2Window::OnThreadBegin(void*) {
  SetPriorityClass(Process_Class_High);
  Stay_On_Processor();
}

void C_FIFO2Window::OnThreadLoop(void*) {
  const int length = m_WindowLen;
  m_PassData.SetArraySize(length);
  m_PassIndex.SetArraySize(length);
  int nLen = 0;
  // The result is not looked at: a failed read brings no samples, and the window keeps what it has.
  if (m_Channel != -1) GetInputChannelData(m_Channel, length, &nLen, m_PassData.GetData(), m_PassIndex.GetData());
  // The lock is taken for each sample, so that a reader gets in between.
  for (int i = 0; i < nLen; ++i) Push_Sample(m_PassData[i], m_PassIndex[i]);
  m_Passes = m_Passes + 1;
  Sleep(2);
}

}  // namespace orsanta
