// Runs a fuzz target over every file of a folder, for compilers without a fuzzer.
#include "fuzz/fuzz.h"

int main(int /*argc*/, char** argv) {
  for (const auto& item : std::filesystem::directory_iterator(argv[1])) Fuzz(orsanta::File_Text(item.path()));
}
