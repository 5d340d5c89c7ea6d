// Each operation of a station as one text: what it sends to the drive and reads from it, what it shows, and the
// milliseconds that pass before each. Words as in common/drive_order.h, and beside them
//
//   [text]    a box       +5   milliseconds before the next, from 30 on to 20 ms      run~200   reads for some 200 ms
#include <cmath>
#include <tuple>

#include "calibration_operator.h"
#include "station_room.h"

namespace orsanta {

class Operations : public C_Station_Test {
 protected:
  Operations() {
    Use_Linear_Model();
    station->Val_Block_Size = 3.0;
    simulator::Place_Part(Id, 3.0);
    Sleep(10);
  }

  template <class Operation>
  std::string Transcript(Operation operation) {
    front->Clear_Record();
    simulator::Journal_Clear();
    simulator::Journal_Keep_Reads(true);
    double before = Now_Ms();
    operation();
    simulator::Journal_Keep_Reads(false);
    std::vector<std::pair<double, std::string>> events;
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      const std::string token = Drive_Order(call, Id);
      if (!token.empty()) events.emplace_back(call.time_ms, token);
    }
    for (const C_Shown& shown : front->Shown()) {
      if (shown.kind == C_Shown::Kind::Box)
        events.emplace_back(shown.at_ms, Format_Utf8("[%s]", To_Utf8(shown.text).c_str()));
    }
    std::stable_sort(events.begin(), events.end(), [](auto& a, auto& b) { return a.first < b.first; });

    std::ostringstream text;
    const auto pass = [&](double time) {
      const double gap = time - before;
      if (gap > 0.0) text << "+" << (gap < 30.0 ? std::lround(gap) : 20 * std::lround(gap / 20.0)) << " ";
    };
    for (size_t i = 0; i < events.size();) {
      const auto& [first, token] = events[i];
      pass(first);
      for (; i < events.size() && events[i].second == token; ++i) before = events[i].first;
      text << token;
      const double span = before - first, step = span < 100.0 ? 10.0 : 100.0;
      if (span > 0.0) text << "~" << std::lround(span / step) * std::lround(step);
      text << " ";
    }
    pass(Now_Ms());
    return text.str();
  }
};

TEST_F(Operations, Land_And_Lift) {
  C_VoiceMotor& s = *station;
  const auto land = [&] { EXPECT_EQ(s.Land_To(20.0F, 1.5F, 10.0F), 1); };
  const auto lift = [&] { EXPECT_EQ(s.Force_Back(30.0F), 1); };
  const int count = C_VoiceMotor::Force_Back_Count();
  EXPECT_EQ(Transcript(land), "speed 20 . upper 1.5 . run~10 . go 10.00 run~500 +1 . +5 ");
  EXPECT_NEAR(simulator::True_Force(Id), -4.0 + 150.0 - 9.0 + 10.8 - 13.5, 1.0);  // the truth at 1.5 A and 6 mm
  EXPECT_EQ(Transcript(lift), "run speed 30 . go 0.00 +40 upper 40 lower -40 . run~200 ");
  EXPECT_NEAR(simulator::True_Position(Id), 0.0, 0.1);  // it waited for the end of the move
  EXPECT_EQ(Transcript([&] { s.Set_Landing_Current(96.0, 0.0); }), "upper 1 . ");
  s.m_pMotor->m_Be_Invert = 1;
  EXPECT_EQ(Transcript(land), "speed 20 . lower -1.5 . run~10 . go 10.00 run~500 +1 . +5 ");
  s.m_pMotor->m_Be_Invert = 0;
  s.Val_BeginePoint_offset = 5.5;  // less than a millimetre from the part: arrived at once
  EXPECT_EQ(Transcript(lift), "run speed 30 . go 5.50 upper 40 lower -40 . run~30 ");
  EXPECT_EQ(C_VoiceMotor::Force_Back_Count(), count + 2);

  // A probe that does not come free: three tries, held where it is, opened, sent to 0; a place that cannot be is 0.
  for (const double scale : {1000.0, 50.0}) {
    s.Val_BeginePoint_offset = 0.5;
    s.m_pMotor->SetScale(1000.0);
    s.Land_To(20.0F, 1.5F, 10.0F);
    simulator::Set_Stuck(Id, true);
    s.m_pMotor->SetScale(scale);
    EXPECT_EQ(Transcript(lift),
              scale == 50.0 ? "run speed 30 . go 0.03 +5000 run~0 speed 30 . go 0.03 +5000 run~0 speed 30 . go 0.03 "
                              "run [canid:1 force_back_timeout 最小电流过小 ] +10 run~200 . go 0.00 run~200 +1 . "
                              "upper 40 lower -40 . run~10 . go 0.00 run~200 +1 . upper 40 lower -40 . run "
                            : "run speed 30 . go 0.50 +5000 run~0 speed 30 . go 0.50 +5000 run~0 speed 30 . go 0.50 "
                              "run [canid:1 force_back_timeout 最小电流过小 ] +10 run~200 . go 6.00 run~0 +1 . "
                              "upper 40 lower -40 . run~10 . go 0.00 run~200 +1 . upper 40 lower -40 . run~0 ");
    simulator::Set_Stuck(Id, false);
    Sleep(1000);
  }
}

