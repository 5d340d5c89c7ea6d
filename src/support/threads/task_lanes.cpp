#include "support/threads/task_lanes.h"

#include "support/time/lock.h"

namespace orsanta {

void CQueueTask_Single_Base::Start(ICQueueTask_MutiTask_Base& owner, int lane) {
  m_Owner = &owner;
  m_Lane = lane;
  m_Thread.Start("lane " + std::to_string(lane), [this] { Run(); });
}

bool CQueueTask_Single_Base::Add(int code, void* data, int max_unfinished) {
  const C_Lock_Guard hold(m_Lock);
  if (m_Be_End || m_Unfinished >= max_unfinished) return false;
  m_Waiting.push_back({code, data});
  ++m_Unfinished;
  m_Changed.Notify_All();
  return true;
}

int CQueueTask_Single_Base::Unfinished() const {
  const C_Lock_Guard hold(m_Lock);
  return m_Unfinished;
}

void CQueueTask_Single_Base::Ask_To_End() {
  const C_Lock_Guard hold(m_Lock);
  m_Be_End = true;
  m_Unfinished -= static_cast<int>(m_Waiting.size());
  m_Waiting.clear();
  m_Changed.Notify_All();
}

void CQueueTask_Single_Base::Wait_For_End(int timeout_ms) {
  if (m_Thread.Join(timeout_ms)) return;
  MY_ASSERT_REPORT(Format_Utf8("task lane %d did not end within %d ms", m_Lane, timeout_ms));
}

void CQueueTask_Single_Base::Run() {
  C_Task task{};
  while (Wait_For_Task(task)) {
    m_Owner->OnProcessQueueTask(m_Lane, task.code, task.data);
    const C_Lock_Guard hold(m_Lock);
    --m_Unfinished;
  }
  m_Owner->OnPreEndProcessQueueTask(m_Lane);
}

// Takes the next task; false once the lane is to end.
bool CQueueTask_Single_Base::Wait_For_Task(C_Task& task) {
  const C_Lock_Guard hold(m_Lock);
  while (m_Waiting.empty() && !m_Be_End) m_Changed.Wait(m_Lock);
  if (m_Be_End) return false;
  task = m_Waiting.front();
  m_Waiting.pop_front();
  return true;
}

int CQueueTask_MutiTask_Base::Init(int lanes, int, int timeout_ms) {
  MY_ASSERT(m_Lanes.GetSize() == 0);
  m_Timeout_Ms = timeout_ms;
  m_Lanes.ExpandMem(lanes);
  for (int lane = 0; lane < lanes; ++lane) m_Lanes.Add(OnCreateAndInitNewSingleTaskObject(lane));
  return 1;
}

int CQueueTask_MutiTask_Base::AddNewDelayProcess(int lane, int code, int mode, void* data) {
  const int max_unfinished = mode == 1 ? Max_Unfinished_In_Mode_1 : std::numeric_limits<int>::max();
  return m_Lanes.GetAt(lane)->Add(code, data, max_unfinished) ? 1 : 0;
}

int CQueueTask_MutiTask_Base::BeAtLeaseOneDelayTaskInProcess() {
  for (const auto& lane : m_Lanes) {
    if (lane->Unfinished() > 0) return 1;
  }
  return 0;
}

void CQueueTask_MutiTask_Base::Stop_Lanes() {
  for (const auto& lane : m_Lanes) PreReleaseSingleTaskObject(lane);
  for (const auto& lane : m_Lanes) ReleaseSingleTaskObject(lane);
}

CQueueTask_MutiTask_Thread::~CQueueTask_MutiTask_Thread() {
  ReleaseSubClass_CQueueTask_MutiTask_Thread();
}

CSmartPointer<CQueueTask_Single_Base, 0> CQueueTask_MutiTask_Thread::OnCreateAndInitNewSingleTaskObject(int lane) {
  CSmartPointer<CQueueTask_Single_Base, 0> object(1);
  object->Start(*this, lane);
  return object;
}

}  // namespace orsanta
