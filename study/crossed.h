// Values of a crossed study: every appraiser measures every part, equally often.
#pragma once

#include <string>
#include <vector>

namespace study {

// One value as it was measured or read from a file.
struct C_Reading {
  std::string part;
  std::string appraiser;
  std::string trial;
  double value_mm = 0.0;
  int line = 0;  // of the file that it stands in, for messages; 0 for none
};

struct C_Crossed {
  std::vector<std::string> parts;
  std::vector<std::string> appraisers;
  int trials = 0;
  std::vector<double> values_mm;  // part by part, in it appraiser by appraiser, in it trial by trial

  int Parts() const { return static_cast<int>(parts.size()); }
  int Appraisers() const { return static_cast<int>(appraisers.size()); }
  double Value(int part, int appraiser, int trial) const {
    return values_mm[(static_cast<size_t>(part) * appraisers.size() + static_cast<size_t>(appraiser)) *
                         static_cast<size_t>(trials) +
                     static_cast<size_t>(trial)];
  }
};

// Puts readings into their cells. Parts, appraisers and trials come in the order in which they first come up, those
// with numbers for names in the order of the numbers. Throws C_Refused, with the cell named, where a value is missing
// or there twice.
C_Crossed Cross(const std::vector<C_Reading>& readings);

}  // namespace study
