#include "support/dialog/front.h"

#include <dlfcn.h>

#include <string>
#include <thread>

#include "support/base/replaceable.h"
#include "support/dialog/console_front.h"
#include "support/system/environment.h"
#include "support/system/error_stream.h"
#include "support/system/priority.h"

namespace orsanta {

namespace {

constexpr const char* Plug_In_Name = "liborsanta_desktop.so";
constexpr const char* Plug_In_Entry = "orsanta_make_front";

// The desktop front, or null with one line that says why.
std::unique_ptr<C_Front> Load_Desktop_Front() {
  const auto give_up = [](const std::string& reason) {
    Write_Error_Stream("orsanta: " + reason + "; messages go to this stream, and dialogs count as cancelled\n");
    return nullptr;
  };
  char path[PATH_MAX];
  if (!Find_Beside_Library(Plug_In_Name, path))
    return give_up(std::string("no desktop front, ") + Plug_In_Name + " is not beside the library");
  // Never unloaded: its window library keeps threads and static objects.
  void* plug_in = dlopen(path, RTLD_NOW | RTLD_LOCAL);
  if (plug_in == nullptr) return give_up(std::string("the desktop front cannot be loaded: ") + dlerror());
  const auto make_front = reinterpret_cast<Make_Front_Function>(dlsym(plug_in, Plug_In_Entry));
  if (make_front == nullptr) return give_up(std::string(path) + " is no desktop front, it lacks " + Plug_In_Entry);
  return std::unique_ptr<C_Front>(make_front());  // it says itself why it does not start
}

std::unique_ptr<C_Front> Make_Built_In_Front() {
  std::unique_ptr<C_Front> front;
  if (Has_Display()) {
    // On a thread at the normal level: what the front starts for its windows inherits that, whoever asked for it first.
    std::thread([&front] {
      SetThreadPriority(Priority_Normal);
      front = Load_Desktop_Front();
    }).join();
  }
  if (front == nullptr) front = std::make_unique<C_Console_Front>();
  return front;
}

}  // namespace

C_Front& Front() {
  C_Front& front = C_Replaceable<C_Front>::Instance().Get(&Make_Built_In_Front);
  front.On_Used();
  return front;
}

std::unique_ptr<C_Front> Replace_Front(std::unique_ptr<C_Front> front) {
  return C_Replaceable<C_Front>::Instance().Replace(std::move(front));
}

}  // namespace orsanta
