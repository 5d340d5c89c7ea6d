// Runs a fuzz target over every file of a folder, for compilers without a fuzzer.
#include "fuzz/fuzz.h"

int main(int /*argc*/, char** argv) {
  for (const auto& item : std::filesystem::directory_iterator(argv[1])) {
    const std::string bytes = orsanta::File_Text(item.path());
    LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size());
  }
}
