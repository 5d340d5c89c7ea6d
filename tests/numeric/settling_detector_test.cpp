#include "numeric/settling_detector.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>

#include "tests/numeric/literal_detector.h"

namespace orsanta {

class Settling_Detector : public testing::Test {
 protected:
  void Start(double window, double threshold) {
    DetectorInit(m_State);
    m_State.WindowLen = window;
    m_State.Threshold = threshold;
  }
  bool Step(double input) {
    m_State.Input = input;
    DetectorStep(m_State);
    return m_State.Settled;
  }
  DetectorState m_State;
};

TEST_F(Settling_Detector, Settles_When_The_Window_Holds_Still_Below_The_Threshold) {
  Start(5, 0.001);
  Step(99999.0);
  for (int i = 0; i < 4; ++i) EXPECT_FALSE(Step(3.25)) << i;
  EXPECT_TRUE(Step(3.25));
  EXPECT_EQ(m_State.Mean, 3.25);
  EXPECT_EQ(m_State.TailCopy[4], 3.25);
  EXPECT_FALSE(Step(3.5));
  EXPECT_EQ(m_State.Mean, 0.0);
  m_State.ErrorStatus = "of memory that was in use";
  m_State.Mean = m_State.Settled = true;
  DetectorInit(m_State);
  EXPECT_FALSE(m_State.Settled);
  EXPECT_EQ(DetectorErrorStatus(m_State), nullptr);
  EXPECT_EQ(m_State.Input + m_State.WindowLen + m_State.Threshold + m_State.Mean, 0.0);
  EXPECT_EQ(m_State.RingPos, 1.0);
  Start(2, 0.25);
  Step(1.0);
  EXPECT_FALSE(Step(1.25)) << "a range equal to the threshold";
  for (const double window : {1e9, 1000.5, std::nan("")}) {
    Start(window, 5.0);
    EXPECT_TRUE(Step(4.0));
    EXPECT_EQ(m_State.Mean, 4.0 / 1000) << "a window beyond the ring is cut to it";
  }
}

// Values that come close to each other, so that windows settle often, with not-a-number, infinity and signed zeros.
TEST_F(Settling_Detector, Equals_The_Literal_Pass_To_The_Bit) {
  for (const unsigned seed : {1u, 2u, 3u, 4u, 5u, 6u}) {
    std::mt19937 random(seed);
    const auto below = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    Start(50, 0.01);
    DetectorState literal = m_State;
    int settled = 0, not_a_number = 0;
    double level = 1.0;
    for (int i = 0; i < 6000; ++i) {
      const double windows[] = {0, 0.5, 1, 1.5, 2, 5, 7.25, 50, 500, 999.5, 1000};
      if (below(40) == 0) m_State.WindowLen = literal.WindowLen = windows[below(11)];
      if (below(60) == 0) m_State.Threshold = literal.Threshold = below(5) == 0 ? 1e300 : 0.002 * below(10);
      if (below(300) == 0) level = 0.1 * below(100) - 3;
      double input = level + 1e-5 * below(1000);
      const bool burst = i % 1500 > 1400;
      if (below(burst ? 2 : 150) == 0) input = std::nan("");
      if (below(500) == 0) input = HUGE_VAL;
      if (below(100) == 0) input = -0.0;
      literal.Input = input;
      Literal_Step(literal);
      Step(input);
      ASSERT_EQ(m_State.Settled, literal.Settled) << "seed " << seed << " step " << i;
      ASSERT_EQ(std::bit_cast<uint64_t>(m_State.Mean), std::bit_cast<uint64_t>(literal.Mean)) << seed << " " << i;
      settled += literal.Settled;
      not_a_number += std::isnan(literal.Mean);
    }
    EXPECT_GT(settled, 1000);
    EXPECT_GT(not_a_number, 100);
  }
}

}  // namespace orsanta
