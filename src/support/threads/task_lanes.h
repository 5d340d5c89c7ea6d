// Task lanes: numbered first-in first-out queues, each with a thread of its own. Lanes run side by side; the tasks of
// one lane run one after the other, in the order in which they were added.
//
// A subclass fills in OnProcessTask, where the work is done, and calls ReleaseSubClass_CQueueTask_MutiTask_Thread first
// in its destructor, while it is still whole. AddNewDelayProcess, GetDelayProcessFifoCount and
// BeAtLeaseOneDelayTaskInProcess may be called from any thread at once.
#pragma once

#include <deque>

#include "support/base/array.h"
#include "support/base/smart_pointer.h"
#include "support/threads/thread.h"
#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

class CQueueTask_Single_Base;

class ICQueueTask_MutiTask_Base {
 public:
  virtual ~ICQueueTask_MutiTask_Base() = default;
  virtual void OnProcessQueueTask(int lane, int code, void* data) = 0;
  virtual void OnPreEndProcessQueueTask(int lane) = 0;
  virtual CSmartPointer<CQueueTask_Single_Base, 0> OnCreateAndInitNewSingleTaskObject(int lane) = 0;
  virtual void PreReleaseSingleTaskObject(CSmartPointer<CQueueTask_Single_Base, 0> lane) = 0;
  virtual void ReleaseSingleTaskObject(CSmartPointer<CQueueTask_Single_Base, 0> lane) = 0;
};

// One lane: its queue and its thread, which waits at a wait point while there is nothing to do.
class CQueueTask_Single_Base {
 public:
  // Starts the thread. Called once, before anything else; owner outlives the thread.
  void Start(ICQueueTask_MutiTask_Base& owner, int lane);
  // False, with the queue unchanged, when that many tasks are unfinished or the lane is about to end.
  bool Add(int code, void* data, int max_unfinished);
  int Unfinished() const;
  // Drops the waiting tasks; the thread ends when the running one has finished.
  void Ask_To_End();
  // Waits for the thread; a lane that takes longer is reported as a fault of the program.
  void Wait_For_End(int timeout_ms);

 private:
  struct C_Task {
    int code;
    void* data;
  };

  void Run();
  bool Wait_For_Task(C_Task& task);

  ICQueueTask_MutiTask_Base* m_Owner = nullptr;
  int m_Lane = 0;
  mutable C_Leaf_Lock m_Lock;
  std::deque<C_Task> m_Waiting GUARDED_BY(m_Lock);
  int m_Unfinished GUARDED_BY(m_Lock) = 0;
  bool m_Be_End GUARDED_BY(m_Lock) = false;
  C_Wait_Point m_Changed{"task lane"};
  C_Thread m_Thread;
};

class CQueueTask_MutiTask_Base : public ICQueueTask_MutiTask_Base {
 public:
  // In mode 1 a lane that holds this many unfinished tasks refuses another, so that a trigger that repeats cannot queue
  // work without limit; tasks are taken again as the lane works off its queue.
  static constexpr int Max_Unfinished_In_Mode_1 = 64;

  // Makes `lanes` lanes and starts their threads. timeout_ms: how long stopping one may take before it is reported as a
  // fault of the program. Returns 1.
  int Init(int lanes, int reserved, int timeout_ms);
  // Puts a task at the tail of a lane's queue. mode 0: always taken; mode 1: may be refused, and a refusal leaves the
  // queue unchanged. data is passed to OnProcessTask and not owned. Returns 1 when the task was taken, 0 when it was
  // refused.
  int AddNewDelayProcess(int lane, int code, int mode, void* data);
  // Tasks of the lane that have not finished, the running one included.
  int GetDelayProcessFifoCount(int lane) { return m_Lanes.GetAt(lane)->Unfinished(); }
  // Non-zero while any lane holds a waiting or a running task.
  int BeAtLeaseOneDelayTaskInProcess();

 protected:
  // Asks every lane to end, then waits for each. Further tasks are refused. A second call finds nothing to do.
  void Stop_Lanes();

  int m_Timeout_Ms = 0;

 private:
  CMyArray<CSmartPointer<CQueueTask_Single_Base, 0>> m_Lanes;
};

class CQueueTask_MutiTask_Thread : public CQueueTask_MutiTask_Base {
 public:
  ~CQueueTask_MutiTask_Thread() override;

  // Stops the lanes: each finishes the task it runs and drops those that wait. Called first in every subclass's
  // destructor.
  void ReleaseSubClass_CQueueTask_MutiTask_Thread() { Stop_Lanes(); }

  void OnProcessQueueTask(int lane, int code, void* data) override { OnProcessTask(lane, code, data); }
  void OnPreEndProcessQueueTask(int lane) override { PreEndDelayTask(lane); }
  CSmartPointer<CQueueTask_Single_Base, 0> OnCreateAndInitNewSingleTaskObject(int lane) override;
  void PreReleaseSingleTaskObject(CSmartPointer<CQueueTask_Single_Base, 0> lane) override { lane->Ask_To_End(); }
  void ReleaseSingleTaskObject(CSmartPointer<CQueueTask_Single_Base, 0> lane) override {
    lane->Wait_For_End(m_Timeout_Ms);
  }

 protected:
  // Does the work of one task, on the lane's thread.
  virtual void OnProcessTask(int lane, int code, void* data) = 0;
  // Runs on the lane's thread before it ends.
  virtual void PreEndDelayTask(int lane) = 0;
};

}  // namespace orsanta
