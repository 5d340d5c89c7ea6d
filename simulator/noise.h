// Reproducible noise. A value depends on its key alone and on no earlier draw, so a sample has the same noise whether
// or not the ones before it were read.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>

namespace simulator {

// The finaliser of the SplitMix64 generator: every bit of the key reaches every bit of the result.
inline uint64_t Mix(uint64_t key) {
  key += 0x9E3779B97F4A7C15ULL;
  key = (key ^ (key >> 30)) * 0xBF58476D1CE4E5B9ULL;
  key = (key ^ (key >> 27)) * 0x94D049BB133111EBULL;
  return key ^ (key >> 31);
}

// Uniform in (0, 1].
inline double Uniform(uint64_t key) {
  return (static_cast<double>(Mix(key) >> 11) + 1.0) * 0x1p-53;
}

// Normal with mean 0 and standard deviation 1, by the Box-Muller transform.
inline double Gauss(uint64_t key) {
  const double radius = std::sqrt(-2.0 * std::log(Uniform(key)));
  return radius * std::cos(2.0 * std::numbers::pi * Uniform(~key));
}

}  // namespace simulator
