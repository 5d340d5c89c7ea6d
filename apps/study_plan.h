// What a study measures, in which order.
#pragma once

#include <string>
#include <vector>

#include "study/text.h"
#include "study_options.h"

namespace app {

struct C_Step {
  std::vector<std::string> fields;  // of the line in data.csv, before the value
  study::C_Text task;               // what a person is asked to place
  std::string part;                 // steps of the same part give about the same value
  double placed_mm = 0.0;           // what the simulator places: the part with the errors of placing
  double force_g = 0.0;
};

// The first line of data.csv.
std::string Data_Head(const C_Study_Options& options);

// All steps. Parts come in random order, trial by trial and appraiser by appraiser; the seed decides.
std::vector<C_Step> Make_Plan(const C_Study_Options& options);

// The steps without those whose lines are in the data already. data: the text of data.csv.
std::vector<C_Step> Steps_Left(std::vector<C_Step> steps, const std::string& data);

}  // namespace app
