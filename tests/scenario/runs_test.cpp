// One seed replays a run of several stations to the byte.
#include "common/other_process.h"
#include "scenario/system.h"

namespace orsanta {

class Replayed_Run : public System {
 public:
  explicit Replayed_Run(uint64_t seed) : System(seed) {}
  void TestBody() override {}

  // Three stations measure at once: every result, and every contract call with its time, reads included.
  std::string Record() {
    simulator::Journal_Keep_Reads(true);
    Start({1, 2, 3});
    for (const int n : {1, 2, 3}) do_test(n, ORSANTA_TASK_MEASURE);
    std::string results;
    for (const int n : {1, 2, 3}) results += std::to_string(Next_Result(n)) + "\n";
    Stop();
    return results + simulator::Journal_Text();
  }
};

// In a process of its own, since the loop's place in the round of stations outlives a system.
static std::string Record_Of(uint64_t seed) {
  const C_Temp_Folder folder;
  const auto run = [seed, path = folder.Path() / "record"] {
    std::ofstream(path) << Replayed_Run(seed).Record();
    return 0;
  };
  return Exit_Status_Of(run) == 0 ? File_Text("record") : "the run failed";
}

TEST(Replay, One_Seed_Gives_One_Run_To_The_Byte) {
  const std::string first = Record_Of(7);
  EXPECT_GT(first.size(), 100000U);
  EXPECT_TRUE(Record_Of(7) == first);  // not EXPECT_EQ: nobody reads a difference of megabytes
  EXPECT_FALSE(Record_Of(8) == first);
}

}  // namespace orsanta
