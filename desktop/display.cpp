#include "desktop/display.h"

#include <dlfcn.h>

#include <QDir>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <cstdlib>
#include <filesystem>

namespace orsanta {

namespace {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// Connects to the X server of DISPLAY and hangs up. The client library is loaded here, since the machine may have none.
bool Can_Reach_X_Server(std::string& reason) {
  using Connect = void* (*)(const char*, int*);
  using Has_Error = int (*)(void*);
  using Disconnect = void (*)(void*);
  void* library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    reason = "the X client library libxcb.so.1 is missing; install it";
    return false;
  }
  const auto connect = reinterpret_cast<Connect>(dlsym(library, "xcb_connect"));
  const auto has_error = reinterpret_cast<Has_Error>(dlsym(library, "xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library, "xcb_disconnect"));
  if (connect == nullptr || has_error == nullptr || disconnect == nullptr) {
    reason = "the X client library libxcb.so.1 lacks its usual functions";
    return false;
  }
  void* connection = connect(nullptr, nullptr);
  const bool reached = has_error(connection) == 0;
  disconnect(connection);
  if (!reached) reason = "the display DISPLAY=" + Environment("DISPLAY") + " does not answer";
  return reached;
}

bool Can_Reach_Wayland(std::string& reason) {
  const std::filesystem::path socket = Environment("WAYLAND_DISPLAY");
  std::error_code error;
  const std::filesystem::path place = socket.is_absolute() ? socket : Environment("XDG_RUNTIME_DIR") / socket;
  if (std::filesystem::exists(place, error)) return true;
  reason = "the display WAYLAND_DISPLAY=" + socket.string() + " does not answer";
  return false;
}

// The platform's plug-in file must be there and load with all that it depends on.
bool Can_Load_Platform(const std::string& platform, std::string& reason) {
  QString folder = qEnvironmentVariable("QT_QPA_PLATFORM_PLUGIN_PATH");
  if (folder.isEmpty()) folder = QLibraryInfo::path(QLibraryInfo::PluginsPath) + QLatin1String("/platforms");
  const QString wanted = QString::fromStdString("libq" + platform);
  for (const QString& file : QDir(folder).entryList({wanted + QLatin1String("*.so")})) {
    QPluginLoader loader(folder + QLatin1Char('/') + file);
    if (loader.load()) return true;
    reason = loader.errorString().toStdString();
  }
  if (reason.empty()) reason = "Qt has no plug-in for the platform \"" + platform + "\"";
  return false;
}

}  // namespace

std::string Find_Display(std::string& reason) {
  std::string platform = Environment("QT_QPA_PLATFORM");
  if (platform.empty()) {
    if (!Environment("DISPLAY").empty()) {
      platform = "xcb";
    } else if (!Environment("WAYLAND_DISPLAY").empty()) {
      platform = "wayland";
    } else {
      reason = "no display: neither DISPLAY nor WAYLAND_DISPLAY is set";
      return "";
    }
  }
  const std::string name = platform.substr(0, platform.find_first_of(":;"));
  if (name == "xcb" && !Can_Reach_X_Server(reason)) return "";
  if (name == "wayland" && !Can_Reach_Wayland(reason)) return "";
  if (!Can_Load_Platform(name, reason)) return "";
  return platform;
}

}  // namespace orsanta
