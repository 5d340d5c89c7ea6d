// What the fuzz targets share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>

#include "common/temp_folder.h"

// One input; libFuzzer's name. It ends the process where something does not hold, so that the input is kept.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

namespace orsanta {

inline void Demand(bool holds, const char* what) {
  if (!holds) std::fprintf(stderr, "fuzz: %s\n", what), std::abort();
}

// Takes a number from the front of an input; zeros once it is used up.
template <class T>
T Take(std::string& input) {
  T number{};
  input.erase(0, input.copy(reinterpret_cast<char*>(&number), sizeof number));
  return number;
}

}  // namespace orsanta
