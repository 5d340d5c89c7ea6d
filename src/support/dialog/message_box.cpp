#include "support/dialog/message_box.h"

#include "support/dialog/front.h"
#include "support/time/clock.h"
#include "support/time/lock.h"

namespace orsanta {

namespace {

class C_Answer : public C_Message_Listener {
 public:
  void On_Answer(int answer) override {
    const C_Lock_Guard hold(m_Lock);
    m_Answer = answer;
    m_Answered.Notify_All();
  }

  int Wait() {
    const C_Lock_Guard hold(m_Lock);
    while (m_Answer == 0) m_Answered.Wait(m_Lock);
    return m_Answer;
  }

 private:
  C_Leaf_Lock m_Lock;
  int m_Answer GUARDED_BY(m_Lock) = 0;
  C_Wait_Point m_Answered{"Message_Box"};
};

}  // namespace

int Message_Box(const CMyStringW& text, unsigned flags) {
  C_Answer answer;
  Front().Post_Message({text.Text(), flags}, answer);
  return answer.Wait();
}

}  // namespace orsanta