TEST_F(Operations, Measure_And_Take_References) {
  C_VoiceMotor& s = *station;
  const auto measure = [&] { EXPECT_NEAR(s.Detection_thickness(10.0F, 1.0F), 3.0, 0.002); };
  s.Set_Cur_BaseDistance(-123.4F);  // whatever it was
  EXPECT_EQ(s.Cur_BaseDistance, -123.4F);
  EXPECT_EQ(Transcript([&] { s.Correct_Base(20.0F, 2.0F); }),
            "speed 20 . upper 2 . run~10 . go 10.00 run~500 +1 . +40 amps~0 "
            "run speed 20 . go 0.00 +60 upper 40 lower -40 . run~300 ");
  EXPECT_NEAR(s.Cur_BaseDistance, s.m_Observed, 1e-12);
  EXPECT_EQ(Transcript(measure),
            "speed 10 . upper 1 . run~10 . go 6.00 run~600 +1 . +5 speed 10 . upper 1 . run~0 . go 10.00 run~400 +1 . "
            "+40 amps~0 ");
  EXPECT_NEAR(s.m_CurForce, 96.0, 1.0);
  s.Force_Back(30.0F);
  s.m_pMotor->m_Be_Invert = 1;
  s.Last_Land_Pos = -s.Last_Land_Pos;
  EXPECT_EQ(Transcript(measure),
            "speed 10 . lower -1 . run~10 . go 6.00 run~600 +1 . +5 speed 10 . lower -1 . run~0 . go 10.00 run~400 "
            "+1 . +40 amps~0 ");
  s.Force_Back(30.0F);

  s.m_pMotor->m_Be_Invert = 0;
  s.Last_Land_Pos = 0.0;
  s.Val_Acc_Set[0] = 4000.0;
  s.Val_Speed_Set[1] = 15.0;
  s.Val_Spring_K = 2.0;
  s.Val_mark_pos = -2.0;
  simulator::Place_Part(Id, 4.5);
  EXPECT_EQ(Transcript([&] { EXPECT_NEAR(s.Store_Position(), -1.5, 0.002); }),
            "acc 4000 . speed 15 . upper 2.28 . run~10 . go 10.00 run~700 +1 . +40 amps~0 "
            "run speed 10 . go 0.00 +100 upper 40 lower -40 . run~400 ");
  EXPECT_NEAR(s.Val_Pos_Set[0], -1.5, 0.002);
  EXPECT_EQ(s.Val_Pos_Set[2], s.Val_Pos_Set[0]);
  s.m_pMotor->m_Be_Invert = 1;
  s.Store_Position();
  EXPECT_NEAR(s.Val_Pos_Set[2], 1.5, 0.002);
}

TEST_F(Operations, Settle) {
  // A part that swings by 0.02 mm: the band decides, and only what stands at the end of a delivery counts.
  simulator::Set_Restless(Id, 0.01);
  using C_Case = std::tuple<double, double, int, int, int>;  // band in um, window, valid, least and most samples
  for (const auto& [band_um, window, valid, least, most] :
       {C_Case(15.0, 50.0, 0, 20000, 30000), C_Case(21.0, 50.0, 1, 50, 80), C_Case(25.0, 50.0, 1, 50, 80),
        C_Case(8.0, 4.0, 1, 4, 8), C_Case(25.0, 1.0, 1, 1, 1), C_Case(25.0, 0.5, 1, 1, 1)}) {
    station->Val_ErrorThreshold = band_um;
    station->Val_ErrorWindowLen = window;
    station->Last_Land_Pos = 0.0;
    station->SlowTestData.Clear();
    const double begin = Now_Ms();
    const double thickness = station->Detection_thickness(20.0F, 1.0F);
    EXPECT_THAT(station->SlowTestData.GetSize(), testing::AllOf(testing::Ge(least), testing::Le(most)));
    if (valid == 0) {  // the way, and the limit: 500 ms of travel and 2 s
      EXPECT_NEAR(Now_Ms() - begin, 3040.0, 20.0);
      EXPECT_THAT(front->Boxes(), testing::ElementsAre(L"等待测量值稳定超时"));
      EXPECT_EQ(thickness, 3.0);  // as of a part at the reference, and so it is recorded
      EXPECT_EQ(station->Last_Land_Pos, 0.0);
      EXPECT_EQ(station->ThicknessArray.Copy()[0], 0.0);
    }
    EXPECT_EQ(station->Ans_Valid, valid);
    station->Force_Back(30.0F);
  }
  for (const double window : {0.0, -5.0}) {
    station->Val_ErrorWindowLen = window;
    EXPECT_EQ(station->Detection_thickness(20.0F, 1.0F), 0.0);
    EXPECT_EQ(front->Boxes().back(), L"位置数据空，检测位置失败");
  }
}

