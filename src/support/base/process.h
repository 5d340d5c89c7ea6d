// The running program: its path and the parts of one, and the processes of a name. Any thread.
#pragma once

#include <string>

#include "support/base/array.h"

namespace orsanta {

class CMyExecuteProc {
 public:
  // Full path of the running application; empty when the system does not know it.
  static std::wstring GetCurApplicationFilePath();

  // Cuts a path into four parts that give the path again when they are joined.
  // drive: a letter with its colon, else empty. dir: up to and with the last separator ('/' or '\').
  // name: of the file, without its extension. ext: from the last dot of the file's name on, with the dot; a name that
  // only begins with a dot has none.
  static void SplitPath(const std::wstring& path, std::wstring& drive, std::wstring& dir, std::wstring& name,
                        std::wstring& ext);
};

class CProcessAndThreadSnapShot {
 public:
  // Appends to `ids` the id of each running process with that image name: the file name of its executable, or of the
  // command it was started as. Returns how many were appended.
  static int GetProcessIDFromProcessName(const std::wstring& name, CMyArray<int>& ids, int reserved);
};

}  // namespace orsanta
