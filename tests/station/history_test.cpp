#include "station/history.h"

#include "station_room.h"

namespace orsanta {
namespace {

TEST(History, Keeps_The_Newest_Within_Its_Limit) {
  C_History history(8);
  for (int i = 0; i < 30; ++i) {
    history.Append(i);
    EXPECT_LE(history.GetSize(), 8);
    EXPECT_GE(history.GetSize(), std::min(i + 1, 6));
    EXPECT_EQ(history.Copy().GetEndData(), i);
  }
  history.Append(Array({1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));  // more than the limit at once
  EXPECT_THAT(Values(history.Copy()), testing::ElementsAre(3, 4, 5, 6, 7, 8, 9, 10));
  history.Append(Array({11, 12, 13}));
  EXPECT_THAT(Values(history.Copy()), testing::ElementsAre(6, 7, 8, 9, 10, 11, 12, 13));
  history.Append(CMyArray<double>());
  history.Clear();
  EXPECT_EQ(history.GetSize(), 0);
}

class Export : public C_Station_Test {};

TEST_F(Export, Writes_Four_Files_Of_One_Time) {
  station->ThicknessArray.Append(Array({0.1, 1.0 / 3.0}));
  station->TempArray.Append(31.5);
  station->TestTimeArray.Append(900.0);
  station->SlowTestData.Append(Array({7.0, 8.0, 9.0}));
  Sleep(63000);
  station->Export_History();
  EXPECT_EQ(station->ThicknessArray.GetSize(), 2);
  // The simulated day begins at midnight of the first of January.
  const std::string time_text = " 1月1日0时1分3秒.txt";
  EXPECT_THAT(Load("ThicknessArray1" + time_text), testing::ElementsAre(0.1, 1.0 / 3.0));
  EXPECT_THAT(Load("TempArray1" + time_text), testing::ElementsAre(31.5));
  EXPECT_THAT(Load("TestTimeArray1" + time_text), testing::ElementsAre(900.0));
  EXPECT_THAT(Load("SlowTestData1" + time_text), testing::ElementsAre(7.0, 8.0, 9.0));
}

}  // namespace
}  // namespace orsanta
