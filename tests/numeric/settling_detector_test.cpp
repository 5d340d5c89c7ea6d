#include "numeric/settling_detector.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <random>

#include "tests/numeric/literal_detector.h"

namespace orsanta {

// Values that come close to each other, so that windows settle often, with not-a-number, infinity and signed zeros. The
// others are multiples of 2^-16, and the thresholds too: a range can be equal to the threshold, which is not settled.
TEST(Settling_Detector, Equals_The_Literal_Pass_To_The_Bit) {
  for (const unsigned seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
    std::mt19937 random(seed);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    DetectorState state, literal{};
    literal.RingPos = 1.0;
    std::iota(literal.RingOffsets, std::end(literal.RingOffsets), 1.0);
    std::memset(&state, 0x41, sizeof(state));  // as memory that was in use
    DetectorInit(state);
    EXPECT_EQ(state.Input + state.WindowLen + state.Threshold + state.Mean + state.Settled, 0.0);
    EXPECT_EQ(DetectorErrorStatus(state), nullptr);
    std::copy_n(state.TailCopy, Detector_Ring_Size, literal.TailCopy);
    int settled = 0, not_a_number = 0;
    double level = 1.0;
    for (int i = 0; i < 6000; ++i) {
      const double windows[] = {0, 0.5, 1, 1.5, 2, 5, 7.25, 50, 500, 999.5, 1000, 1000.5, 1e9, std::nan("")};
      if (below(40) == 0) state.WindowLen = literal.WindowLen = windows[below(14)];
      if (below(60) == 0) state.Threshold = literal.Threshold = below(5) == 0 ? 1e300 : below(10) / 512.0;
      if (below(300) == 0) level = below(100) / 16.0 - 3.0;
      double input = level + below(650) / 65536.0;
      const bool burst = i % 1500 > 1400;
      if (below(burst ? 2 : 150) == 0) input = std::nan("");
      if (below(500) == 0) input = HUGE_VAL;
      if (below(100) == 0) input = -0.0;
      state.Input = literal.Input = input;
      Literal_Step(literal);
      DetectorStep(state);
      ASSERT_EQ(state.Settled, literal.Settled) << "seed " << seed << " step " << i;
      ASSERT_EQ(std::memcmp(&state.Mean, &literal.Mean, sizeof(double)), 0) << seed << " " << i;
      ASSERT_EQ(std::memcmp(state.TailCopy, literal.TailCopy, sizeof(state.TailCopy)), 0) << seed << " " << i;
      settled += literal.Settled;
      not_a_number += std::isnan(literal.Mean);
    }
    EXPECT_GT(settled, 1000);
    EXPECT_GT(not_a_number, 100);
  }
}

}  // namespace orsanta
