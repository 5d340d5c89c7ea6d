// The road of one test, from do_test to get_ans, and what the task codes do on the way.
#include "scenario/system.h"

namespace orsanta {
namespace {

using Road = System;

TEST_F(Road, OneTaskGivesOneResult) {
  Start({1});
  double thickness = -1.0, force = -1.0;
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);  // both outputs are written all the same
  EXPECT_EQ(thickness, 0.0);
  EXPECT_EQ(force, 200.0);
  Correct_Reference(1);
  bench::Place_Part(1, 3.25);
  EXPECT_EQ(do_test(1, ORSANTA_TASK_MEASURE), 1);
  Sleep(50);
  EXPECT_EQ(Get_Force_Back_Finish(1), 0);
  const double first = Next_Result(1);
  EXPECT_NEAR(first, 3.25, 0.001);
  EXPECT_EQ(get_ans(1, &thickness, &force), 0);
  EXPECT_EQ(thickness, first);
  EXPECT_EQ(force, 100.0);
  EXPECT_GT(bench::True_Force(1), 10.0);  // the probe stays on the part, under force
  EXPECT_TRUE(Lift(1));
  EXPECT_EQ(bench::True_Force(1), 0.0);

  EXPECT_NEAR(Measure(1, 3.0, ORSANTA_TASK_MEASURE_SLOW), 3.0, 0.001);
  // Two landings on one part: the difference is what the higher force adds, a fraction of a micrometre.
  Set_Force2(1, 150.0);
  EXPECT_NEAR(Measure(1, 3.0, ORSANTA_TASK_FORCE_DIFFERENCE), 0.0, 0.002);
  bench::Journal_Clear();
  EXPECT_EQ(do_test(1, 7), 1);  // a code that nobody knows is taken and does nothing
  Sleep(1000);
  EXPECT_EQ(bench::Journal_Text(), "");
  EXPECT_TRUE(No_Result(1));
  EXPECT_EQ(Get_Force_Back_Finish(1), 1);
  EXPECT_TRUE(front->Boxes().empty());
}

TEST_F(Road, ParametersReachTheMeasurementAndTheStore) {
  Start({1});
  Correct_Reference(1, 120.0);
  EXPECT_NEAR(Measure(1, 2.0), 2.0, 0.001);
  Set_Ans_Offset(1, 7.0);  // a block that is said to be 2 mm larger than it is
  EXPECT_NEAR(Measure(1, 2.0), 4.0, 0.001);
  set_test_distance(1, 3.0);  // too short to reach the part
  EXPECT_NEAR(Measure(1, 2.0), 9.0 - 3.0 + 2.0, 0.002);
  Stop();

  Start({1});  // the force was saved at once, the rest when the station went
  double force = 0.0, offset = 0.0;
  Get_Force(1, &force);
  EXPECT_EQ(force, 120.0);
  Get_Ans_Offset(1, &offset);
  EXPECT_EQ(offset, 7.0);
}

}  // namespace
}  // namespace orsanta
