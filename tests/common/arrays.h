// The system's arrays, from and to rows of numbers.
#pragma once

#include <initializer_list>
#include <vector>

#include "support/base/array.h"

namespace orsanta {

inline CMyArray<double> Array(std::initializer_list<double> values) {
  CMyArray<double> array;
  for (const double value : values) array.Add(value);
  return array;
}

inline std::vector<double> Values(const CMyArray<double>& array) {
  return {array.begin(), array.end()};
}

}  // namespace orsanta
