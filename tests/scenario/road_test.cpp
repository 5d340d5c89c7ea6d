// The road of one test, from do_test to get_ans, and what the four task codes do on the way.
#include <cmath>

#include "scenario/system.h"

namespace orsanta {
namespace {

class Road : public System {};

TEST_F(Road, OneTaskGivesOneResult) {
  Start(2);
  double thickness = -1.0, force = -1.0;
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);  // both outputs are written all the same
  EXPECT_EQ(thickness, 0.0);
  EXPECT_EQ(force, 200.0);
  Correct_Reference(1);
  Correct_Reference(2, 150.0);

  bench::Place_Part(1, 3.25);
  bench::Place_Part(2, 4.5);
  EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  EXPECT_EQ(do_test(2, ORSANTA_TASK_MEASURE), 1);
  Sleep(50);
  EXPECT_EQ(Get_Force_Back_Finish(1), 0);
  const double first = Next_Result(1);
  EXPECT_NEAR(first, 3.25, 0.001);
  EXPECT_NEAR(Next_Result(2), 4.5, 0.001);
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);
  EXPECT_EQ(thickness, first);
  EXPECT_EQ(force, 100.0);
  EXPECT_GT(bench::True_Force(1), 10.0);  // the probe stays on the part, under force
  EXPECT_TRUE(Lift(1));
  EXPECT_EQ(bench::True_Force(1), 0.0);
  EXPECT_TRUE(front->Boxes().empty());
}

TEST_F(Road, ParametersReachTheMeasurementAndTheStore) {
  Start(1);
  Set_Force(1, 120.0);
  Set_Force2(1, 80.0);
  double value = 0.0;
  Get_Force(1, &value);
  EXPECT_EQ(value, 120.0);
  Correct_Reference(1, 120.0);
  EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);
  Set_Ans_Offset(1, 7.0);  // a block that is said to be 2 mm larger than it is
  Get_Ans_Offset(1, &value);
  EXPECT_EQ(value, 7.0);
  EXPECT_NEAR(Measure(1, 2.0), 4.0, 0.001);
  set_test_distance(1, 3.0);  // too short to reach the part
  EXPECT_NEAR(Measure(1, 2.0), 9.0 - 3.0 + 2.0, 0.002);
  Stop();

  Start(1);  // the forces were saved at once, the rest when the station went
  Get_Force(1, &value);
  EXPECT_EQ(value, 120.0);
  Get_Ans_Offset(1, &value);
  EXPECT_EQ(value, 7.0);
}

TEST_F(Road, TheOtherTaskCodes) {
  Start(1);
  Correct_Reference(1);
  EXPECT_NEAR(Measure(1, 3.0, ORSANTA_TASK_MEASURE_SLOW), 3.0, 0.001);
  Set_Force2(1, 150.0);
  // Two landings on one part: the difference is what the higher force adds, a fraction of a micrometre.
  EXPECT_NEAR(Measure(1, 3.0, ORSANTA_TASK_FORCE_DIFFERENCE), 0.0, 0.002);

  bench::Journal_Clear();
  EXPECT_EQ(do_test(1, 7), 1);  // a code that nobody knows is taken and does nothing
  Sleep(1000);
  EXPECT_EQ(bench::Journal_Text(), "");
  double thickness = 0.0, force = 0.0;
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);
  EXPECT_EQ(Get_Force_Back_Finish(1), 1);
}

}  // namespace
}  // namespace orsanta
