// Uncertainty budget of the measuring system and of the measurement process, after ISO 22514-7 and the GUM
// (JCGM 100:2008).
//
// Standard uncertainties, in millimetres:
//
//   CAL  reference       U / k of its certificate            (B, normal)
//   RE   resolution      resolution / (2 sqrt 3)             (B, rectangular)
//   EVR  repeatability   standard deviation on references    (A)
//   BI   bias            |mean bias| / sqrt 3                (B, rectangular)
//   LIN  linearity       greatest |bias of a size - mean bias| / sqrt 3   (B, rectangular)
//   T    temperature     size expansion temperature range / sqrt 3        (B, rectangular)
//   EVO, AV, IA          EV, AV and INT of a crossed study   (A)
//
//   system:   u_MS^2 = CAL^2 + max(EVR, RE)^2 + BI^2 + LIN^2
//   process:  u_MP^2 = CAL^2 + max(EVR, EVO, RE)^2 + BI^2 + LIN^2 + AV^2 + IA^2 + T^2
//   U = 2 u      Q = 100 2 U / T      C_MS = 0.3 T / (6 u_MS)      C_MP = 0.3 T / (3 u_MP)
//
// with T the tolerance's whole width in the last line. The effective degrees of freedom follow Welch and Satterthwaite
// (GUM, G.4). Assumes independent contributions.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "study/anova.h"
#include "study/linearity.h"

namespace study {

struct C_Uncertainty_Settings {
  double tolerance_mm = 0.0;
  double resolution_mm = 0.0;
  double reference_uncertainty_mm = 0.0;  // expanded, of the certificate
  double reference_k = 2.0;
  double temperature_range_k = 1.0;  // the part's temperature stays within +- this of that of the reference block
  double expansion_per_k = 11.5e-6;  // of the part; steel
};

struct C_Contribution {
  std::string name;  // CAL, RE, ...
  double u_mm = 0.0;
  double df = 0.0;  // infinite for type B
  bool in_system = false;
  bool in_process = false;
};

struct C_Capability {
  double u_mm = 0.0;
  double expanded_mm = 0.0;  // k = 2
  double percent = 0.0;      // Q
  double capability = 0.0;   // C
  double df = 0.0;           // effective; infinite when no contribution of type A counts
};

struct C_Uncertainty {
  std::vector<C_Contribution> budget;
  C_Capability system;
  C_Capability process;
  double size_mm = 0.0;  // of the largest reference, for the temperature
};

// references: measured values by reference, at least one reference; the repeatability is pooled over them. grr: of a
// crossed study with the gauge, where one is at hand. Throws C_Refused without a tolerance, for references without
// repeats, and where everything is 0.
C_Uncertainty Work_Out_Uncertainty(const std::vector<C_Reference_Values>& references, const std::optional<C_Anova>& grr,
                                   const C_Uncertainty_Settings& settings);

}  // namespace study
