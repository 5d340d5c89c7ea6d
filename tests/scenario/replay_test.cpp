// One seed replays a whole run: lanes, loop, windows and drives, to the byte.
#include "common/other_process.h"
#include "scenario/system.h"
#include "support/threads/thread.h"

namespace orsanta {
namespace {

class Replayed_Run : public System {
 public:
  explicit Replayed_Run(uint64_t seed) : System(seed) {}
  void TestBody() override {}

  // Three stations measure at once: every result, and every contract call with its time, reads included.
  std::string Record() {
    simulator::Journal_Keep_Reads(true);
    Start({1, 2, 3});
    double results[3] = {};
    {
      C_Thread hosts[3];
      for (int n = 1; n <= 3; ++n) {
        hosts[n - 1].Start("host", [n, &result = results[n - 1]] { result = Measure(n, 1.0 + n); });
      }
    }
    Stop();
    std::string record = simulator::Journal_Text();
    for (const double result : results) record += std::to_string(result) + "\n";
    return record;
  }
};

// In a process of its own, since the loop's place in the round of stations outlives a system.
std::string Record_Of(uint64_t seed) {
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

}  // namespace
}  // namespace orsanta
