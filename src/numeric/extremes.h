// The largest and the smallest of a row of numbers, not-a-number values skipped.
//
// The first number starts and a later one takes over only if it is greater (smaller), so the first of equal ones
// stands. Without a single number among them the result is not-a-number.
#pragma once

#include <span>

namespace orsanta {

// values: at least one.
inline double Largest(std::span<const double> values) {
  double largest = values[0];
  for (const double value : values) {
    if (value > largest || largest != largest) largest = value;
  }
  return largest;
}

// values: at least one.
inline double Smallest(std::span<const double> values) {
  double smallest = values[0];
  for (const double value : values) {
    if (value < smallest || smallest != smallest) smallest = value;
  }
  return smallest;
}

}  // namespace orsanta
