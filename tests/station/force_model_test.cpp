#include "station/force_model.h"

#include <gmock/gmock.h>

#include <cmath>

#include "common/arrays.h"

namespace orsanta {

using testing::ElementsAre;

class Force_Model : public testing::Test, public C_Force_Model {
 protected:
  bool inverted = false;

 private:
  bool Is_Inverted() const override { return inverted; }
};

TEST_F(Force_Model, Polynomial_Takes_The_Root_That_Grows_And_Knows_Its_Limits) {
  EXPECT_NEAR(Force_To_Current(200.0), 14.14163563256984, 1e-13);  // the defaults
  Val_Static_GForce = 10.0;
  EXPECT_TRUE(std::isnan(Force_To_Current(5.0)));  // never reached
  Val_Force_K = 50.0;
  Val_Force_KK = 1e-9;
  EXPECT_EQ(Force_To_Current(110.0), 2.0);  // linear, the limit included
  Val_Force_KK = Val_Force_K = 0.0;
  EXPECT_EQ(Force_To_Current(110.0), HUGE_VAL);

  double currents[] = {0.0, 1.0, 2.0};
  double forces[] = {5.0, 12.0, 23.0};  // 2 I^2 + 5 I + 5
  EXPECT_EQ(Fit_Force_Model(currents, forces, 2), 0);
  EXPECT_EQ(Fit_Force_Model(currents, forces, 3), 1);
  EXPECT_NEAR(Current_To_Force(10.0), 255.0, 1e-10);
  EXPECT_NEAR(Force_To_Current(255.0), 10.0, 1e-10);
}

TEST_F(Force_Model, Surface_Takes_Over_Once_A_Landing_Is_Known_And_The_Spring_Is_Zero_At_The_Mark) {
  Val_Force_KK = 0.0;
  Val_Force_K = 100.0;
  Val_Static_GForce = -4.0;
  Val_mark_pos = 2.0;
  Val_Spring_K = 3.0;
  EXPECT_THAT(Values(Net_Forces(Array({1.0, 2.0}), Array({2.0, 3.0, 9.0}))), ElementsAre(96.0, 193.0));
  EXPECT_NEAR(Current_At(50.0, 2.1), (50.3 + 4.0) / 100.0, 1e-6);
  Last_Land_Pos = 4.0;
  EXPECT_EQ(Landing_Current(96.0), 1.0);  // no surface yet
  // F = 2 + 3 I + 0.5 P + 0.25 I P + 0.125 I P^2
  Surface_Fit(Array({1, 2, 1, 2, 1, 2}), Array({0, 0, 2, 2, 4, 4}), Array({5, 8, 7, 11, 10, 16}));
  EXPECT_NEAR(Surface_Currents(Array({5.0, 16.0}), Array({0.0, 4.0}))[1], 2.0, 1e-12);
  EXPECT_NEAR(Landing_Current(16.0), 2.0, 1e-12);
  EXPECT_NEAR(Current_At(11.0, 2.0), 2.0, 1e-12);
  inverted = true;
  EXPECT_EQ(Spring_Force(-5.0), -9.0);
  Last_Land_Pos = -4.0;
  EXPECT_NEAR(Landing_Current(16.0), 2.0, 1e-12);
}

TEST_F(Force_Model, Sample_Correction_Forgets_The_Oldest_And_The_Key_Window_Goes_Round) {
  Add_Sample(1010.0, 1000.0);
  EXPECT_NEAR(Sample_Value(1000.0), 1002.5, 1e-6);
  for (int i = 0; i < 20; ++i) Add_Sample(2.0 * i + 1.0, i);
  EXPECT_EQ(m_SampleX.GetSize(), 11);
  EXPECT_EQ(m_SampleX[0], 9.0);
  EXPECT_NEAR(Sample_Value(100.0), 201.0, 1e-9);

  double start_margin = 0.0, key_dis = 0.0;
  for (int i = 0; i < 3; ++i) Val_Pos_Set[i] = 5.0 - i;
  EXPECT_EQ(Set_Key_Window(99.0, 99.0), 1);  // takes back what is there, whatever it is given
  EXPECT_EQ(Get_Key_Window(start_margin, key_dis), 1);
  EXPECT_THAT((std::vector{start_margin, key_dis, Val_Pos_Set[0].Get()}), ElementsAre(2.0, 8.0, 5.0));
  EXPECT_THAT(Values(Friction_Forces(Array({2.0, -90.0}), {Array({2.0}), Array({6.0}), 1.0})), ElementsAre(3.0, 0.0));
}

}  // namespace orsanta
