#include "support/system/environment.h"

#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace orsanta {

namespace {

constexpr const char* Installed_Folder = "orsanta/";  // beside an installed library

bool Find_Beside(const char* neighbour, const char* folder, const char* file_name, char (&path)[PATH_MAX]) {
  const char* slash = std::strrchr(neighbour, '/');
  if (slash == nullptr) return false;
  const int length =
      std::snprintf(path, sizeof(path), "%.*s/%s%s", static_cast<int>(slash - neighbour), neighbour, folder, file_name);
  return length > 0 && static_cast<size_t>(length) < sizeof(path) && access(path, R_OK) == 0;
}

bool Is_Set(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

const char* Library_Path() {
  Dl_info self{};
  const bool known = dladdr(reinterpret_cast<const void*>(&Library_Path), &self) != 0 && self.dli_fname != nullptr;
  return known ? self.dli_fname : "";
}

bool Find_Beside_Library(const char* file_name, char (&path)[PATH_MAX]) {
  const char* library = Library_Path();
  if (Find_Beside(library, "", file_name, path) || Find_Beside(library, Installed_Folder, file_name, path)) return true;
  char program[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", program, sizeof(program) - 1);
  if (length <= 0) return false;
  program[length] = '\0';
  return Find_Beside(program, "", file_name, path);
}

bool Has_Display() {
  return Is_Set("DISPLAY") || Is_Set("WAYLAND_DISPLAY");
}

}  // namespace orsanta
