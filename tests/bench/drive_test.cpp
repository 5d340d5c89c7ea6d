// The drives: motion under the clamps, landing, run flag, homing, replay, and every fault.
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
      EXPECT_EQ(bench::True_Contact_Position(3), contact);
      EXPECT_NEAR(bench::True_Position(3), contact, 0.0012);
      EXPECT_NEAR(bench::True_Force(3), True_Settled_Force(ampere, contact), 0.3);
      EXPECT_NEAR(bench::Force_Gauge(3), bench::True_Force(3), 0.0051);
      EXPECT_NEAR(drive.Mean_Position(50), bench::True_Position(3), 0.0002);
      EXPECT_NEAR(Take(drive.Channel(9)).back(), ampere, 0.01);
      drive.Go_And_Wait(0.0);
      EXPECT_NEAR(bench::True_Position(3), 0.0, 0.002);
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
  EXPECT_GT(highest_bounce, 0.002);
  EXPECT_LT(highest_bounce, 0.05);
  EXPECT_GT(last_motion - touched, 10.0);
  EXPECT_LT(last_motion - touched, 100.0);
}

TEST(Motion, Keeps_Speed_And_Acceleration_And_Is_Slower_Under_A_Low_Clamp) {
  orsanta::C_Simulated_Clock clock(1);
  bench::Settings settings;
  settings.noise_mm = 0.0;
  Connect(settings);
  const C_Test_Drive drive(1);
  const auto run = [&](double speed, double acceleration, double ampere, double& top_speed) {
    drive.Go_And_Wait(0.0);
    drive.Speed(speed);
    drive.Send(8, acceleration);
    drive.Clamp(ampere);
    drive.Till_Idle();
    drive.Go(8.0);
    top_speed = 0.0;
    const double start = Now_Ms();
    for (double before = 0.0; drive.Run_Flag() != 0 && Now_Ms() < start + 5000.0; Sleep(1)) {
      const double now = bench::True_Position(1);
      if (now != before) top_speed = std::max(top_speed, now - before);
      before = now;
    }
    EXPECT_NEAR(bench::True_Position(1), 8.0, 0.002);
    return Now_Ms() - start;
  };
  double top = 0.0;
  EXPECT_NEAR(run(20.0, 5000.0, 40.0, top), 8.0 / 20.0 * 1000.0 + 4.0, 15.0);
  // 8 mm at 400 mm/s^2 up and down, without reaching the speed: 2 sqrt(8 / 400) s
  EXPECT_NEAR(run(1000.0, 400.0, 40.0, top), 2000.0 * std::sqrt(8.0 / 400.0), 20.0);
  const double strong = run(1000.0, 100000.0, 40.0, top);
  const double weak = run(1000.0, 100000.0, 0.3, top);
  EXPECT_GT(weak, strong + 5.0);
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
  drive.Clamp(3.0);
  EXPECT_EQ(drive.Run_Flag(), 0) << "nothing new to take up";

  drive.Go(5.0);
  EXPECT_EQ(Take(drive.Channel(6)).back(), 1.0);
  while (drive.Run_Flag() == 1) Sleep(1);
  const double here = bench::True_Position(2);
  Sleep(20);
  EXPECT_NEAR(bench::True_Position(2), here, 0.001);
  EXPECT_NEAR(here, 5.0, 0.001);

  // A FIFO that nobody reads is full of old flags; what comes after it was emptied is new.
  Sleep(1000);
  drive.Go(0.0);
  const std::vector<double> old = Take(drive.Channel(6));
  EXPECT_EQ(old.size(), 256u);
  EXPECT_EQ(old.back(), 0.0);
  Sleep(3);
  EXPECT_EQ(Take(drive.Channel(6)).back(), 1.0);
}

