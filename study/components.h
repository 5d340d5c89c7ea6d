// The components of the variation in a crossed study, as standard deviations in millimetres.
#pragma once

#include <string>

namespace study {

struct C_Components {
  double EV = 0.0;   // equipment: repeatability
  double AV = 0.0;   // appraisers
  double INT = 0.0;  // interaction of parts and appraisers
  double GRR = 0.0;  // EV, AV and INT together
  double PV = 0.0;   // parts
  double TV = 0.0;   // all together

  // Fills GRR and TV from the others.
  void Add_Up();
  // Of the total variation.
  double Percent(double component) const { return 100.0 * component / TV; }
  double Percent_GRR() const { return Percent(GRR); }
  // Number of distinct categories, cut to a whole number: 1.41 PV / GRR. -1 where GRR is 0 and it has no limit.
  int Ndc() const;
};

// A component in percent of a tolerance: six standard deviations against its whole width.
double Percent_Of_Tolerance(double component_mm, double tolerance_mm);

}  // namespace study
