#include "support/dialog/message_box.h"

#include <mutex>

#include "support/dialog/front.h"
#include "support/time/clock.h"

namespace orsanta {

namespace {

class C_Answer : public C_Message_Sink {
 public:
  void On_Answer(int answer) override {
    const std::lock_guard holder(m_Lock);
    m_Answer = answer;
    m_Answered.Notify_All();
  }

  int Wait() {
    std::unique_lock lock(m_Lock);
    while (m_Answer == 0) m_Answered.Wait(lock);
    return m_Answer;
  }

 private:
  std::mutex m_Lock;
  int m_Answer = 0;
  C_Wait_Point m_Answered{"Message_Box"};
};

}  // namespace

int Message_Box(const CMyStringW& text, unsigned flags) {
  C_Answer answer;
  Front().Post_Message({text.Text(), flags}, answer);
  return answer.Wait();
}

}  // namespace orsanta
