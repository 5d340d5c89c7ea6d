// How well the gauge measures.
#include <cmath>
#include <random>

#include "scenario/system.h"
#include "support/threads/thread.h"

namespace orsanta {
namespace {

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

}  // namespace
}  // namespace orsanta
