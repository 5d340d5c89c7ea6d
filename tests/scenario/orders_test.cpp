// What the drive and the IO card are told, whole and in order, by each task and each function of the host: every
// parameter has a value of its own, so that none can stand in for another.
#include <cmath>

#include "common/drive_order.h"
#include "scenario/system.h"

namespace orsanta {

constexpr char Store[] = "音圈电机3参数";
constexpr double Counts_Per_Mm = 2000.0;

class Orders : public System {
 protected:
  Orders() {
    simulator::Reset({.counts_per_mm = Counts_Per_Mm});
    for (int bit = 0; bit < 8; ++bit) simulator::Set_Input(bit, 1);
    // A force is F = 50 I by the polynomial, F = 40 I by the surface.
    std::ofstream store(Store);
    store << "orsanta store 1\nC_VoiceMotor test_distance 0 = float 8.5\n";
    std::istringstream values(
        "Val_Force_OffSet 7 Val_Force_Set[0] 150 Val_Force_Set[1] 90 Val_Speed_Set[0] 11 Val_Speed_Set[1] 12 "
        "Val_UpSpeed_Set 14 Val_BeginePoint_offset 0.5 Val_Force_K 50 Val_Force_KK 0 Val_BaseDistance 4 "
        "Val_Block_Size 5 Val_Error_offset 0.25 Val_SensorScale 2000");
    for (std::string key, value; values >> key >> value;)
      store << "C_VoiceMotor " << key << " 0 = double " << value << "\n";
    store << "C_VoiceMotor m_P 0 = array CMyArray<double> 6\n";
    for (int i = 0; i < 6; ++i) store << "C_VoiceMotor/CMyArray m_P " << i << " = double " << (i == 1 ? 40 : 0) << "\n";
    store << "end\n" << std::flush;
    simulator::Place_Part(3, 2.0);
  }
  // What goes out while the action runs and until the system is at rest again.
  template <class Action>
  static std::string Sent(Action action) {
    simulator::Journal_Clear();
    action();
    Sleep(6000);
    std::string orders;
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      const std::string order = Drive_Order(call, 3, Counts_Per_Mm);
      if (!order.empty()) orders += order + " ";
    }
    return orders;
  }
};

// A landing: with the height of the last one known it goes there first, and on from there.
static std::string Land(const std::string& speed, const std::string& current, const std::string& height,
                        const std::string& target = "8.50") {
  const std::string limits = "speed " + speed + " . upper " + current + " . . ";
  return (height.empty() ? "" : limits + "go " + height + " . ") + limits + "go " + target + " . ";
}
static std::string Lift_At(const std::string& speed) {
  return "speed " + speed + " . . go 0.50 upper 40 lower -40 . ";
}

