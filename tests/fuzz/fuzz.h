// What the fuzz targets share.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>

#include "common/temp_folder.h"

// What a target does with one input. It ends the process where something does not hold, so that the input is kept.
void Fuzz(std::string input);

// libFuzzer's name for it.
extern "C" [[gnu::used]] inline int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Fuzz({reinterpret_cast<const char*>(data), size});
  return 0;
}

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
