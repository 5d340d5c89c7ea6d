// Runs of several stations at once: how well the gauge measures, and that one seed replays a run to the byte.
#include <cmath>
#include <random>

#include "common/other_process.h"
#include "scenario/system.h"
#include "support/threads/thread.h"

namespace orsanta {

using Accuracy = System;

// Every station measures its parts on a host thread of its own.
TEST_F(Accuracy, Four_Stations_Of_Fifty_Parts) {
  constexpr int Parts = 50;
  Start({1, 2, 3, 4});
  C_Thread hosts[4];
  for (int n = 1; n <= 4; ++n)
    hosts[n - 1].Start("host " + std::to_string(n), [n] {
      Correct_Reference(n);
      std::mt19937_64 random(static_cast<uint64_t>(n));
      std::uniform_real_distribution<double> thickness(1.0, 6.0);
      double sum = 0.0, squares = 0.0;
      for (int k = 0; k < Parts; ++k) {
        const double part_mm = thickness(random);
        const double error_um = (Measure(n, part_mm) - part_mm) * 1000.0;
        EXPECT_LE(std::abs(error_um), 1.0);
        sum += error_um;
        squares += error_um * error_um;
      }
      EXPECT_LE(std::sqrt((squares - sum * sum / Parts) / (Parts - 1)), 0.4);
    });
  for (auto& host : hosts) host.Join();
  EXPECT_TRUE(front->Boxes().empty());
  for (int n = 1; n <= 4; ++n) EXPECT_TRUE(No_Result(n));  // one result for each task, no more
}

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
