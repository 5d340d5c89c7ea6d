#include <cmath>

#include "station_room.h"

namespace orsanta {

using testing::ElementsAre;

class Thickness_Cycle : public C_Station_Test {
 protected:
  Thickness_Cycle() {
    Use_Linear_Model();
    station->Val_Block_Size = 2.0;
    simulator::Place_Part(Id, 2.0);
    station->Correct_Base(20.0F, static_cast<float>(station->Force_To_Current(200.0)));
  }
};

TEST_F(Thickness_Cycle, Measures_To_The_Micrometre_And_Records_What_It_Saw) {
  simulator::Place_Part(Id, 6.0);
  const double begin_ms = Now_Ms();
  EXPECT_NEAR(Measure(), 6.0, 0.001);
  EXPECT_NEAR(station->m_TestTime, Now_Ms() - begin_ms, 1.0);  // of this cycle alone
  EXPECT_THAT(Values(station->ThicknessArray.Copy()),
              ElementsAre(station->Cur_BaseDistance.Get(), station->Last_Land_Pos.Get()));
  EXPECT_EQ(station->TestTimeArray.Copy()[1], station->m_TestTime);
  EXPECT_EQ(station->m_MaxTestTime, std::max(station->TestTimeArray.Copy()[0], station->m_TestTime.Get()));

  EXPECT_EQ(station->TempArray.GetSize(), 0);  // no board
  station->Val_TempSensorCanID = Board + 0.7;
  simulator::Set_Temperature(Board, 31.5);
  simulator::Set_Silent(Board, true);
  Make_Station();
  Measure();
  simulator::Set_Silent(Board, false);
  Measure();
  EXPECT_EQ(station->TempArray.Copy()[0], 0.0);  // a board that sends nothing
  EXPECT_NEAR(station->TempArray.Copy()[1], 31.5, 0.1);
}

TEST_F(Thickness_Cycle, What_Is_No_Number_Is_Never_Sent_Never_Valid_And_Never_The_Reference) {
  const auto cycle = [this] { return Measure(); };
  const double reference = station->Cur_BaseDistance, last = station->Last_Land_Pos;
  const double nan = std::nan("");
  station->Val_Force_K = nan;
  for (const int flag : {0, 1}) {
    station->Set_RunNegative(flag);
    Expect_No_Landing(cycle, L"ID:1 电流不是有效数字");
  }
  station->Val_Force_K = 100.0;
  Expect_No_Landing([&] { return station->Detection_thickness(std::nanf(""), 1.0F); }, L"ID:1 速度不是有效数字");
  station->Last_Land_Pos = 0.0;     // one leg
  simulator::Set_Silent(Id, true);  // nothing is waited for
  for (const float out_of_reach : {INFINITY, 1e30F, -1001.0F}) {
    station->test_distance = out_of_reach;
    Expect_No_Landing(cycle, Format_Text("ID:1 目标位置%g mm超出探头行程", out_of_reach).GetBuffer());
  }
  simulator::Set_Silent(Id, false);
  station->Last_Land_Pos = last;
  station->test_distance = 10.0F;

  // A cycle that runs, with a result that is none: by the block's size, and by a sample of the drive.
  station->Val_Block_Size = nan;
  EXPECT_EQ(Measure(), -99.0);
  EXPECT_EQ(station->Correct_Base(20.0F, 2.0F), reference);
  station->Val_Block_Size = 2.0;
  C_Thread spoiler;
  spoiler.Start("spoiler", [&] {
    for (int i = 0; i < 200; ++i, Sleep(10)) station->m_pMotor->m_PosWindow.Push_Sample(nan, 0);
  });
  const int recorded = station->ThicknessArray.GetSize();
  EXPECT_EQ(Measure(), -99.0);
  EXPECT_EQ(station->Ans_Valid, 0);
  EXPECT_EQ(station->ThicknessArray.GetSize(), recorded);
  EXPECT_EQ(front->Count_Boxes(L"ID:1 测量结果不是有效数字"), 3);
  spoiler.Join();
  station->Set_Cur_BaseDistance(std::nanf(""));
  EXPECT_EQ(front->Count_Boxes(L"ID:1 保存的基准面不是有效数字"), 1);
  EXPECT_EQ(station->Cur_BaseDistance, reference);
}

TEST(History, Keeps_The_Newest_Within_Its_Limit) {
  C_History history(8);
  for (int i = 0; i < 9; ++i) history.Append(i);
  EXPECT_THAT(Values(history.Copy()), testing::ElementsAre(2, 3, 4, 5, 6, 7, 8));  // the oldest quarter goes at once
  history.Append(Array({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));                          // more than the limit at once
  EXPECT_THAT(Values(history.Copy()), testing::ElementsAre(3, 4, 5, 6, 7, 8, 9, 10));
  history.Append(Array({11, 12, 13}));
  EXPECT_THAT(Values(history.Copy()), testing::ElementsAre(6, 7, 8, 9, 10, 11, 12, 13));
}

using Export = C_Station_Test;

TEST_F(Export, Writes_Four_Files_Of_One_Time) {
  C_VoiceMotor& s = *station;
  const std::tuple<std::string, C_History&, double> histories[] = {{"ThicknessArray1", s.ThicknessArray, 1.0 / 3.0},
                                                                   {"TempArray1", s.TempArray, 31.5},
                                                                   {"TestTimeArray1", s.TestTimeArray, 900.0},
                                                                   {"SlowTestData1", s.SlowTestData, 7.0}};
  for (const auto& [name, history, value] : histories) history.Append(Array({0.1, value}));
  Sleep(63000);
  s.Export_History();
  // The simulated day begins at midnight of the first of January.
  for (const auto& [name, history, value] : histories)
    EXPECT_THAT(Load(name + " 1月1日0时1分3秒.txt"), testing::ElementsAre(0.1, value));
  EXPECT_EQ(s.ThicknessArray.GetSize(), 2);
}

}  // namespace orsanta
