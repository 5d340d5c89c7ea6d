// The drives: motion under the clamps, landing, run flag, homing, faults; and the journal.
#include <algorithm>

#include "bench_line.h"

namespace {

using bench_test::C_Test_Drive;
using bench_test::Connect;
using bench_test::Raw_Per_Mm;
using bench_test::Take;
using orsanta::Now_Ms;
using orsanta::Sleep;

double True_Settled_Force(double ampere, double mm) {
  const bench::Force_Truth truth;
  return truth.p[0] + ampere * truth.p[1] + truth.p[2] * mm + truth.p[3] * ampere * mm + truth.p[4] * ampere * mm * mm;
}

TEST(Landing, Ends_On_The_Part_With_The_Force_Of_The_Clamp) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(3);
  for (const double ampere : {0.5, 1.0, 4.0, 14.1, 20.0}) {
    for (const double part : {0.0, 1.0, 6.0}) {
      SCOPED_TRACE(testing::Message() << ampere << " A on " << part << " mm");
      bench::Place_Part(3, part);
      drive.Land(ampere);
      Sleep(100);
      const double contact = 9.0 - part;
      EXPECT_NEAR(bench::True_Position(3), contact, 0.0012);
      EXPECT_NEAR(bench::True_Force(3), True_Settled_Force(ampere, contact), 0.3);
      EXPECT_NEAR(bench::Force_Gauge(3), bench::True_Force(3), 0.0051);
      EXPECT_NEAR(drive.Mean_Position(50), bench::True_Position(3), 0.0002);
      EXPECT_NEAR(Take(drive.Channel(9)).back(), ampere, 0.01);
      drive.Go_And_Wait(0.0);
      EXPECT_EQ(bench::True_Force(3), 0.0);
      drive.Clamp(40.0);
    }
  }
}

TEST(Landing, Comes_At_The_Commanded_Speed_Bounces_And_Rings_Out) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  bench::Place_Part(1, 3.0);
  drive.Clamp(0.6);
  drive.Till_Idle();
  drive.Go(10.0);
  double before = bench::True_Position(1), fastest = 0.0, last_motion = 0.0, highest_bounce = 0.0, touched = 0.0;
  while (touched == 0.0 || Now_Ms() < touched + 200.0) {
    Sleep(1);
    const double now = bench::True_Position(1);
    fastest = std::max(fastest, (now - before) * 1000.0);
    if (now > 6.0 && touched == 0.0) touched = Now_Ms();
    if (touched != 0.0) highest_bounce = std::max(highest_bounce, 6.0 - now);
    if (std::abs(now - before) > 1e-6) last_motion = Now_Ms();
    before = now;
  }
  EXPECT_NEAR(fastest, 20.0, 0.5);
  EXPECT_NEAR(highest_bounce, 0.0133, 0.0005);
  EXPECT_NEAR(last_motion - touched, 35.0, 2.0);
}

TEST(Motion, Keeps_Speed_And_Acceleration_And_Is_Slower_Under_A_Low_Clamp) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  const auto time_of_8_mm = [&](double speed, double acceleration, double ampere) {
    drive.Go_And_Wait(0.0);
    drive.Speed(speed);
    drive.Send(8, acceleration);
    drive.Clamp(ampere);
    drive.Till_Idle();
    drive.Go(8.0);
    const double time = drive.Till_Idle();
    EXPECT_NEAR(bench::True_Position(1), 8.0, 0.002);
    return time;
  };
  EXPECT_NEAR(time_of_8_mm(20.0, 5000.0, 40.0), 8.0 / 20.0 * 1000.0 + 4.0, 15.0);
  // Without reaching the speed: half the way up, half down, 2 sqrt(8 / 400) s.
  EXPECT_NEAR(time_of_8_mm(1000.0, 400.0, 40.0), 2000.0 * std::sqrt(8.0 / 400.0), 20.0);
  const double strong = time_of_8_mm(1000.0, 100000.0, 40.0);
  EXPECT_GT(time_of_8_mm(1000.0, 100000.0, 0.3), strong + 5.0);
}