// The input of the station asks for the probe to go back, so that the loop lifts it after each task.
TEST_F(Orders, Each_Task_And_Function_Sends_Exactly_This) {
  const std::string lift = Lift_At("14") + "io3 1 ";
  EXPECT_EQ(Sent([this] { Start({3}, 1); }), ". . acc 5000 . . io1 1 " + lift);
  const auto task = [](int code) { return [code] { EXPECT_EQ(do_test(1, code), 1); }; };
  const auto swap_parts = [] {  // the second landing of the two finds a thicker part
    double thickness = 0.0, force = 0.0;
    EXPECT_EQ(do_test(1, ORSANTA_TASK_FORCE_DIFFERENCE), 1);
    EXPECT_TRUE(Wait_For([&] { return get_ans(1, &thickness, &force) == 0 && std::abs(thickness - 2.0) < 0.001; }));
    simulator::Place_Part(3, 3.0);
  };
  const auto bounce = [] {
    for (const int level : {0, 1, 0, 1, 0}) {
      simulator::Set_Input(3, level);
      Sleep(5);
    }
  };
  double thickness = -1.0, force = -1.0;
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);  // both are written all the same
  EXPECT_EQ(thickness, 0.0);
  EXPECT_EQ(force, 150.0);
  const std::tuple<std::function<void()>, std::string, double> cases[] = {
      {task(1), "io3 0 " + Land("11", "3", "") + lift, 2.25},  // no height is known: by the polynomial
      {task(1), "io3 0 " + Land("11", "3.75", "7.00") + lift, 2.25},
      {task(4), "io3 0 " + Land("3", "3.75", "7.00") + lift, 2.25},
      {swap_parts, "io3 0 " + Land("11", "3", "7.00") + Land("11", "1.8", "7.00") + lift, -1.0},
      {task(2), lift, -1.0},
      {task(7), "", -1.0},
      // The part of 3 mm stands for the block of 5 mm from here on.
      {[] { Check_User_Zero(1); }, Land("11", "3", "6.00") + Lift_At("11"), -1.0},
      {[] { Set_Force(1, 200.0), Set_Force2(1, 100.0), do_test(1, 1); }, "io3 0 " + Land("11", "5", "6.00") + lift,
       5.25},
      {[] { do_test(1, 3); }, "io3 0 " + Land("11", "4", "6.00") + Land("11", "2", "6.00") + lift, 0.0},
      {[] { set_test_distance(1, 7.75), Set_Ans_Offset(1, 6.0), do_test(1, 1); },
       "io3 0 " + Land("11", "5", "6.00", "7.75") + lift, 6.25},
      // The loop measures, with the correction of the automatic cycle, and once, however the input bounces.
      {bounce, "io3 0 " + Land("11", "5.175", "6.00", "7.75"), 6.25},
      {[] { simulator::Set_Input(3, 1); }, lift, 6.25},
      {[] { EXPECT_EQ(SetIO(5, 1), 1); }, "io5 1 ", 6.25},
      {[] { EXPECT_EQ(GoZero(1), 1); }, "3:85 ", 6.25}};
  for (const auto& [action, sent, expected] : cases) {
    EXPECT_EQ(Sent(action), sent);
    const bool measured = sent.find("io3 0") == 0;
    EXPECT_EQ(get_ans(1, &thickness, &force), measured ? 1 : 0);
    EXPECT_EQ(get_ans(1, &thickness, &force), 0);
    EXPECT_EQ(Get_Force_Back_Finish(1), sent.find(lift) == std::string::npos && measured ? 0 : 1);
    EXPECT_NEAR(thickness, expected, 0.001) << sent;
  }
  EXPECT_EQ(force, 200.0) << "the set one, without the correction of the automatic cycle";
  EXPECT_EQ(Sent([this] { Stop(); }), "io0 0 io1 0 io2 0 io3 0 io4 0 io5 0 io6 0 io7 0 ");
}

// The process dies without a stop: what counts is what stands in the store by then.
TEST_F(Orders, A_System_That_Died_Comes_Back_As_It_Was) {
  Start({3});
  simulator::Place_Part(3, 4.0);  // stands for the block of 5 mm
  Set_Ans_Offset(1, Block_Mm);
  Check_User_Zero(1);
  Save_Parameter2file(1);
  Set_Force(1, 120.0);
  EXPECT_NE(File_Text(Store).find("Val_Force_Set[0] 0 = double 120\n"), std::string::npos);
  Set_Force2(1, 80.0);
  std::filesystem::copy_file(Store, "as it was");
  Set_Force(1, 33.0);
  Stop();
  std::filesystem::rename("as it was", Store);

  simulator::Place_Part(3, 2.0);
  Start({3});
  double force = 0.0, offset = 0.0;
  Get_Force(1, &force);
  EXPECT_EQ(force, 120.0);
  Get_Ans_Offset(1, &offset);
  EXPECT_EQ(offset, Block_Mm);
  EXPECT_EQ(Sent([] { do_test(1, ORSANTA_TASK_MEASURE); }), Land("11", "2.4", ""));
  EXPECT_NEAR(Next_Result(1), 3.25, 0.001);
  EXPECT_EQ(Get_Force_Back_Finish(1), 0);
  EXPECT_EQ(Sent([] { do_test(1, ORSANTA_TASK_FORCE_DIFFERENCE); }),
            Land("11", "2.4", "7.00") + Land("11", "1.6", "7.00"));
}

}  // namespace orsanta
