// C_MyMutiMotorTest: a full self-test of the drive, run from ten workers at once, without any station or parameter; and
// the pool of instruction-thread numbers.
//
// Making the object starts the tests; each worker shows one message box with its outcome. The destructor waits for the
// tests that run and drops those that wait, so a caller that wants all of them first waits until
// BeAtLeaseOneDelayTaskInProcess gives 0.
#pragma once

#include "support/base/array.h"
#include "support/threads/task_lanes.h"

namespace orsanta {

class C_MyMutiMotorTest : public CQueueTask_MutiTask_Thread {
 public:
  static constexpr int Worker_Count = 10;

  C_MyMutiMotorTest();
  ~C_MyMutiMotorTest() override;

 protected:
  void OnProcessTask(int queue, int code, void* object) override;
  void PreEndDelayTask(int queue) override;
};

constexpr int Thread_Number_Max = 31;

// Appends the lowest number from 1 to Thread_Number_Max that is not in the pool, and returns it; 0 if all are taken.
// The pool belongs to the caller; any thread.
int Take_Thread_Number(CMyArray<int>& pool);
// Removes the first entry equal to the number and returns 1; 0 if it is not in the pool.
int Give_Back_Thread_Number(CMyArray<int>& pool, int number);

}  // namespace orsanta