TEST(Samples, Come_Every_Two_Milliseconds_Staggered_And_With_The_Encoders_Noise) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  std::vector<std::vector<double>> values(3, std::vector<double>(4096));
  std::vector<std::vector<uint64_t>> stamps(3, std::vector<uint64_t>(4096));
  for (int id = 1; id <= 3; ++id) C_Test_Drive drive(id);
  Sleep(4000);
  for (size_t i = 0; i < 3; ++i) {
    int count = 0;
    GetInputChannelData(static_cast<int>(i + 1) * 20 + 5, 4096, &count, values[i].data(), stamps[i].data());
    ASSERT_EQ(count, 2000);
    for (size_t k = 1; k < 2000; ++k) ASSERT_EQ(stamps[i][k] - stamps[i][k - 1], 100u);
    double sum = 0.0, squares = 0.0;
    for (size_t k = 0; k < 2000; ++k) {
      const double um = values[i][k] / Raw_Per_Mm * 1000.0;
      ASSERT_NEAR(um * 10.0, std::round(um * 10.0), 1e-3) << "not a step of the encoder";
      sum += um;
      squares += um * um;
    }
    EXPECT_NEAR(sum / 2000.0, bench::True_Position(static_cast<int>(i + 1)) * 1000.0, 0.03);
    EXPECT_NEAR(std::sqrt(squares / 2000.0), 0.3, 0.02);
  }
  EXPECT_NE(stamps[0][0] % 100, stamps[1][0] % 100);

  // Hours in which nobody calls: the FIFO holds the oldest samples without a gap, and the instants stay where they
  // were.
  Sleep(5 * 3600 * 1000);
  int count = 0;
  GetInputChannelData(25, 4096, &count, values[0].data(), stamps[0].data());
  ASSERT_EQ(count, 4096);
  EXPECT_EQ(stamps[0][4095] - stamps[0][0], 4095u * 100u);
  Sleep(2);
  const uint64_t last = stamps[0][4095];
  GetInputChannelData(25, 4096, &count, values[0].data(), stamps[0].data());
  ASSERT_EQ(count, 1);
  EXPECT_EQ((stamps[0][0] - last) % 100, 0u);
  EXPECT_EQ(stamps[0][0] / 50 / 1000, 5u * 3600u + 4u);
  EXPECT_NE(values[0], values[1]);
}

TEST(Homing, Measures_The_Stroke_And_Comes_Back_Ready) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  Sleep(2000);
  const auto home = [&] {
    const double start = Now_Ms();
    drive.Send(1, 0.0);
    EXPECT_EQ(drive.Newest(drive.Ready()), 0);
    while (drive.Newest(drive.Ready()) == 0 && Now_Ms() < start + 60000.0) Sleep(1);
    return Now_Ms() - start;
  };
  bench::Place_Part(1, 4.0);
  EXPECT_LT(home(), 4000.0);
  Sleep(1);
  const double lower = Take(drive.Channel(2)).back() / Raw_Per_Mm;
  const double upper = Take(drive.Channel(3)).back() / Raw_Per_Mm;
  EXPECT_NEAR(lower, -0.45, 0.01);
  EXPECT_NEAR(upper, 4.95, 0.01);
  drive.Go_And_Wait(upper);
  EXPECT_NEAR(bench::True_Position(1), upper, 0.001);

  bench::Remove_Part(1);
  home();
  Sleep(1);
  EXPECT_NEAR(Take(drive.Channel(3)).back() / Raw_Per_Mm, 8.95, 0.01) << "the stroke of the measurement before";

  bench::Set_Slow_Homing(1, true);
  EXPECT_GT(home(), 6000.0);
  bench::Set_Slow_Homing(1, false);

  bench::Set_Stuck(1, true);
  drive.Send(1, 0.0);
  drive.Till_Idle();
  EXPECT_EQ(drive.Newest(drive.Ready()), 0);
  EXPECT_EQ(drive.Newest(drive.Channel(1)), 2) << "cannot home";
  bench::Set_Stuck(1, false);
  home();
  EXPECT_EQ(drive.Newest(drive.Channel(1)), 0);
}

