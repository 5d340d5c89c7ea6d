#include "numeric/runtime_check.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace orsanta {

void Fail_Runtime_Check(const char* routine, int line, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  std::vfprintf(stderr, format, arguments);
  va_end(arguments);
  std::fprintf(stderr, "\nError in %s (line %d)\n", routine, line);
  std::abort();
}

void Fail_Index_Check(const char* routine, int line, int index, int last, const char* array) {
  if (array == nullptr) {
    Fail_Runtime_Check(routine, line, "Index exceeds array dimensions.  Index value %d exceeds valid range [%d-%d].",
                       index, 1, last);
  }
  Fail_Runtime_Check(routine, line,
                     "Index exceeds array dimensions.  Index value %d exceeds valid range [%d-%d] of array %s.", index,
                     1, last, array);
}

}  // namespace orsanta
