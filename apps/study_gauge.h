// The gauge that a study measures with: one station, on the simulator or on a machine, driven through the public
// functions.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "study_options.h"
#include "study_plan.h"
#include "working_folder.h"

namespace app {

class C_Study_Gauge {
 public:
  // Starts the system. On the simulator: in a folder of its own, with the force calibrated first where the study asks
  // for it. On a machine: on the stores in the working directory. language: of the questions. Throws std::runtime_error
  // where the station does not stand.
  C_Study_Gauge(const C_Study_Options& options, study::C_Language language);
  // Stops the system. On a machine the operator's set force and block come back.
  ~C_Study_Gauge();
  C_Study_Gauge(const C_Study_Gauge&) = delete;
  C_Study_Gauge& operator=(const C_Study_Gauge&) = delete;

  // Measures the reference block; on a machine the person places it, or keeps the stored reference. False when the
  // study was ended.
  bool Correct_Reference();
  // Has the part placed and measures it, for the force study its force. Nothing when the study was ended, or no value
  // came that can be true. progress: how far the study is, for the person.
  std::optional<double> Take(const C_Step& step, const std::string& progress);

  // The landing speed in the station's store, mm/s; 0 where it has none.
  double Speed() const;

 private:
  void Start();
  bool Place(const C_Step& step, const std::string& progress) const;
  bool Press(const C_Step& step, double& thickness_mm) const;
  std::optional<double> Read_Force() const;
  bool Plausible(const C_Step& step, double thickness_mm);

  const C_Study_Options& m_Options;
  study::C_Language m_Language;
  std::unique_ptr<C_Working_Folder> m_Folder;  // on the simulator
  std::map<std::string, double> m_First;       // the first value of each part
  double m_Force_Before = 0.0, m_Block_Before = 0.0;
};

}  // namespace app