TEST(Faults, Each_Shows_And_Goes_Away_Again) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  const C_Test_Drive drive(1);
  const C_Test_Drive other(2);
  int exists = 0;

  bench::Set_Absent(1, true);
  CheckDeviceExist(1, &exists);
  EXPECT_EQ(exists, 0);
  Take(drive.Position());
  Take(other.Position());
  drive.Go(3.0);
  Sleep(100);
  EXPECT_TRUE(Take(drive.Position()).empty());
  EXPECT_EQ(Take(other.Position()).size(), 50u);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001) << "a command reached a drive that is not there";
  bench::Set_Absent(1, false);
  CheckDeviceExist(1, &exists);
  EXPECT_EQ(exists, 1);
  Sleep(10);
  EXPECT_FALSE(Take(drive.Position()).empty());

  bench::Set_Silent(1, true);
  Take(drive.Position());
  drive.Go(3.0);
  Sleep(1000);
  EXPECT_TRUE(Take(drive.Position()).empty());
  EXPECT_NEAR(bench::True_Position(1), 3.0, 0.001);
  CheckDeviceExist(1, &exists);
  EXPECT_EQ(exists, 1);
  bench::Set_Silent(1, false);

  Sleep(10);
  bench::Set_Frozen(1, true);
  Take(drive.Position());
  drive.Go_And_Wait(0.0);
  const std::vector<double> frozen = Take(drive.Position());
  EXPECT_GT(frozen.size(), 20u);
  EXPECT_EQ(std::count(frozen.begin(), frozen.end(), frozen[0]), static_cast<int>(frozen.size()));
  bench::Set_Frozen(1, false);

  bench::Set_Stuck(1, true);
  drive.Go_And_Wait(5.0);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001);
  bench::Set_Stuck(1, false);
  Sleep(500);
  EXPECT_NEAR(bench::True_Position(1), 5.0, 0.001);

  bench::Place_Part(1, 2.0);
  drive.Land(1.0);
  bench::Set_Weak_Lift(1, true);
  drive.Go_And_Wait(0.0);
  EXPECT_GT(bench::True_Position(1), 6.9);
  bench::Set_Weak_Lift(1, false);
  Sleep(500);
  EXPECT_NEAR(bench::True_Position(1), 0.0, 0.001);

  bench::Set_Restless(1, 0.02);
  drive.Land(1.0);
  double least = 1e9, most = -1e9;
  Take(drive.Position());
  Sleep(100);
  for (const double raw : Take(drive.Position())) {
    least = std::min(least, raw / Raw_Per_Mm);
    most = std::max(most, raw / Raw_Per_Mm);
  }
  EXPECT_NEAR(most - least, 0.04, 0.005);
  bench::Set_Restless(1, 0.0);

  bench::Set_Fault_Bits(1, 0b1101);
  EXPECT_EQ(drive.Newest(drive.Channel(1)), 0b1101);
  bench::Set_Fault_Bits(1, 0);

  // A part that is pushed under a lowered probe lifts it, and the head's height moves the anvil.
  bench::Place_Part(1, 4.0);
  EXPECT_LE(bench::True_Position(1), 5.001);
  bench::Set_Head_Height(1, -1.5);
  EXPECT_EQ(bench::True_Contact_Position(1), 3.5);
}

// One measuring life, with noise and faults, as text and as the numbers that were read.
std::string Live(uint64_t seed, uint64_t& checksum) {
  orsanta::C_Simulated_Clock clock(7);
  bench::Settings settings;
  settings.seed = seed;
  Connect(settings);
  bench::Journal_Keep_Reads(true);
  const C_Test_Drive drive(1);
  std::string text;
  for (int i = 0; i < 3; ++i) {
    bench::Place_Part(1, 1.0 + i);
    bench::Set_Restless(1, i == 1 ? 0.01 : 0.0);
    drive.Land(1.0);
    Sleep(150);
    for (const double raw : Take(drive.Position())) text += std::to_string(raw) + " ";
    drive.Go_And_Wait(0.0);
  }
  checksum = bench::Journal_Checksum();
  return bench::Journal_Text() + text;
}

TEST(Replay, One_Seed_Gives_The_Same_Run_To_The_Byte) {
  uint64_t first = 0, second = 0, third = 0;
  const std::string run = Live(11, first);
  EXPECT_EQ(run, Live(11, second));
  EXPECT_EQ(first, second);
  EXPECT_NE(run, Live(12, third));
  EXPECT_NE(first, third);
}

TEST(Journal, Tells_Calls_In_Order_And_Reads_Only_When_Asked) {
  orsanta::C_Simulated_Clock clock(1);
  Connect();
  Sleep(5);
  SET_OUTPUT_DATA_MAP(4, 1, 6, 8, 23);
  OUTPUT_DATA(4, 23, 12.5);
  Take(25, 10);
  const uint64_t sum = bench::Journal_Checksum();
  Take(25, 10);
  EXPECT_NE(bench::Journal_Checksum(), sum) << "reads count";
  const std::vector<bench::Journal_Entry> calls = bench::Journal();
  ASSERT_EQ(calls.size(), 4u);
  EXPECT_EQ(calls[0].function, "InitDevice_PC_Local_Controler");
  EXPECT_EQ(calls[3].function, "OUTPUT_DATA");
  EXPECT_EQ(calls[3].thread, 4);
  EXPECT_EQ(calls[3].arguments, "23, 12.5");
  EXPECT_EQ(calls[3].time_ms, 5.0);
  bench::Journal_Clear();
  bench::Journal_Keep_Reads(true);
  Take(25, 10);
  EXPECT_EQ(bench::Journal_Text(), "5.000 -1 GetInputChannelData(25, 10)\n");
  for (int i = 0; i < bench::Journal_Limit + 10; ++i) BeAxisRun(0, nullptr, nullptr);
  EXPECT_EQ(bench::Journal().size(), static_cast<size_t>(bench::Journal_Limit));
}

}  // namespace
