// The first start asks for the settings; what the operator answers decides which system stands then and ever after.
#include "common/pty.h"
#include "scenario/system.h"

namespace orsanta {
namespace {

class Settings : public System {};

TEST_F(Settings, TheFirstStartAsksAndLaterStartsGoByTheAnswer) {
  C_Pty host(2);
  for (int bit = 0; bit < 8; ++bit) bench::Set_Input(bit, 1);
  front->Next_Dialog(
      C_Script().Select(L"起始测微仪id", 4).Select(L"电机数量", 1).Select(L"串口号", 2).Select(L"IO控制", 1).Confirm());
  for (int start = 0; start < 2; ++start) {
    bench::Journal_Clear();
    Init(2);                 // as the settings say
    EXPECT_EQ(GetIO(5), 1);  // with the card
    EXPECT_EQ(do_test(3, 1), 0);
    host.Send("C");
    EXPECT_TRUE(Wait_For([&, answer = std::string()]() mutable {
      answer += host.Take();
      return answer == "ID:5 State:1\nID:6 State:1\n";
    }));
    const std::string journal = bench::Journal_Text();  // the drives map on instruction threads 2 and 4
    EXPECT_NE(journal.find(" 2 SET_INPUT_DATA_MAP(5, "), std::string::npos);
    EXPECT_NE(journal.find(" 4 SET_INPUT_DATA_MAP(6, "), std::string::npos);
    Stop();
  }
  Init(0);  // the host's word stands above the settings
  EXPECT_EQ(GetIO(5), 3);
  int dialogs = 0;
  for (const C_Shown& shown : front->Shown()) dialogs += shown.kind == C_Shown::Kind::Dialog ? 1 : 0;
  EXPECT_EQ(dialogs, 1);
}

}  // namespace
}  // namespace orsanta
