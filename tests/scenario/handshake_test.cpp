// IO inputs start measurements and lift-offs: level 0 asks for the one, level 1 for the other.
#include "scenario/system.h"

namespace orsanta {

class Handshake : public System {
 protected:
  Handshake() {
    for (int bit = 0; bit < 8; ++bit) simulator::Set_Input(bit, 1);
  }
  static int Output(int bit) { return simulator::Get_Output(bit); }
};

TEST_F(Handshake, Levels_Of_A_Missing_Card_Start_Nothing) {
  for (const int io_mode : {1, 0}) {  // the card falls out; there is none
    simulator::Set_Input(1, 1);
    Start({1}, io_mode);
    simulator::Set_Io_Card_Missing(io_mode == 1);
    simulator::Set_Input(1, 0);
    EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
    Sleep(3000);
    EXPECT_FALSE(No_Result(1));
    simulator::Set_Input(1, 1);
    Sleep(3000);
    EXPECT_TRUE(No_Result(1));
    EXPECT_GT(simulator::True_Force(1), 10.0) << "nobody lifts the probe";
    EXPECT_EQ(GetIO(1), io_mode == 1 ? -1 : 3);
    Stop();
  }
}

// The loop lowers the output of the station's place, the tasks move the output of its CAN id: with ids from 5 on they
// are two outputs.
TEST_F(Handshake, A_Fault_Lowers_The_Output_Of_The_Place) {
  Start({5, 6}, 1);
  EXPECT_EQ(Output(1), 1);
  EXPECT_EQ(Output(5), 1);
  simulator::Set_Fault_Bits(5, 1);
  EXPECT_TRUE(Wait_For([] { return Output(1) == 0; }, 100));
  EXPECT_EQ(Output(2), 1);
  EXPECT_EQ(Output(5), 1);
  simulator::Set_Input(5, 0);  // a fault does not stop the handshake, but its output stays low
  Next_Result(1);
  simulator::Set_Input(5, 1);
  EXPECT_TRUE(Wait_Lifted(1));
  Sleep(100);
  EXPECT_EQ(Output(5), 0);
}

TEST_F(Handshake, Stop_Waits_For_The_Tasks) {
  Start({1, 2}, 1);
  EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  EXPECT_EQ(do_test(1, ORSANTA_TASK_FORCE_BACK), 1);
  Sleep(20);  // the first task runs, the second waits
  Stop();
  EXPECT_EQ(simulator::True_Force(1), 0.0);  // both were carried out
  EXPECT_NEAR(simulator::True_Position(1), 0.0, 0.5);

  // While a task waits the loop adds none: the probe goes back once, after the second measurement.
  Start({1}, 1);
  simulator::Journal_Clear();
  for (int i = 0; i < 2; ++i) EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  Sleep(6000);
  const auto journal = simulator::Journal();
  EXPECT_EQ(std::count_if(journal.begin(), journal.end(), [](auto& call) { return call.arguments == "1, 1"; }), 1);
  Stop();

  // The table is empty now: the next start goes by the stored settings, here those of a first start that was cancelled.
  Init(0);
  EXPECT_TRUE(Wait_Lifted(1));
  EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  EXPECT_EQ(do_test(2, ORSANTA_TASK_MEASURE), 0);
}

}  // namespace orsanta
