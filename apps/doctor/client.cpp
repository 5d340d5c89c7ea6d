// The client library, the motion server behind it, and the devices on the bus.
#include <dlfcn.h>

#include <filesystem>
#include <string>

#include "checks.h"
#include "drive/tremalink.h"
#include "simulator_loaded.h"
#include "support/time/clock.h"

namespace doctor {
namespace {

constexpr int Server_Is_Local = 1;
constexpr int Tries = 10;
constexpr int Sleep_Ms = 100;
constexpr int Last_Can_Id = 63;
constexpr int Card_Id = 15;

std::string Client_Path() {
  Dl_info found{};
  const bool known = dladdr(reinterpret_cast<const void*>(&ConnectControlServer), &found) != 0;
  if (!known || found.dli_fname == nullptr) return "libtremalink.so";
  return std::filesystem::path(found.dli_fname).lexically_normal();
}

bool Connects() {
  for (int i = 0; i < Tries; ++i) {
    if (ConnectControlServer(L"", 0, nullptr) != 0) return true;
    orsanta::Sleep(Sleep_Ms);
  }
  return false;
}

std::string Devices() {
  std::string ids;
  for (int id = 1; id <= Last_Can_Id; ++id) {
    int there = 0;
    CheckDeviceExist(id, &there);
    if (there != 0) ids += (ids.empty() ? "" : ", ") + std::to_string(id) + (id == Card_Id ? " (the IO card's)" : "");
  }
  return ids;
}

}  // namespace

void Check_Client(C_Findings& findings, bool bus_is_free) {
  findings.Good("client library", Client_Path() + (app::On_Simulator() ? ", the simulator" : ", a machine's"));
  if (!bus_is_free) {
    findings.Note("motion server", "not asked: another process works in this folder, see the stores");
    return;
  }
  InitDevice_PC_Local_Controler(Server_Is_Local, 0);
  if (Connects()) {
    findings.Good("motion server", "answers");
    const std::string devices = Devices();
    if (devices.empty()) {
      findings.Bad("bus", "no device answers; check the supply, the CAN line and the CAN ids of the drives");
    } else {
      findings.Good("bus", "devices with the CAN ids " + devices);
    }
  } else {
    findings.Bad("motion server", "refuses the connection; start or restart it");
  }
  ReleaseDevice();
}

}  // namespace doctor
