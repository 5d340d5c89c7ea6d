// What the built program measures, on the simulator and on a machine.
#include "program/real_time.h"

#include <gmock/gmock.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>

namespace orsanta {
namespace {

using ::testing::HasSubstr;

nlohmann::json Result(const std::string& folder) {
  return nlohmann::json::parse(File_Text(folder + "/result.json"));
}

// Stands first, since its second half begins only here.
//
// The machine is the simulator without its control functions: nothing lies on its anvil, which stands for a part of the
// size of the reference block.
TEST_F(Real_Time, A_Study_Asks_A_Person_On_A_Machine_And_Is_Taken_Up_Again) {
  const C_Outcome begun = runs->begun.Wait();
  EXPECT_EQ(begun.status, 1) << begun.output;
  EXPECT_THAT(begun.output, HasSubstr("[4/25] repeat 4: reference of 5 mm. Place it"));
  EXPECT_THAT(begun.output, HasSubstr("3 of 25 values are kept"));
  EXPECT_THAT(begun.output, HasSubstr("orsanta study type1 --out \"out\" --resume"));
  std::string kept = File_Text("machine/out/data.csv");
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 4);

  const std::string study = "cd machine && " BUILT_PROGRAM " study type1 --out out ";
  EXPECT_THAT(Shell(study + "--reference 5 --tolerance 20 2>&1").output, HasSubstr("holds measured values already"));
  EXPECT_THAT(Shell(study + "--resume 2>&1").output, HasSubstr("was begun on a machine"));

  // Another day has brought nearly all the others, and the power went while a line was written.
  for (int repeat = 4; repeat <= 22; ++repeat) kept += "5," + std::to_string(repeat) + ",5.000000\n";
  std::ofstream("machine/out/data.csv") << kept << "5,23,4.99";
  const C_Outcome ended = Shell("yes '' | (" + On_Machine(study + "--resume") + ")");
  EXPECT_EQ(ended.status, 0) << ended.output;
  EXPECT_THAT(File_Text("machine/out/data.csv"),
              testing::AllOf(testing::StartsWith(kept + "5,23,"),
                             testing::ContainsRegex("\n5,23,(5\\.000|4\\.999)[0-9][0-9][0-9]\n5,24,")));
  const nlohmann::json result = Result("machine/out");
  EXPECT_EQ(result["type1"]["count"], 25);
  EXPECT_NEAR(result["type1"]["bias_mm"].get<double>(), 0.0, 0.0005);
  EXPECT_EQ(result["setup"]["tolerance_um"], 20.0);
}

// Checks the file of a run at 50 g: its parts were measured, or not tried. Returns how many of them were.
int Count_Measured(const std::string& path, int parts) {
  std::ifstream csv(path);
  std::string line;
  std::getline(csv, line);
  EXPECT_EQ(line, "station,part,true_mm,measured_mm,error_um,true_force_g,cycle_ms,tried,failed");
  int measured = 0;
  for (; std::getline(csv, line); --parts) {
    double true_mm, measured_mm, true_force_g;
    const char* const columns = "%*d,%*d,%lf,%lf,%*f,%lf";
    const bool tried = std::sscanf(line.c_str(), columns, &true_mm, &measured_mm, &true_force_g) == 3;
    EXPECT_THAT(line, testing::EndsWith(tried ? ",1,0" : ",,,,,0,0"));
    if (!tried) continue;
    ++measured;
    EXPECT_NEAR(measured_mm, true_mm, 0.001);
    EXPECT_NEAR(true_force_g, 50.0, 0.5);
  }
  EXPECT_EQ(parts, 0);
  return measured;
}

TEST_F(Real_Time, Parts_Are_Measured_At_The_Named_Force_And_No_Store_Is_Left) {
  const C_Outcome ran = runs->measured.Wait();
  EXPECT_EQ(ran.status, 0) << ran.output;
  EXPECT_THAT(ran.output, HasSubstr("PASS: 4 parts measured at 50 g"));
  EXPECT_EQ(Count_Measured("measured/parts.csv", 4), 4);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator("measured"), {}), 1);
}

TEST_F(Real_Time, The_Drive_Tests_Itself) {
  const C_Outcome tested = runs->tested.Wait();
  EXPECT_EQ(tested.status, 0) << tested.output;
  EXPECT_THAT(tested.output, HasSubstr("PASS"));
}

TEST_F(Real_Time, An_Interrupted_Run_Tells_Which_Parts_Were_Not_Tried) {
  const C_Outcome ran = runs->interrupted.Wait();
  EXPECT_EQ(ran.status, 1);
  const std::string untried = std::to_string(1000 - Count_Measured("interrupted/parts.csv", 1000));
  EXPECT_THAT(ran.output, HasSubstr("INTERRUPTED: " + untried + " of 1000 parts were not tried, 0 failed"));
}

TEST_F(Real_Time, Studies_Measure_On_The_Simulator) {
  const C_Outcome ran = runs->grr.Wait();
  EXPECT_EQ(ran.status, 0) << ran.output;
  const nlohmann::json grr = Result("grr/out");
  EXPECT_EQ(grr["header"]["Placement error (standard deviation)"], "0.5 µm");
  EXPECT_EQ(grr["header"]["Landing speed"], "20 mm/s");
  EXPECT_THAT(grr["header"]["Software"].get<std::string>(), HasSubstr("liborsanta.so ("));
  EXPECT_NEAR(grr["anova"]["PV"].get<double>(), 0.020 / std::sqrt(2.0), 0.001);
  EXPECT_GT(grr["anova"]["AV"].get<double>(), 0.002);
  EXPECT_LT(grr["anova"]["EV"].get<double>(), 0.002);

  const C_Outcome force = runs->force.Wait();
  EXPECT_EQ(force.status, 0) << force.output;
  EXPECT_LT(Result("force/out")["force"]["greatest_error_percent"].get<double>(), 1.0);
}

}  // namespace
}  // namespace orsanta
