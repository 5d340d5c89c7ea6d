// How well the gauge measures, and that a run replays.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

#include "scenario/system.h"
#include "support/thread.h"

namespace orsanta {
namespace {

struct C_Errors {
  double largest_um = 0.0;
  double deviation_um = 0.0;
};

C_Errors Summarise(const std::vector<double>& errors_um) {
  C_Errors out;
  double mean = 0.0, squares = 0.0;
  for (const double error : errors_um) mean += error / static_cast<double>(errors_um.size());
  for (const double error : errors_um) {
    squares += (error - mean) * (error - mean);
    out.largest_um = std::max(out.largest_um, std::isnan(error) ? 1e9 : std::abs(error));
  }
  out.deviation_um = std::sqrt(squares / static_cast<double>(errors_um.size() - 1));
  return out;
}

class Accuracy : public System {
 protected:
  using System::System;

  // Every station measures its parts on a host thread of its own; the errors by station, in micrometres.
  std::vector<std::vector<double>> Measure_On_All(int stations, int parts) {
    std::vector<std::vector<double>> errors(static_cast<size_t>(stations));
    std::vector<std::unique_ptr<C_Thread>> hosts;
    for (int n = 1; n <= stations; ++n) {
      hosts.push_back(std::make_unique<C_Thread>());
      hosts.back()->Start("host " + std::to_string(n), [n, parts, &own = errors[static_cast<size_t>(n - 1)]] {
        Correct_Reference(n);
        std::mt19937_64 random(static_cast<uint64_t>(n));
        std::uniform_real_distribution<double> thickness(1.0, 6.0);
        for (int k = 0; k < parts; ++k) {
          const double part_mm = thickness(random);
          own.push_back((Measure(n, part_mm) - part_mm) * 1000.0);
        }
      });
    }
    for (auto& host : hosts) host->Join();
    return errors;
  }
};

TEST_F(Accuracy, FourStationsOfFiftyParts) {
  Start(4);
  for (const std::vector<double>& errors : Measure_On_All(4, 50)) {
    const C_Errors summary = Summarise(errors);
    EXPECT_LE(summary.largest_um, 1.0);
    EXPECT_LE(summary.deviation_um, 0.4);
  }
  EXPECT_TRUE(front->Boxes().empty());
  double thickness = 0.0, force = 0.0;
  for (int n = 1; n <= 4; ++n) EXPECT_EQ(get_ans(n, &thickness, &force), 0);  // one result for each task, no more
}

class Replay : public Accuracy {
 public:
  using Accuracy::Accuracy;
  void TestBody() override {}

  // A run in a fresh process, since the loop's place in the round of stations outlives a system: every result, and
  // every contract call with its time, reads included.
  static std::string Run_In_Child(uint64_t seed) {
    int ends[2];
    if (pipe(ends) != 0) return "no pipe";
    const pid_t child = fork();
    if (child == 0) {
      const std::string record = Replay(seed).Record(seed);
      for (size_t sent = 0; sent < record.size();) {
        const ssize_t count = write(ends[1], record.data() + sent, record.size() - sent);
        if (count <= 0) _exit(1);
        sent += static_cast<size_t>(count);
      }
      _exit(0);
    }
    close(ends[1]);
    std::string record;
    char part[65536];
    for (ssize_t count; (count = read(ends[0], part, sizeof part)) > 0;)
      record.append(part, static_cast<size_t>(count));
    close(ends[0]);
    int status = -1;
    waitpid(child, &status, 0);
    return status == 0 ? record : "the child failed";
  }

 private:
  std::string Record(uint64_t seed) {
    bench::Settings settings;
    settings.seed = seed;
    bench::Reset(settings);
    bench::Journal_Keep_Reads(true);
    Start(3);
    std::string record;
    for (const auto& errors : Measure_On_All(3, 2)) {
      for (const double error : errors) record += std::to_string(error) + "\n";
    }
    Stop();
    return record + bench::Journal_Text();
  }
};

TEST(Replays, OneSeedGivesOneRunToTheByte) {
  const std::string first = Replay::Run_In_Child(7);
  EXPECT_GT(first.size(), 100000U);
  EXPECT_TRUE(Replay::Run_In_Child(7) == first);  // not EXPECT_EQ: nobody reads a difference of megabytes
  EXPECT_FALSE(Replay::Run_In_Child(8) == first);
}

}  // namespace
}  // namespace orsanta
