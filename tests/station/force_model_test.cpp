#include <cmath>

#include "station_room.h"

namespace orsanta {

using testing::ElementsAre;

using Force_Model = C_Station_Test;

TEST_F(Force_Model, Polynomial_Takes_The_Root_That_Grows_And_Knows_Its_Limits) {
  EXPECT_NEAR(station->Force_To_Current(200.0), 14.14163563256984, 1e-13);  // the defaults
  station->Val_Static_GForce = 10.0;
  EXPECT_TRUE(std::isnan(station->Force_To_Current(5.0)));  // never reached
  station->Val_Force_K = 50.0;
  station->Val_Force_KK = 1e-9;
  EXPECT_EQ(station->Force_To_Current(110.0), 2.0);  // linear, the limit included
  station->Val_Force_KK = station->Val_Force_K = 0.0;
  EXPECT_EQ(station->Force_To_Current(110.0), HUGE_VAL);

  double currents[] = {0.0, 1.0, 2.0};
  double forces[] = {5.0, 12.0, 23.0};  // 2 I^2 + 5 I + 5
  EXPECT_EQ(station->Fit_Force_Model(currents, forces, 2), 0);
  station->m_CalPos.Add(3.25);
  EXPECT_EQ(station->Fit_Force_Model(currents, forces, 3), 1);
  EXPECT_NEAR(station->Current_To_Force(10.0), 255.0, 1e-10);
  EXPECT_NEAR(station->Force_To_Current(255.0), 10.0, 1e-10);
  EXPECT_EQ(station->Val_mark_pos, 3.25);
}

TEST_F(Force_Model, Surface_Takes_Over_Once_A_Landing_Is_Known) {
  Use_Linear_Model();
  station->Last_Land_Pos = 4.0;
  EXPECT_EQ(station->Landing_Current(96.0), 1.0);  // no surface yet
  Give_Surface();
  EXPECT_NEAR(station->Surface_Force(2.0, 4.0), 16.0, 1e-10);
  EXPECT_NEAR(station->Landing_Current(16.0), 2.0, 1e-12);
  EXPECT_NEAR(station->Surface_Currents(Array({5.0, 16.0}), Array({0.0, 4.0}))[1], 2.0, 1e-12);
  simulator::Journal_Clear();
  station->Set_Landing_Current(16.0, 4.0);
  EXPECT_NEAR(Written(2).at(0), 2.0, 1e-12);
  station->m_pMotor->m_Be_Invert = 1;
  station->Last_Land_Pos = -4.0;
  EXPECT_NEAR(station->Landing_Current(16.0), 2.0, 1e-12);
  station->Last_Land_Pos = 0.0;
  EXPECT_EQ(station->Landing_Current(96.0), 1.0);
}

TEST_F(Force_Model, Spring_Is_Zero_At_The_Mark_And_Turns_With_The_Drive) {
  Use_Linear_Model();
  station->Val_mark_pos = 2.0;
  station->Val_Spring_K = 3.0;
  EXPECT_THAT(Values(station->Net_Forces(Array({1.0, 2.0}), Array({2.0, 3.0, 9.0}))), ElementsAre(96.0, 193.0));
  simulator::Journal_Clear();
  station->Set_Landing_Current(50.0, 2.1);
  EXPECT_NEAR(Written(2).at(0), (50.3 + 4.0) / 100.0, 1e-6);
  station->m_pMotor->m_Be_Invert = 1;
  EXPECT_EQ(station->Spring_Force(-5.0), -9.0);
}

TEST_F(Force_Model, Sample_Correction_Forgets_The_Oldest_And_The_Key_Window_Goes_Round) {
  station->Add_Sample(1010.0, 1000.0);
  EXPECT_NEAR(station->Sample_Value(1000.0), 1002.5, 1e-6);
  for (int i = 0; i < 20; ++i) station->Add_Sample(2.0 * i + 1.0, i);
  EXPECT_EQ(station->m_SampleX.GetSize(), 11);
  EXPECT_EQ(station->m_SampleX[0], 9.0);
  EXPECT_NEAR(station->Sample_Value(100.0), 201.0, 1e-9);

  double start_margin = 0.0, key_dis = 0.0;
  for (int i = 0; i < 3; ++i) station->Val_Pos_Set[i] = 5.0 - i;
  EXPECT_EQ(station->Set_Key_Window(99.0, 99.0), 1);  // takes back what is there, whatever it is given
  EXPECT_EQ(station->Get_Key_Window(start_margin, key_dis), 1);
  EXPECT_THAT((std::vector{start_margin, key_dis, station->Val_Pos_Set[0].Get()}), ElementsAre(2.0, 8.0, 5.0));
  EXPECT_THAT(Values(station->Friction_Forces(Array({2.0, -90.0}), {Array({2.0}), Array({6.0}), 1.0})),
              ElementsAre(3.0, 0.0));
}

}  // namespace orsanta
