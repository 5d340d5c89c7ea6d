#include "station/history.h"

#include <filesystem>
#include <fstream>

#include "station_room.h"

namespace orsanta {
namespace {

TEST(History, Keeps_The_Newest_Within_Its_Limit) {
  C_History history(8);
  for (int i = 0; i < 30; ++i) {
    history.Append(i);
    EXPECT_LE(history.GetSize(), 8);
    EXPECT_EQ(history.Copy().GetEndData(), i);
  }
  EXPECT_GE(history.GetSize(), 6);

  CMyArray<double> many;
  for (int i = 0; i < 100; ++i) many.Add(i);
  history.Append(many);  // more than the limit at once
  EXPECT_EQ(history.GetSize(), 8);
  EXPECT_EQ(history.Copy()[0], 92.0);
  history.Append(Array({1.0, 2.0, 3.0}));
  EXPECT_EQ(history.Copy()[0], 95.0);
  EXPECT_EQ(history.Copy().GetEndData(), 3.0);
  history.Append(CMyArray<double>());
  history.Clear();
  EXPECT_EQ(history.GetSize(), 0);
}

class Export : public C_Station_Test {};

TEST_F(Export, Writes_Four_Files_Of_One_Time) {
  station->ThicknessArray.Append(0.1);
  station->ThicknessArray.Append(1.0 / 3.0);
  station->SlowTestData.Append(Array({7.0, 8.0, 9.0}));
  station->Export_History();
  EXPECT_EQ(station->ThicknessArray.GetSize(), 2);

  std::vector<std::string> names;
  for (const auto& file : std::filesystem::directory_iterator("历史数据")) names.push_back(file.path().string());
  std::sort(names.begin(), names.end());
  ASSERT_EQ(names.size(), 4U);
  // The simulated day begins at midnight of the first of January.
  EXPECT_EQ(names[3].rfind("历史数据/ThicknessArray1 1月1日0时0分", 0), 0U) << names[3];
  const std::string time_text = names[3].substr(names[3].find(' '));
  for (const std::string& name : names) EXPECT_EQ(name.substr(name.find(' ')), time_text);

  std::ifstream file(names[3]);
  std::vector<double> values;
  for (std::string line; std::getline(file, line);) {
    if (line[0] != '#') values.push_back(std::stod(line));
  }
  EXPECT_EQ(values, (std::vector<double>{0.1, 1.0 / 3.0}));
}

}  // namespace
}  // namespace orsanta
