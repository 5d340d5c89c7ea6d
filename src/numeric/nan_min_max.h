// The largest and the smallest of a row of numbers, not-a-number values skipped.
//
// The first number starts and a later one takes over only if it is greater (smaller), so the first of equal ones
// stands. Without a single number among them the result is not-a-number.
#pragma once

#include <limits>
#include <span>

namespace orsanta {

inline double Largest(std::span<const double> values) {
  double largest = std::numeric_limits<double>::quiet_NaN();
  for (const double value : values) {
    if (value > largest || largest != largest) largest = value;
  }
  return largest;
}

inline double Smallest(std::span<const double> values) {
  double smallest = std::numeric_limits<double>::quiet_NaN();
  for (const double value : values) {
    if (value < smallest || smallest != smallest) smallest = value;
  }
  return smallest;
}

}  // namespace orsanta
