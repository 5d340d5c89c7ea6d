// Axes of the motion server: trajectories within their limits, stops, pause and registers. What the drives' own tests
// hold already (homing on a sensor, the temperature board) is not told again.
#include <cmath>
#include <random>
#include <sstream>

#include "simulator/trajectory.h"
#include "simulator_line.h"

namespace simulator_test {
namespace {

using simulator::C_Trajectory;
using simulator::Motion_Limits;
using simulator::Motion_State;

// Walks the whole trajectory: nothing jumps, and no limit is passed by more than a rounding.
void Expect_Within(const C_Trajectory& trajectory, const Motion_State& start, const Motion_Limits& limits) {
  constexpr double Slack = 1.0 + 1e-6;
  const double dt = trajectory.Duration() / 2000.0;
  Motion_State before = start;
  for (int i = 1; i <= 2000; ++i) {
    const Motion_State now = trajectory.At(i * dt);
    ASSERT_LE(std::abs(now.velocity), limits.velocity * Slack);
    ASSERT_LE(std::abs(now.acceleration), limits.acceleration * Slack);
    ASSERT_LE(std::abs(now.acceleration - before.acceleration), limits.jerk * dt * Slack + limits.acceleration * 1e-6);
    ASSERT_LE(std::abs(now.position - before.position), limits.velocity * dt * Slack + 1e-9);
    before = now;
  }
  EXPECT_NEAR(before.velocity, 0.0, limits.velocity * 1e-9);
  EXPECT_NEAR(before.position, trajectory.End(), 1e-9);
}

TEST(Trajectory, Keeps_All_Limits_In_Moves_Of_Every_Shape_And_In_Stops_From_Anywhere_And_Loses_No_Time) {
  std::mt19937_64 random(5);
  const auto between = [&](double low, double high) {  // evenly over the orders of magnitude
    return std::exp(std::uniform_real_distribution<double>(std::log(low), std::log(high))(random));
  };
  C_Trajectory move, stop;
  for (int i = 0; i < 300; ++i) {
    const Motion_Limits limits{between(0.1, 1000.0), between(10.0, 1e5), between(1e3, 1e7)};
    const double from = between(0.01, 10.0);
    const double to = from + between(1e-5, 100.0) * (i % 2 == 0 ? 1.0 : -1.0);
    move.Plan_Move(from, to, limits);
    EXPECT_EQ(move.End(), to);
    Expect_Within(move, {from, 0.0, 0.0}, limits);
    const double t = move.Duration() * std::uniform_real_distribution<double>(0.0, 1.0)(random);
    stop.Plan_Stop(move.At(t), limits);
    Expect_Within(stop, move.At(t), limits);
    EXPECT_LE(stop.Duration(), move.Duration() - t + 1e-6) << "a stop lasted longer than the move";
  }
  // 10 mm at 20 mm/s: 0.5 s, and once more the time of speeding up, v/a + a/j
  move.Plan_Move(0.0, 10.0, {20.0, 1000.0, 100000.0});
  EXPECT_NEAR(move.Duration(), 0.5 + 0.02 + 0.01, 1e-9);
  move.Plan_Move(1.0, 1.0, {});
  EXPECT_EQ(move.Duration() + move.End(), 1.0);
  // too short for the acceleration: four ramps of cbrt(way / 2 j)
  move.Plan_Move(0.0, 0.002, {20.0, 1000.0, 100000.0});
  EXPECT_NEAR(move.Duration(), 4.0 * std::cbrt(0.002 / 200000.0), 1e-9);
}

// An interpolation device at CAN id 20 as axis 2 on instruction thread 4, user units of millimetres.
class Axis : public Room {
 protected:
  Axis() {
    SET_AXIS_MAP(4, 20, 0, 2);
    SET_AXIS_SCALE(4, 2, Raw_Per_Mm);
    SET_MAX_VEL(4, 2, 20.0);
    SET_MAX_ACC(4, 2, 5000.0);
    SET_MAX_JERK(4, 2, 500000.0);
    for (const int port : {4, 12}) SET_OUTPUT_DATA_MAP(4, 20, port, 8, 100 + port);
    SET_OUTPUT_DATA_MAP(4, 20, 17, 5, 117);
  }
  // Appends where the axis is commanded to be and where its probe is after that time, in hundredths; "> " behind them
  // while it runs.
  void Tell(int ms = 0) {
    Sleep(ms);
    double positions[15];
    int count = 3, mapped = 0, run = 0;
    EXPECT_EQ(GetCurOutputPos(positions, &count) + BeAxisRun(2, &mapped, &run), 2);
    EXPECT_EQ(count + mapped, 4);
    m_Told << std::lround(positions[2] * 100.0) << '/' << std::lround(simulator::True_Position(20) * 100.0)
           << (run == 1 ? "> " : " ");
  }
  void Tell_At_Rest() {
    TILLSTOP(4, 2);
    WaitForAllInsFinish(4);
    Tell();
  }
  void Go_And_Tell(double position) {
    SGO(4, 2, position);
    Tell_At_Rest();
  }
  std::ostringstream m_Told;
};

TEST_F(Axis, Follows_Moves_Jumps_And_New_Targets_On_The_Way) {
  SGO(4, 2, 8.0);
  Tell();
  Tell_At_Rest();
  EXPECT_NEAR(Now_Ms(), 8.0 / 20.0 * 1000.0 + 4.0 + 10.0, 1.5);
  SGO(4, 2, 0.0);
  Sleep(100);
  SGO(4, 2, 8.0);  // brakes and turns
  Tell(1);
  Tell_At_Rest();
  RAPID_GO(4, 2, -3.0);
  for (const int ms : {0, 200}) Tell(ms);
  int res = 0;
  ExecuteDeviceIns(20, 0x55, &res);  // the device's own way to zero
  Tell_At_Rest();
  OUTPUT_DATA(4, 104, 1.0);
  OUTPUT_DATA(4, 112, -1.0);
  for (const double beyond : {15.0, -15.0}) Go_And_Tell(beyond);  // the end stops
  OUTPUT_DATA(4, 117, 0.0);                                       // without power it stays there
  Go_And_Tell(0.0);
  EXPECT_EQ(m_Told.str(), "0/0> 800/800 611/611> 800/800 -300/800 -300/-300 0/0 1500/1000 -1500/-1000 0/-999 ");
}

TEST_F(Axis, Stops_Pauses_Goes_On_And_Is_Stopped_From_Outside) {
  SGO(4, 2, 8.0);
  Sleep(100);
  STOP_S(4, 2);
  Tell_At_Rest();
  SGO(4, 2, 8.0);
  TILLSTOP(4, 2);
  Sleep(50);
  TILL_AXIS_PAUSE(5, 2);
  WaitForAllInsFinish(5);
  for (const int ms : {0, 500}) Tell(ms);
  int finished = 1;
  GetThreadInsBufferRemainCount(4, nullptr, &finished);
  EXPECT_EQ(finished, 0) << "a paused move is not over";
  AXIS_RESUME(5, 2);
  Tell_At_Rest();
  SGO(4, 2, 0.0);
  TILLTIME(4, 100000);
  Sleep(100);
  TILL_AXIS_PAUSE(0, 2);
  CLEAR_THREAD_INS(0, 4);
  TILL_THREAD_INS_FINISH(0, 4);
  STOP_S(0, 2);
  AXIS_RESUME(0, 2);
  Tell(1000);
  Go_And_Tell(1.0);
  EXPECT_EQ(m_Told.str(), "200/200 300/300 300/300 800/800 600/600 100/100 ");
}

}  // namespace
}  // namespace simulator_test
