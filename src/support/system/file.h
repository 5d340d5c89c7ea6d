// CMyFileCopy: questions about files. Any thread.
#pragma once

#include "support/system/wide_string.h"

namespace orsanta {

class CMyFileCopy {
 public:
  // Non-zero when there is a file under the path. A relative path is taken from the working directory. Never reports.
  static int FileExist(CMyStringW path);
};

}  // namespace orsanta
