// The drives: motion under the clamps, landing, homing, samples, faults; and the journal. The run flag is held by the
// waits of those who use it.
#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

#include "drive/motor.h"
#include "simulator_line.h"

namespace simulator_test {
namespace {

using orsanta::C_Kestrune_Motor_test;

class Drive : public Room {
 protected:
  Drive() { EXPECT_EQ(m_Drive.Map_Once(), 1); }
  // Presses on what lies there, with that current.
  void Land(double ampere) {
    m_Drive.Set_Current_Pos(ampere);
    m_Drive.Go_Pos(20.0);
  }
  // The mean of the position samples of the next tenth of a second, mm.
  double Mean_Position() {
    Sleep(10);  // what was sampled before has come in
    m_Drive.m_PosWindow.Clear_Window();
    Sleep(100);
    orsanta::CMyArray<double> samples;
    m_Drive.Get_Pos_Window(samples);
    return std::accumulate(samples.begin(), samples.end(), 0.0) / samples.GetSize();
  }
  C_Kestrune_Motor_test m_Drive{1, 1, 0};
};

TEST_F(Drive, Lands_With_The_Force_Of_The_Clamp) {
  const simulator::Force_Truth truth;
  const auto& p = truth.p;
  for (const double ampere : {0.5, 4.0, 20.0}) {
    for (const double part : {0.0, 6.0}) {
      SCOPED_TRACE(testing::Message() << ampere << " A on " << part << " mm");
      simulator::Place_Part(1, part);
      Land(ampere);
      Sleep(100);
      const double contact = 9.0 - part;
      EXPECT_NEAR(simulator::True_Position(1), contact, 0.0012);
      EXPECT_NEAR(simulator::True_Force(1),
                  p[0] + ampere * p[1] + contact * (p[2] + ampere * p[3] + ampere * contact * p[4]), 0.3);
      EXPECT_NEAR(simulator::Force_Gauge(1), simulator::True_Force(1), 0.0051);
      EXPECT_NEAR(Mean_Position(), simulator::True_Position(1), 0.0002);
      EXPECT_NEAR(Take(29).back(), ampere, 0.01);
      m_Drive.Go_Pos(0.0);
      EXPECT_EQ(simulator::True_Force(1), 0.0);
      m_Drive.Set_Current_Pos(40.0);
    }
  }
}

// A command on the way - further, short of the braking way, back, at a lower speed - starts from the present speed.
TEST_F(Drive, Goes_Over_To_A_New_Command_Within_The_Acceleration) {
  m_Drive.Set_Acc(1000.0);
  for (const auto& [target, speed] : {std::pair(8.5, 80.0), {2.0, 80.0}, {0.0, 80.0}, {8.5, 20.0}}) {
    SCOPED_TRACE(testing::Message() << target << " mm at " << speed << " mm/s");
    m_Drive.Set_Speed(80.0);
    m_Drive.Go_Pos(0.0);
    m_Drive.Send_Pos(8.0);
    double most = 0.0, before = 0.0, last = 0.0;  // mm/s^2; mm
    for (int ms = 0; ms < 1000; ++ms) {
      if (ms == 60) m_Drive.Set_Speed(speed);
      if (ms == 60) m_Drive.Send_Pos(target);
      Sleep(1);
      const double now = simulator::True_Position(1);
      most = std::max(most, std::abs(now - 2 * last + before) * 1e6);
      before = std::exchange(last, now);
    }
    EXPECT_NEAR(most, 1000.0, 200.0);
    EXPECT_NEAR(last, target, 0.001);
  }
}

TEST_F(Room, Homing_Measures_The_Stroke_Keeps_Commands_For_Later_And_Tells_When_It_Cannot) {
  for (const bool cyclic : {false, true}) {
    Connect({.cyclic_stroke = cyclic});
    C_Kestrune_Motor_test drive(1, 1, 0);
    drive.Map_Once();
    simulator::Place_Part(1, 4.0);
    drive.Set_Speed(50.0);
    OUTPUT_DATA(1, 21, 0.0);
    Sleep(100);
    const double start = Now_Ms();
    drive.Send_Pos(3.0);
    drive.Set_Speed(80.0);
    while (drive.Check_Ready() == 0) Sleep(1);
    EXPECT_NEAR(Now_Ms() - start, 500.0, 30.0) << "the homing kept its own 20 mm/s";
    EXPECT_NEAR(simulator::True_Position(1), 0.0, 0.1);
    const double homed = Now_Ms();
    drive.TillStop();
    EXPECT_NEAR(Now_Ms() - homed, 3.0 / 80.0 * 1000.0 + 16.0, 10.0) << "the speed last commanded";
    EXPECT_NEAR(simulator::True_Position(1), 3.0, 0.001);
    const std::vector<double> lower = Take(22);
    EXPECT_EQ(lower.size(), cyclic ? 256u : 1u) << "of the time before the homing";
    EXPECT_NEAR(lower.front() / Raw_Per_Mm, cyclic ? 0.0 : -0.45, 0.01);
    Sleep(100);
    EXPECT_EQ(Take(22).size(), cyclic ? 50u : 0u);
    EXPECT_NEAR(Take(23).back() / Raw_Per_Mm, 4.95, 0.01);

    for (const bool stuck : {true, false}) {
      simulator::Set_Stuck(1, stuck);
      OUTPUT_DATA(1, 21, 0.0);
      drive.TillStop();
      Take(21);
      Sleep(3);
      EXPECT_EQ(drive.Check_Ready(), stuck ? 0 : 1);
      EXPECT_EQ(Take(21).back(), stuck ? 2.0 : 0.0);
    }
  }
}

TEST_F(Drive, Faults_Come_And_Go) {
  m_Drive.Go_Pos(5.0);
  simulator::Set_Frozen(1, true);
  m_Drive.Go_Pos(4.0);
  EXPECT_NEAR(Mean_Position(), 5.0, 0.001);
  simulator::Set_Frozen(1, false);
  EXPECT_NEAR(Mean_Position(), 4.0, 0.001);

  simulator::Place_Part(1, 2.0);
  Land(1.0);
  simulator::Set_Weak_Lift(1, true);
  m_Drive.Go_Pos(0.0);
  EXPECT_GT(simulator::True_Position(1), 6.9);
  simulator::Set_Weak_Lift(1, false);
  Sleep(500);
  EXPECT_NEAR(simulator::True_Position(1), 0.0, 0.001);

  // A part that is pushed under a lowered probe lifts it, and the head's height moves the anvil.
  Land(1.0);
  simulator::Place_Part(1, 4.0);
  EXPECT_LE(simulator::True_Position(1), 5.001);
  simulator::Set_Head_Height(1, -1.5);
  simulator::Set_Head_Height(1, std::nan(""));
  simulator::Place_Part(1, HUGE_VAL);
  EXPECT_EQ(simulator::True_Contact_Position(1), 3.5);
}

}  // namespace
}  // namespace simulator_test