// A command on the way - further, short of the braking way, back, at a lower speed - starts from the present speed.
TEST(Motion, Goes_Over_To_A_New_Command_Within_The_Acceleration) {
  const double commands[][2] = {{8.5, 80.0}, {8.0, 80.0}, {2.0, 80.0}, {0.0, 80.0}, {8.5, 20.0}};
  for (const auto& [target, speed] : commands) {
    SCOPED_TRACE(testing::Message() << target << " mm at " << speed << " mm/s");
    orsanta::C_Simulated_Clock clock(1);
    Connect();
    const C_Test_Drive drive(1);
    drive.Speed(80.0);
    drive.Send(8, 1000.0);
    drive.Go(8.0);
    double way[4] = {};  // at the last four milliseconds
    double most = 0.0;
    for (int ms = 0; ms < 1000; ++ms) {
      if (ms == 60) {
        EXPECT_NEAR(bench::True_Position(1), 1.8, 0.1);
        drive.Speed(speed);
        drive.Go(target);
      }
      Sleep(1);
      std::rotate(way, way + 1, way + 4);
      way[3] = bench::True_Position(1);
      most = std::max(most, std::abs(way[3] - 2 * way[2] + way[1]) * 1e6);  // mm/s^2
    }
    EXPECT_NEAR(most, 1000.0, 150.0);
    EXPECT_NEAR(bench::True_Position(1), target, 0.001);
  }
}

TEST(Run_Flag, Is_On_From_The_Command_Until_The_Probe_Stands) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(2);
  Sleep(50);
  EXPECT_EQ(drive.Run_Flag(), 0);
  drive.Go(0.0);
  EXPECT_EQ(Take(drive.Channel(6)).size(), 0u) << "it stands there already";
  drive.Clamp(3.0);
  EXPECT_EQ(Take(drive.Channel(6)).back(), 1.0) << "at once, with a sample of its own";
  EXPECT_NEAR(drive.Till_Idle(), 10.0, 3.0);
  drive.Go(5.0);
  EXPECT_EQ(Take(drive.Channel(6)).back(), 1.0);
  while (drive.Run_Flag() == 1) Sleep(1);
  const double here = bench::True_Position(2);
  Sleep(20);
  EXPECT_NEAR(bench::True_Position(2), here, 0.001);
  EXPECT_NEAR(here, 5.0, 0.001);
}

TEST(Samples, Come_Every_Two_Milliseconds_Staggered_And_With_The_Encoders_Noise) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1), other(2);
  std::vector<double> values(4096), others(4096);
  std::vector<uint64_t> stamps(4096), other_stamps(4096);
  int count = 0;
  Sleep(4000);
  GetInputChannelData(other.Position(), 4096, &count, others.data(), other_stamps.data());
  GetInputChannelData(drive.Position(), 4096, &count, values.data(), stamps.data());
  ASSERT_EQ(count, 2000);
  EXPECT_NE(stamps[0] % 100, other_stamps[0] % 100);
  EXPECT_NE(values, others);
  double sum = 0.0, squares = 0.0;
  for (size_t k = 0; k < 2000; ++k) {
    const double um = values[k] / Raw_Per_Mm * 1000.0;
    ASSERT_NEAR(um * 10.0, std::round(um * 10.0), 1e-3) << "not a step of the encoder";
    ASSERT_EQ(stamps[k] - stamps[0], k * 100);
    sum += um;
    squares += um * um;
  }
  EXPECT_NEAR(sum / 2000.0, bench::True_Position(1) * 1000.0, 0.03);
  EXPECT_NEAR(std::sqrt(squares / 2000.0), 0.3, 0.02);

  // Hours in which nobody calls: the FIFO holds the oldest samples without a gap, and the instants stay where they
  // were.
  const uint64_t instant = stamps[0] % 100;
  Sleep(5 * 3600 * 1000);
  GetInputChannelData(drive.Position(), 4096, &count, values.data(), stamps.data());
  ASSERT_EQ(count, 4096);
  EXPECT_EQ(stamps[4095] - stamps[0], 4095u * 100u);
  Sleep(2);
  GetInputChannelData(drive.Position(), 4096, &count, values.data(), stamps.data());
  ASSERT_EQ(count, 1);
  EXPECT_EQ(stamps[0] % 100, instant);
  EXPECT_EQ(stamps[0] / 50 / 1000, 5u * 3600u + 4u);
}

TEST(Homing, Measures_The_Stroke_Anew_And_Tells_When_It_Cannot) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  const auto home = [&] {
    drive.Send(1, 0.0);
    drive.Till_Idle();
    Sleep(3);
    return drive.Newest(drive.Ready());
  };
  for (const double part : {4.0, 0.0}) {
    bench::Place_Part(1, part);
    EXPECT_EQ(home(), 1);
    EXPECT_NEAR(Take(drive.Channel(2)).back() / Raw_Per_Mm, -0.45, 0.01);
    EXPECT_NEAR(Take(drive.Channel(3)).back() / Raw_Per_Mm, 8.95 - part, 0.01);
  }
  bench::Set_Stuck(1, true);
  EXPECT_EQ(home(), 0);
  EXPECT_EQ(drive.Newest(drive.Channel(1)), 2) << "cannot home";
  bench::Set_Stuck(1, false);
  EXPECT_EQ(home(), 1);
  EXPECT_EQ(drive.Newest(drive.Channel(1)), 0);
}

