// The built program as a person at the terminal meets it: what it takes, what it refuses, and studies of values in
// files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <tuple>

#include "common/command.h"
#include "common/temp_folder.h"

namespace orsanta {
namespace {

using ::testing::HasSubstr;

C_Outcome Orsanta(const std::string& arguments) {
  return Shell(BUILT_PROGRAM " " + arguments + " 2>&1");
}

nlohmann::json Result(const std::string& folder) {
  return nlohmann::json::parse(File_Text(folder + "/result.json"));
}

// Two parts, two appraisers, two trials, as a German spreadsheet writes them.
constexpr char Crossed[] =
    "part;appraiser;trial;value\r\n1;A;1;3,0010\r\n1;A;2;3,0012\r\n1;B;1;3,0011\r\n1;B;2;3,0013\r\n"
    "2;A;1;3,0110\r\n2;A;2;3,0112\r\n2;B;1;3,0111\r\n2;B;2;3,0113\r\n";

TEST(Program, Works_Out_Files_And_Loses_None) {
  const C_Temp_Folder folder;
  std::ofstream("grr.csv") << Crossed;
  const C_Outcome ran = Orsanta("study grr --data grr.csv --tolerance 20 --out out --language en");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.output, HasSubstr("%GRR of the tolerance: 3.91 %"));
  const nlohmann::json grr = Result("out");
  EXPECT_EQ(grr["version"], 1);
  EXPECT_EQ(grr["verdict"], "accepted");
  for (const char* method : {"anova", "range"})
    for (const char* key : {"EV", "AV", "INT", "GRR", "PV", "TV", "percent_GRR", "ndc"})
      EXPECT_TRUE(grr[method][key].is_number()) << method << " " << key;
  EXPECT_NEAR(grr["anova"]["PV"].get<double>(), 0.01 / std::sqrt(2.0), 1e-6);
  EXPECT_GT(grr["anova"]["interaction_p"].get<double>(), 0.25);
  EXPECT_EQ(File_Text("out/data.csv"), Crossed);

  // The same values with another tolerance; other values do not go over them.
  EXPECT_EQ(Orsanta("study grr --data out/data.csv --tolerance 1 --out out").status, 0);
  EXPECT_EQ(Result("out")["verdict"], "rejected");
  std::ofstream("other.csv") << std::string(Crossed).substr(0, 120);
  const C_Outcome other = Orsanta("study grr --data other.csv --out out");
  EXPECT_EQ(other.status, 2);
  EXPECT_THAT(other.output, HasSubstr("\"out\" holds other values"));

  std::string references = "reference,value\n";
  for (int i = 0; i < 60; ++i)
    references += std::to_string(1 + i % 5) + "," + std::to_string(1 + i % 5 + (i * 7 % 11 - 5) * 1e-4) + "\n";
  std::ofstream("references.csv") << references;
  EXPECT_EQ(Orsanta("study linearity --data references.csv --tolerance 20 --out line").status, 0);
  EXPECT_EQ(Result("line")["linearity"]["sizes"].size(), 5U);
  EXPECT_EQ(Orsanta("study uncertainty --data references.csv --grr grr.csv --tolerance 20 --out budget").status, 0);
  EXPECT_LT(Result("budget")["uncertainty"]["process"]["Q_MP"].get<double>(), 30.0);
  std::ofstream("force.csv") << "height,set,true\n1,100,99\n1,200,203\n";
  EXPECT_EQ(Orsanta("study force --data force.csv --out force").status, 0);
  EXPECT_EQ(Result("force")["verdict"], "conditional");
}

TEST(Program, Says_In_One_Line_What_Is_Wrong_And_What_Is_Allowed) {
  const C_Temp_Folder folder;
  std::ofstream("two_bad.csv") << "part,appraiser,trial,value\n1,A,1,x\n1,A\n";
  std::ofstream("short.csv") << "value\n1\n2\n";
  const std::tuple<std::string, int, std::string> cases[] = {
      {"", 2, "measure"},
      {"weigh", 2, "measure"},
      {"measure --stations 15", 2, "1 to 14"},
      {"measure --stations 0", 2, "1 to 14"},
      {"measure --parts=1.5", 2, "whole number"},
      {"measure --force nan", 2, "1 to 1000"},
      {"measure --speed 3", 2, "--stations"},
      {"measure --csv /no/such/folder/x.csv", 2, "/no/such/folder/x.csv"},
      {"study", 2, "grr"},
      {"study grr --data nowhere.csv", 2, "\"nowhere.csv\""},
      {"study grr --parts 1", 2, "--parts"},
      {"study grr --language de", 2, "zh"},
      {"study type1 --reference 3", 2, "--tolerance"},
      {"study type1 --tolerance 20", 2, "--reference"},
      {"study linearity --references 1,2,3", 2, "at least 5"},
      {"study linearity --references 1,2,2,3,4", 2, "twice"},
      {"study grr --data two_bad.csv", 1,
       "orsanta: two_bad.csv: line 2: the column \"value\" holds \"x\", which is no number\n"
       "orsanta: two_bad.csv: line 3: 2 fields, not 4"},
      {"study grr --out new --resume", 1, "plan.json"},
      {"study grr --out new --resume --parts 5", 2, "leave out --parts"},
      {"study type1 --tolerance 20 --out /proc/none --data short.csv", 1, "/proc/none"}};
  for (const auto& [arguments, status, told] : cases) {
    const C_Outcome ran = Orsanta(arguments);
    EXPECT_EQ(ran.status, status) << arguments;
    EXPECT_THAT(ran.output, testing::AllOf(testing::StartsWith("orsanta: "), HasSubstr(told))) << arguments;
    EXPECT_EQ(std::ranges::count(ran.output, '\n'), 1 + std::ranges::count(told, '\n')) << ran.output;
  }
  for (const std::string command : {"measure", "panel"}) {  // on a machine nothing places parts
    const C_Outcome ran = Shell("LD_LIBRARY_PATH=" MACHINE_FOLDER " " BUILT_PROGRAM " " + command + " 2>&1");
    EXPECT_EQ(ran.status, 1);
    EXPECT_THAT(ran.output, testing::MatchesRegex("orsanta: " + command + " needs the simulator[^\n]*\n"));
  }
  for (const char* arguments : {"--help", "measure --help", "selftest --help"})
    EXPECT_THAT(Orsanta(arguments).output, HasSubstr("Example: orsanta")) << arguments;
}

}  // namespace
}  // namespace orsanta
