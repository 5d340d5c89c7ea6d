#include "support/system/working_folder.h"

#include <unistd.h>

#include <atomic>
#include <climits>

namespace orsanta {

namespace {

constinit char the_folder[PATH_MAX] = "";
constinit std::atomic<bool> the_folder_is_taken{false};

}  // namespace

void Take_Working_Folder() {
  Release_Working_Folder();
  the_folder_is_taken = getcwd(the_folder, sizeof(the_folder)) != nullptr;
}

void Release_Working_Folder() {
  the_folder_is_taken = false;
}

const char* Working_Folder() {
  return the_folder_is_taken ? the_folder : "";
}

std::string In_Working_Folder(const std::string& name) {
  const std::string folder = Working_Folder();
  return folder.empty() || name.starts_with('/') ? name : folder + "/" + name;
}

}  // namespace orsanta