TEST(Homing, Keeps_Commands_For_Later_And_Sends_Its_Ends_Once_Or_All_The_Time) {
  for (const bool cyclic : {false, true}) {
    orsanta::C_Simulated_Clock clock(1);
    bench::Settings settings;
    settings.cyclic_stroke = cyclic;
    Connect(settings);
    const C_Test_Drive drive(1);
    drive.Speed(50.0);
    drive.Send(1, 0.0);
    Sleep(100);
    const double start = Now_Ms();
    drive.Go(3.0);
    drive.Speed(80.0);
    while (drive.Newest(drive.Ready()) == 0) Sleep(1);
    EXPECT_NEAR(Now_Ms() - start, 900.0, 30.0) << "the homing kept its own 20 mm/s";
    EXPECT_NEAR(bench::True_Position(1), 0.0, 0.1);
    EXPECT_NEAR(drive.Till_Idle(), 3.0 / 80.0 * 1000.0 + 16.0, 10.0) << "the speed last commanded";
    EXPECT_NEAR(bench::True_Position(1), 3.0, 0.001);
    EXPECT_EQ(Take(drive.Channel(2)).size(), cyclic ? 256u : 1u) << "of the time before the homing";
    Sleep(100);
    EXPECT_EQ(Take(drive.Channel(2)).size(), cyclic ? 50u : 0u);
  }
}

TEST(Faults, Of_The_Probe_And_Of_The_Bus_Come_And_Go) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  bench::Set_Absent(1, true);
  drive.Go(3.0);
  Sleep(1000);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001) << "a command reached a drive that is not there";
  bench::Set_Absent(1, false);

  bench::Set_Stuck(1, true);
  drive.Go_And_Wait(5.0);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001);
  bench::Set_Stuck(1, false);
  Sleep(500);
  EXPECT_NEAR(bench::True_Position(1), 5.0, 0.001);

  Take(drive.Position());
  Sleep(2);
  const double last = Take(drive.Position()).back();
  bench::Set_Frozen(1, true);
  drive.Go_And_Wait(4.0);
  const std::vector<double> frozen = Take(drive.Position());
  EXPECT_GT(frozen.size(), 20u);
  EXPECT_EQ(std::count(frozen.begin(), frozen.end(), last), static_cast<std::ptrdiff_t>(frozen.size()));
  bench::Set_Frozen(1, false);
  EXPECT_NEAR(drive.Mean_Position(50), 4.0, 0.001);

  bench::Place_Part(1, 2.0);
  drive.Land(1.0);
  bench::Set_Weak_Lift(1, true);
  drive.Go_And_Wait(0.0);
  EXPECT_GT(bench::True_Position(1), 6.9);
  bench::Set_Weak_Lift(1, false);
  Sleep(500);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001);

  // A part that is pushed under a lowered probe lifts it, and the head's height moves the anvil.
  drive.Land(1.0);
  bench::Place_Part(1, 4.0);
  EXPECT_LE(bench::True_Position(1), 5.001);
  bench::Set_Head_Height(1, -1.5);
  EXPECT_EQ(bench::True_Contact_Position(1), 3.5);
}

TEST(Journal, Tells_Calls_In_Order_And_Reads_Only_When_Asked) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  Sleep(5);
  SET_OUTPUT_DATA_MAP(4, 1, 6, 8, 23);
  OUTPUT_DATA(4, 23, 12.5);
  const uint64_t sum = bench::Journal_Checksum();
  Take(25, 10);
  EXPECT_NE(bench::Journal_Checksum(), sum) << "reads count";
  bench::Journal_Keep_Reads(true);
  Take(25, 10);
  EXPECT_EQ(bench::Journal_Text(),
            "0.000 -1 InitDevice_PC_Local_Controler(1, 0)\n0.000 -1 ConnectControlServer(\"\", 0)\n"
            "5.000 4 SET_OUTPUT_DATA_MAP(1, 6, 8, 23)\n5.000 4 OUTPUT_DATA(23, 12.5)\n"
            "5.000 -1 GetInputChannelData(25, 10)\n");
  for (int i = 0; i < bench::Journal_Limit + 10; ++i) BeAxisRun(0, nullptr, nullptr);
  EXPECT_EQ(bench::Journal().size(), static_cast<size_t>(bench::Journal_Limit));
  bench::Journal_Clear();
  EXPECT_TRUE(bench::Journal().empty());
}

}  // namespace
