#include "desktop/display.h"

#include <dlfcn.h>

#include <QDir>
#include <QLibraryInfo>
#include <QPluginLoader>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace orsanta {

namespace {

constexpr int Connect_Tries = 5;
constexpr auto Between_Tries = std::chrono::milliseconds(100);

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

// A connection to the X server of DISPLAY. The client library is loaded here, since the machine may have none. Null
// with the reason where the server does not answer, after some tries, since a server that restarts is away for a
// moment.
std::shared_ptr<void> Reach_X_Server(std::string& reason) {
  using Connect = void* (*)(const char*, int*);
  using Has_Error = int (*)(void*);
  using Disconnect = void (*)(void*);
  void* library = dlopen("libxcb.so.1", RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) {
    reason = "the X client library libxcb.so.1 is missing; install it";
    return nullptr;
  }
  const auto connect = reinterpret_cast<Connect>(dlsym(library, "xcb_connect"));
  const auto has_error = reinterpret_cast<Has_Error>(dlsym(library, "xcb_connection_has_error"));
  const auto disconnect = reinterpret_cast<Disconnect>(dlsym(library, "xcb_disconnect"));
  if (connect == nullptr || has_error == nullptr || disconnect == nullptr) {
    reason = "the X client library libxcb.so.1 lacks its usual functions";
    return nullptr;
  }
  for (int tries = 0; tries < Connect_Tries; ++tries) {
    if (tries > 0) std::this_thread::sleep_for(Between_Tries);
    std::shared_ptr<void> connection(connect(nullptr, nullptr), disconnect);
    if (has_error(connection.get()) == 0) return connection;
  }
  reason = "the display DISPLAY=" + Environment("DISPLAY") + " does not answer";
  return nullptr;
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

std::string Choose_Platform() {
  std::string chosen = Environment("QT_QPA_PLATFORM");
  if (!chosen.empty()) return chosen;
  if (!Environment("DISPLAY").empty()) return "xcb";
  return Environment("WAYLAND_DISPLAY").empty() ? "" : "wayland";
}

}  // namespace

C_Display Find_Display() {
  C_Display display;
  const std::string platform = Choose_Platform();
  const std::string name = platform.substr(0, platform.find_first_of(":;"));
  if (name.empty()) {
    display.reason = "no display: neither DISPLAY nor WAYLAND_DISPLAY is set";
    return display;
  }
  if (name == "xcb" && (display.keeps = Reach_X_Server(display.reason)) == nullptr) return display;
  if (name == "wayland" && !Can_Reach_Wayland(display.reason)) return display;
  if (Can_Load_Platform(name, display.reason)) display.platform = platform;
  return display;
}

}  // namespace orsanta
