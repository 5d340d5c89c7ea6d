// orsanta study as a person at the terminal meets it: values from files, from the bench, and on a machine.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "common/temp_folder.h"
#include "study/program/shell.h"

namespace study {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

void Put(const std::string& name, const std::string& text) {
  std::ofstream(name, std::ios::binary) << text;
}

nlohmann::json Result(const std::string& folder) {
  return nlohmann::json::parse(orsanta::File_Text(folder + "/result.json"));
}

// Two parts, two appraisers, two trials, as a German spreadsheet writes them.
constexpr char Crossed[] =
    "part;appraiser;trial;value\r\n1;A;1;3,0010\r\n1;A;2;3,0012\r\n1;B;1;3,0011\r\n1;B;2;3,0013\r\n"
    "2;A;1;3,0110\r\n2;A;2;3,0112\r\n2;B;1;3,0111\r\n2;B;2;3,0113\r\n";

TEST(Study_Program, Works_Out_Files_And_Loses_None) {
  const orsanta::C_Temp_Folder folder;
  Put("grr.csv", Crossed);
  const C_Outcome ran = Study("grr --data grr.csv --tolerance 20 --out out --language en");
  EXPECT_EQ(ran.status, 0);
  EXPECT_THAT(ran.output, HasSubstr("%GRR of the tolerance: 3.91 %"));
  const nlohmann::json grr = Result("out");
  EXPECT_EQ(grr["version"], 1);
  EXPECT_EQ(grr["verdict"], "accepted");
  for (const char* method : {"anova", "range"}) {
    for (const char* key : {"EV", "AV", "INT", "GRR", "PV", "TV", "percent_GRR", "ndc"}) {
      EXPECT_TRUE(grr[method][key].is_number()) << method << " " << key;
    }
  }
  EXPECT_NEAR(grr["anova"]["PV"].get<double>(), 0.01 / std::sqrt(2.0), 1e-6);
  EXPECT_GT(grr["anova"]["interaction_p"].get<double>(), 0.25);
  EXPECT_EQ(orsanta::File_Text("out/data.csv"), Crossed);

  // The same values with another tolerance; other values do not go over them.
  EXPECT_EQ(Study("grr --data out/data.csv --tolerance 1 --out out").status, 0);
  EXPECT_EQ(Result("out")["verdict"], "rejected");
  Put("other.csv", std::string(Crossed).substr(0, 120));
  const C_Outcome other = Study("grr --data other.csv --out out");
  EXPECT_EQ(other.status, 2);
  EXPECT_THAT(other.output, HasSubstr("\"out\" holds other values"));

  std::string references = "reference,value\n";
  for (int i = 0; i < 60; ++i) {
    references += std::to_string(1 + i % 5) + "," + std::to_string(1 + i % 5 + (i * 7 % 11 - 5) * 1e-4) + "\n";
  }
  Put("references.csv", references);
  EXPECT_EQ(Study("linearity --data references.csv --tolerance 20 --out line").status, 0);
  EXPECT_EQ(Result("line")["linearity"]["sizes"].size(), 5U);
  EXPECT_EQ(Study("uncertainty --data references.csv --grr grr.csv --tolerance 20 --out budget").status, 0);
  EXPECT_LT(Result("budget")["uncertainty"]["process"]["Q_MP"].get<double>(), 30.0);
  Put("force.csv", "height,set,true\n1,100,99\n1,200,203\n");
  EXPECT_EQ(Study("force --data force.csv --out force").status, 0);
  EXPECT_EQ(Result("force")["verdict"], "conditional");
}

TEST(Study_Program, Says_What_Is_Wrong_And_What_To_Do) {
  const orsanta::C_Temp_Folder folder;
  Put("bad.csv", "part,appraiser,trial,value\n1,A,1,x\n1,A\n");
  Put("short.csv", "value\n1\n2\n");
  Put("grr.csv", std::string(Crossed).substr(0, 120));
  struct C_Case {
    const char* arguments;
    int status;
    const char* told;
  };
  for (const C_Case& item :
       {C_Case{"", 2, "grr"}, C_Case{"grr --data nowhere.csv", 2, "\"nowhere.csv\""},
        C_Case{"grr --parts 1", 2, "--parts"}, C_Case{"grr --language de", 2, "zh"},
        C_Case{"type1 --reference 3", 2, "--tolerance"}, C_Case{"type1 --tolerance 20", 2, "--reference"},
        C_Case{"type1 --tolerance 20 --data short.csv", 1, "no column \"reference\""},
        C_Case{"type1 --tolerance 20 --reference 1 --data short.csv", 1, "at least 25 repeats, there are 2"},
        C_Case{"linearity --references 1,2,3", 2, "at least 5"}, C_Case{"linearity --references 1,2,2,3,4", 2, "twice"},
        C_Case{"grr --data grr.csv", 1, "orsanta: grr.csv: the study is not balanced: part 2, appraiser"},
        C_Case{"grr --data bad.csv", 1,
               "orsanta: bad.csv: line 2: the column \"value\" holds \"x\", which is no number\n"
               "orsanta: bad.csv: line 3: 2 fields, not 4"},
        C_Case{"grr --out new --resume", 1, "plan.json"},
        C_Case{"grr --out new --resume --parts 5", 2, "leave out --parts"},
        C_Case{"grr --out /proc/none --data grr.csv", 1, "/proc/none"}}) {
    const C_Outcome told = Study(item.arguments);
    EXPECT_EQ(told.status, item.status) << item.arguments;
    EXPECT_THAT(told.output, HasSubstr(item.told));
    EXPECT_THAT(told.output, StartsWith("orsanta: "));
  }
}

TEST(Study_Program, Measures_On_The_Bench) {
  const orsanta::C_Temp_Folder folder;
  const C_Outcome ran = Study(
      "grr --parts 3 --appraisers 2 --trials 2 --tolerance 20 --placement-error 0.5 --appraiser-error 20 --out grr "
      "--language en");
  EXPECT_EQ(ran.status, 0) << ran.output;
  const nlohmann::json grr = Result("grr");
  EXPECT_EQ(grr["header"]["Placement error (standard deviation)"], "0.5 µm");
  EXPECT_EQ(grr["header"]["Landing speed"], "20 mm/s");
  EXPECT_THAT(grr["header"]["Software"].get<std::string>(), HasSubstr("liborsanta.so ("));
  EXPECT_NEAR(grr["anova"]["PV"].get<double>(), 0.010, 0.001);
  EXPECT_GT(grr["anova"]["AV"].get<double>(), 0.002);
  EXPECT_LT(grr["anova"]["EV"].get<double>(), 0.002);

  const C_Outcome force = Study("force --heights 1,7 --forces 60,400 --out force");
  EXPECT_EQ(force.status, 0) << force.output;
  EXPECT_LT(Result("force")["force"]["greatest_error_percent"].get<double>(), 1.0);
}

// The machine is the bench without its control functions: nothing lies on its anvil, which stands for a part of the
// size of the reference block.
TEST(Study_Program, Asks_A_Person_On_A_Machine_And_Takes_A_Study_Up_Again) {
  const orsanta::C_Temp_Folder folder;
  const std::string program = "LD_LIBRARY_PATH=" MACHINE_FOLDER " " BUILT_PROGRAM " ";
  for (const char* command : {"measure", "panel"}) {
    const C_Outcome told = Shell(program + command + " 2>&1");
    EXPECT_EQ(told.status, 1);
    EXPECT_THAT(told.output, StartsWith("orsanta: " + std::string(command) + " needs the bench"));
    EXPECT_EQ(std::count(told.output.begin(), told.output.end(), '\n'), 1) << told.output;
  }

  // The block, three parts, and the end.
  const C_Outcome begun = Shell("printf '\\n\\n\\n\\nq\\n' | " + program +
                                "study type1 --reference 5 --tolerance 20 --block 5 --out out --language en 2>&1");
  EXPECT_EQ(begun.status, 1) << begun.output;
  EXPECT_THAT(begun.output, HasSubstr("[4/25] repeat 4: reference of 5 mm. Place it"));
  EXPECT_THAT(begun.output, HasSubstr("3 of 25 values are kept"));
  EXPECT_THAT(begun.output, HasSubstr("orsanta study type1 --out \"out\" --resume"));
  const std::string kept = orsanta::File_Text("out/data.csv");
  EXPECT_EQ(std::count(kept.begin(), kept.end(), '\n'), 4);

  EXPECT_THAT(Study("type1 --out out --reference 5 --tolerance 20").output, HasSubstr("holds measured values already"));
  EXPECT_THAT(Study("type1 --out out --resume").output, HasSubstr("was begun on a machine"));
  Put("out/data.csv", kept + "5,4,4.99");  // the power went while this line was written
  const C_Outcome ended = Shell("yes '' | " + program + "study type1 --out out --resume 2>&1");
  EXPECT_EQ(ended.status, 0) << ended.output;
  EXPECT_THAT(orsanta::File_Text("out/data.csv"), StartsWith(kept + "5,4,5.00"));
  const nlohmann::json result = Result("out");
  EXPECT_EQ(result["type1"]["count"], 25);
  EXPECT_NEAR(result["type1"]["bias_mm"].get<double>(), 0.0, 0.0005);
  EXPECT_EQ(result["setup"]["tolerance_um"], 20.0);
}

}  // namespace
}  // namespace study
