// orsanta_selftest: the drive's self-test, run from ten workers at once. It stands on the library's layers themselves,
// since the library does not export it; `orsanta selftest` runs it.
#include <cstdio>

#include "apps/selftest/motor_self_test.h"
#include "support/dialog/console_front.h"
#include "support/dialog/message_box.h"
#include "support/time/clock.h"
#include "support/time/lock.h"

namespace {

constexpr int Done = 0;
constexpr int Failed = 1;

// Prints each box on the standard output and counts the outcomes that they tell.
class C_Selftest_Front : public orsanta::C_Console_Front {
 public:
  void Post_Message(const orsanta::C_Message_Model& model, orsanta::C_Message_Listener& listener) override {
    {
      const orsanta::C_Lock_Guard hold(m_Lock);
      std::printf("%s\n", orsanta::To_Utf8(model.text).c_str());
      std::fflush(stdout);
      if (model.text.find(L"测试成功") != std::wstring::npos) ++m_Passed;
    }
    listener.On_Answer(orsanta::Answer_Ok);
  }

  int Passed() {
    const orsanta::C_Lock_Guard hold(m_Lock);
    return m_Passed;
  }

 private:
  orsanta::C_Leaf_Lock m_Lock;
  int m_Passed GUARDED_BY(m_Lock) = 0;
};

int Run_Selftest() {
  auto owned_front = std::make_unique<C_Selftest_Front>();
  C_Selftest_Front& front = *owned_front;
  orsanta::Replace_Front(std::move(owned_front));
  {
    orsanta::C_MyMutiMotorTest test;
    while (test.BeAtLeaseOneDelayTaskInProcess() != 0) orsanta::Sleep(10);
  }
  const int passed = front.Passed();
  if (passed == 0) {
    std::printf("FAIL: no worker got through; the texts above say where each one stopped\n");
    return Failed;
  }
  // The ten share one drive: while the first lets it home, the others find it not ready.
  std::printf("PASS: %d of %d workers got through, the others found the drive in use\n", passed,
              orsanta::C_MyMutiMotorTest::Worker_Count);
  return Done;
}

}  // namespace

int main() {
  return Run_Selftest();
}
