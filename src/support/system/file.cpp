#include "support/system/file.h"

#include <sys/stat.h>

#include "support/system/working_folder.h"

namespace orsanta {

int CMyFileCopy::FileExist(CMyStringW path) {
  struct stat about {};
  return stat(In_Working_Folder(To_Utf8(path.Text())).c_str(), &about) == 0 && !S_ISDIR(about.st_mode) ? 1 : 0;
}

}  // namespace orsanta
