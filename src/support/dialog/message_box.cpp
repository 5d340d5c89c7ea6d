#include "support/dialog/message_box.h"

#include "support/dialog/dialog_thread.h"

namespace orsanta {

int Message_Box(const CMyStringW& text, unsigned flags) {
  return C_Dialog_Thread::Of_Caller().Ask({text.Text(), flags});
}

}  // namespace orsanta
