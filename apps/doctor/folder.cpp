// The working directory, and the stores in it.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string>
#include <vector>

#include "checks.h"
#include "support/store/store_access.h"
#include "support/store/store_claim.h"
#include "support/system/wide_string.h"

namespace doctor {
namespace {

namespace fs = std::filesystem;
using orsanta::C_Store_State;

constexpr uintmax_t Low_Bytes = uintmax_t{50} << 20;

// The files in the working directory that are stores, or copies of damaged ones.
std::vector<std::string> Store_Names() {
  std::vector<std::string> names;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(".", none)) {
    const std::string name = entry.path().filename().string();
    const bool named = name == "pw_file.dat" || name.ends_with("参数") || name.ends_with(".bad");
    if (named) names.push_back(name);
  }
  return names;
}

void Check_Writable(C_Findings& findings) {
  std::error_code none;
  const std::string folder = fs::current_path(none).string();
  std::string probe = "orsanta-doctor-XXXXXX";
  const int file = mkstemp(probe.data());
  if (file < 0) return findings.Bad("folder", folder + " cannot be written: " + std::strerror(errno));
  close(file);
  unlink(probe.c_str());
  const uintmax_t free_bytes = fs::space(".", none).available;
  const std::string space = std::to_string(free_bytes >> 20) + " MiB free";
  if (free_bytes < Low_Bytes) return findings.Bad("folder", folder + ": only " + space + "; saves may fail");
  findings.Good("folder", folder + " can be written, " + space);
}

std::string First_Fault(const orsanta::C_Store_Report& report) {
  if (report.faults.empty()) return "";
  const orsanta::C_Store_Fault& fault = report.faults.front();
  return ", line " + std::to_string(fault.line) + ": " + orsanta::To_Utf8(fault.text);
}

void Check_Store(C_Findings& findings, const std::string& name) {
  const orsanta::C_Store_Reading reading = orsanta::Read_Store(name);
  switch (reading.report.state) {
    case C_Store_State::Whole:
      return findings.Good("store", name + ", " + std::to_string(reading.content.entries.size()) + " values");
    case C_Store_State::Faulty:
      return findings.Bad("store", name + " has lines that cannot be taken" + First_Fault(reading.report) +
                                       "; mend it while no program runs");
    case C_Store_State::Unread:
      return findings.Bad("store", name + " cannot be read: " + std::strerror(reading.report.error));
    case C_Store_State::Broken:
      return findings.Bad("store", name + " is no whole store" + First_Fault(reading.report) +
                                       "; put a backup in its place, or its .bad copy mended");
    case C_Store_State::Missing:
      return;
  }
}

}  // namespace

bool Check_Folder(C_Findings& findings) {
  Check_Writable(findings);
  bool is_free = true;
  const std::vector<std::string> names = Store_Names();
  for (const std::string& name : names) {
    if (name.ends_with(".bad")) {
      findings.Note("store", name + " is a copy of a damaged store; delete it once its values are back in place");
      continue;
    }
    orsanta::C_Store_Claim claim;
    if (const int owner = claim.Take(name); owner != 0) {
      is_free = false;
      findings.Note("store", name + " is in use by process " + std::to_string(owner));
    }
    Check_Store(findings, name);
  }
  if (names.empty()) findings.Note("store", "none here yet: the first start in this folder uses defaults");
  return is_free;
}

}  // namespace doctor
