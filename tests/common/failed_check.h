// What tests need of failed checks: which one an action breaks, and the dump of a process that one has ended.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>

#include "common/temp_folder.h"
#include "support/base/assertion.h"
#include "support/base/crash_report.h"

namespace orsanta {

// The source line that the report of the action's failed check names; 0 when no check failed. The report goes to the
// trace log in the working directory.
template <class Action>
int Failed_Check_Line(Action action) {
  int line = 0;
  Throw_On_Failed_Check(true);
  try {
    action();
  } catch (const CMy_Assert_Exception&) {
    const std::string& report = CVCDumpMessage::m_cErrorMsg();
    line = std::atoi(report.c_str() + report.find("\nline: ") + 7);
  }
  Throw_On_Failed_Check(false);
  return line;
}

// A failed check has ended a process with this.
inline const testing::ExitedWithCode Ends_By_A_Failed_Check(CVCDumpMessage::Exit_Status);

// Takes the dump out of the folder and returns its text; empty when there is none or more than one.
inline std::string Take_Dump(const std::filesystem::path& folder = ".") {
  std::string text;
  int dumps = 0;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() != ".dmp") continue;
    EXPECT_EQ(static_cast<int>(entry.status().permissions()), 0600);
    text = File_Text(entry.path());
    std::filesystem::remove(entry.path());
    ++dumps;
  }
  return dumps == 1 ? text : "";
}

}  // namespace orsanta
