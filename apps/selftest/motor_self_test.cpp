#include "apps/selftest/motor_self_test.h"

#include "drive/motor.h"
#include "support/dialog/message_box.h"
#include "support/time/critical_section.h"

namespace orsanta {
namespace {

constexpr int Stop_Timeout_Ms = 300000;

CMyCriticalSection& Pool_Lock() {
  static CMyCriticalSection lock;
  return lock;
}

int Find_Number(const CMyArray<int>& pool, int number) {
  for (int i = 0; i < pool.GetSize(); ++i) {
    if (pool[i] == number) return i;
  }
  return -1;
}

}  // namespace

C_MyMutiMotorTest::C_MyMutiMotorTest() {
  Init(Worker_Count, 0, Stop_Timeout_Ms);
  for (int queue = 0; queue < Worker_Count; ++queue) AddNewDelayProcess(queue, 0, 0, nullptr);
}

C_MyMutiMotorTest::~C_MyMutiMotorTest() {
  ReleaseSubClass_CQueueTask_MutiTask_Thread();
}

void C_MyMutiMotorTest::OnProcessTask(int queue, int /*code*/, void* /*object*/) {
  const int id = queue + 1;
  CMyStringW label = Format_Text("ID:%d的驱动器", id);
  // Required: all ten workers drive CAN id 1 on instruction thread 1; the test loads one drive with ten clients. The
  // worker's own id stands in the texts alone.
  C_Kestrune_Motor_test drive(1, 1, 1);
  double Max = 0.0;
  double Min = 0.0;
  if (drive.Home_And_Check(id, Max, Min) == 1) {
    Message_Box(label.Append(L"测试成功"));
  } else {
    Message_Box(label.Append(L"测试失败"), Box_Stop_Icon);
  }
}

void C_MyMutiMotorTest::PreEndDelayTask(int /*queue*/) {}

int Take_Thread_Number(CMyArray<int>& pool) {
  const C_Lock_Guard hold(Pool_Lock());
  for (int number = 1; number <= Thread_Number_Max; ++number) {
    if (Find_Number(pool, number) >= 0) continue;
    pool.Add(number);
    return number;
  }
  return 0;
}

int Give_Back_Thread_Number(CMyArray<int>& pool, int number) {
  const C_Lock_Guard hold(Pool_Lock());
  const int place = Find_Number(pool, number);
  if (place < 0) return 0;
  pool.RemoveData(place, 1);
  return 1;
}

}  // namespace orsanta