// A sequence waits for the one that runs, on whatever thread.
TEST_F(Operations, Take_Turns) {
  const std::function<void()> sequences[] = {
      [&] { station->Land_To(20.0F, 1.0F, 10.0F); }, [&] { station->Force_Back(20.0F); },
      [&] { station->Detection_thickness(20.0F, 1.0F); }, [&] { station->Correct_Base(20.0F, 1.0F); }};
  for (const auto& sequence : sequences) {
    C_Thread other;
    {
      const C_Lock_Guard hold(station->m_TestLock);
      other.Start("other", sequence);
      EXPECT_EQ(Transcript([] { Sleep(2000); }), "+2000 ");
    }
    other.Join();
    EXPECT_NE(Targets(), "");
  }
  // Nor does another get in between the landing and the lift of a correction.
  C_Thread other;
  other.Start("other", [&] { station->Correct_Base(20.0F, 1.0F); });
  Sleep(50);
  { const C_Lock_Guard hold(station->m_TestLock); }
  EXPECT_LT(simulator::True_Position(Id), 0.1);
  other.Join();
}

// A drive that sends nothing: each wait has its limit, and each read of the run flag takes its 41 ms. The last wait
// goes on until the drive speaks.
TEST_F(Operations, Wait_For_A_Silent_Drive) {
  Fall_Silent();
  station->Val_BeginePoint_offset = 5.0;  // not where a position that cannot be read seems to be
  const double begin = Now_Ms();
  EXPECT_EQ(station->Detection_thickness(20.0F, 1.0F), -99.0);
  EXPECT_EQ(Now_Ms() - begin, 10453.0);
  EXPECT_EQ(station->ThicknessArray.GetSize(), 0);
  C_Thread helper;
  helper.Start("helper", [] {
    Sleep(99453);  // two seconds beyond the last try
    simulator::Set_Silent(Id, false);
  });
  simulator::Journal_Clear();
  station->Correct_Base(20.0F, 1.0F);
  helper.Join();
  // In the end where it seems to be, which is 0 without a position.
  EXPECT_EQ(Targets(), "go 10.00 go 5.00 go 5.00 go 5.00 go 0.00 go 0.00 ");
  std::ostringstream told;
  for (const C_Shown& shown : front->Shown()) {
    const bool each_read = shown.text.find(L"CANID:1") == 0;
    if (!each_read) told << shown.at_ms - begin << " " << To_Utf8(shown.text) << " ";
  }
  EXPECT_EQ(told.str(),
            "10251 等待电流设定超时 10333 TillStop无法获取数据 20704 等待电流设定超时 20786 TillStop无法获取数据 "
            "46457 canid:1 force_back_timeout Get_InterRunFlag 77009 canid:1 force_back_timeout Get_InterRunFlag "
            "107561 canid:1 force_back_timeout Get_InterRunFlag 107561 canid:1 force_back_timeout 最小电流过小  "
            "107643 TillStop无法获取数据 107725 TillStop无法获取数据 "
            "109908 ID:1 基准面标定时没有读到位置，基准面无效，请检查驱动器后重新进行基准面标定 ");
  EXPECT_EQ(front->Count_Boxes(L"CANID:1读取位置超时,请检查驱动器电源"), 10002);
  EXPECT_GT(front->Count_Boxes(L"CANID:1  Get_InterRunFlag无法读取数据通道"), 1500);
}

TEST_F(Operations, Calibrate_And_Start) {
  C_Calibration_Operator person;
  station->Val_Speed_Set[1] = 15.0;
  station->Val_UpSpeed_Set = 25.0;
  person.Prepare(*front);
  std::ostringstream expected;
  for (const char* landing : {"0.4 . run [请调整测量头高度] +10 run~0", "0.6 . run~10", "0.8 . run~10", "1 . run~10"}) {
    expected << "speed 15 . upper " << landing
             << " . go 10.00 run~700 +1 . +100 run speed 25 . go 0.00 +40 upper 40 lower -40 . run~200 ";
  }
  expected << "speed 25 . go 0.00 upper 40 lower -40 . run~0 [2D推力拟合误差0.035 g] ";
  EXPECT_EQ(Transcript([&] { station->Calibrate_Force(); }), expected.str());

  station->Val_Acc_Set[0] = 4000.0;
  station->Val_Force_Set[0] = 150.0;
  EXPECT_EQ(Transcript([&] { Make_Station(); }), "+200 . acc 4000 . fault~20 +5 ");
  EXPECT_EQ(station->Test_Force[0], 150.0);
  simulator::Set_Silent(Id, true);
  EXPECT_EQ(Transcript([&] { Make_Station(); }), "+200 . acc 4000 . fault~1000 +5 ");
}

}  // namespace orsanta
