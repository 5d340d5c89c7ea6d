// The folder of a study: what was asked for (plan.json), the measured values (data.csv), and what came out
// (result.json, report.html). A value is on the disk before the next one is measured.
#pragma once

#include <filesystem>
#include <string>

#include "study_options.h"

namespace app {

class C_Study_Folder {
 public:
  // Makes the folder. All members throw std::runtime_error, with the file named, where the disk refuses.
  explicit C_Study_Folder(const std::string& path);

  std::string Path_Of(const std::string& name) const { return (m_Path / name).string(); }
  bool Holds(const std::string& name) const { return std::filesystem::exists(m_Path / name); }
  std::string Read(const std::string& name) const;
  // Replaces the file as a whole.
  void Write(const std::string& name, const std::string& text) const;

  // The options of the study that was begun here.
  C_Study_Options Read_Plan() const;
  // The values measured so far. A last line that was not written whole is taken off the file.
  std::string Take_Up_Data() const;
  // Adds one line to data.csv and waits until the disk has it.
  void Add_Line(const std::string& line) const;

 private:
  std::filesystem::path m_Path;
};

}  // namespace app
