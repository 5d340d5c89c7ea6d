#include "station/station_parameters.h"

namespace orsanta {

// A key is spelled as its member.
#define MEMBER(name) #name, &name

std::vector<C_Parameter> C_Station_Parameters::Parameters() {
  // clang-format off
  return {
      {MEMBER(Val_Force_OffSet), 0, "g", {.panel = {-200, 200}, .dialog = {-10000, 10000}},
       "correction of set force 1 in the automatic cycle alone"},
      {MEMBER(Val_Force_Set[0]), 200, "g", {.panel = {0, 1000}, .dialog = {0, 10000}},
       "set force 1: of every measurement"},
      {MEMBER(Val_Force_Set[1]), 200, "g", {.panel = {0, 1000}, .dialog = {0, 10000}},
       "set force 2: of the two-force measurement"},
      {MEMBER(Val_Acc_Set[0]), 5000, "mm/s^2", {.panel = {1000, 60000}, .dialog = {1, 200000}},
       "acceleration, sent at the start and by the panel"},
      {MEMBER(Val_Acc_Set[1]), 5000, "mm/s^2", {.dialog = {1, 200000}}, "kept; nothing uses it"},
      {MEMBER(Val_Pos_Set[0]), 0, "mm", {}, "stored position"},
      {MEMBER(Val_Pos_Set[1]), 0, "mm", {}, "half the key travel"},
      {MEMBER(Val_Pos_Set[2]), 0, "mm", {}, "stored position, which the start margin counts from"},
      {MEMBER(Val_HoldTime_Set[0]), 0, "ms", {.dialog = {0, 50000}}, "kept; nothing uses it"},
      {MEMBER(Val_HoldTime_Set[1]), 0, "ms", {.dialog = {0, 50000}}, "kept; nothing uses it"},
      {MEMBER(Val_Speed_Set[0]), 20, "mm/s", {.dialog = {0.1, 5000}},
       "landing speed: measurement, reference correction"},
      {MEMBER(Val_Speed_Set[1]), 20, "mm/s", {.dialog = {0.1, 5000}}, "landing speed: force calibration"},
      {MEMBER(Val_Speed_Set[2]), 20, "mm/s", {.dialog = {0.1, 5000}}, "kept; nothing uses it"},
      {MEMBER(Val_UpSpeed_Set), 20, "mm/s", {.dialog = {0.1, 5000}}, "speed of the force-back"},
      {MEMBER(test_distance), 10, "mm", {.panel = {1, 30}, .calibration = {1, 50}},
       "target of a landing: its greatest travel"},
      {MEMBER(Val_BeginePoint_offset), 0, "mm", {.panel = {0, 10}, .dialog = {-40, 40}}, "target of the force-back"},
      {MEMBER(Val_Static_GForce), 0, "g", {.calibration = {-300, 500}}, "constant term of the force polynomial"},
      {MEMBER(Val_Force_K), 0.001, "g/A", {.calibration = {-300, 500}}, "linear term of the force polynomial"},
      {MEMBER(Val_Force_KK), 1, "g/A^2", {}, "square term of the force polynomial"},
      {MEMBER(m_P), 0, "", {}, "coefficients of the force surface; used once there are more than 3"},
      {MEMBER(Val_BaseDistance), 0, "mm", {}, "position of the reference surface at the start"},
      {MEMBER(Val_Block_Size), 0, "mm", {.panel = {0, 500}}, "size of the reference block, added to every thickness"},
      {MEMBER(Val_Error_offset), 0, "mm", {.panel = {-1, 1}}, "added to the result of a measurement with one force"},
      {MEMBER(Val_ErrorThreshold), 5, "um", {.panel = {-1, 1000}}, "settling band: the settling window spans no more"},
      {MEMBER(Val_ErrorWindowLen), 50, "samples of 2 ms", {.panel = {0.5, 500}}, "settling window"},
      {MEMBER(Val_Run_Negative), 0, "0 or 1", {}, "1: the limit of a landing goes out as its mirror image"},
      {MEMBER(Val_Jerk_Set), 10000000, "mm/s^3", {.dialog = {1, 1e12}}, "jerk, handed to the drive at the start"},
      {MEMBER(Val_mark_pos), 0, "mm", {}, "where the spring force is zero: position of the first calibration landing"},
      {MEMBER(Val_Spring_K), 0, "g/mm", {.panel = {0, 64}, .dialog = {-1000, 1000}, .calibration = {-300, 500}},
       "spring rate of the suspension"},
      {MEMBER(Val_SensorScale), 1000, "counts/mm", {.panel = {1, 1e9}}, "scale of the encoder"},
      {MEMBER(Val_Correction_MaxI), 1, "A", {.calibration = {-5, 10}}, "greatest current of a calibration"},
      {MEMBER(Val_Correction_MinI), 0, "A", {.calibration = {-5, 10}}, "least current of a calibration"},
      {MEMBER(Val_Sendback_Frq), 500, "Hz", {}, "kept; nothing uses it"},
      {MEMBER(Val_FC_test_num), 5, "", {.calibration = {4, 10}}, "currents of a calibration at each height"},
      {"Val_Pos_Friction[0].MyArrayBasisList", &Val_Pos_Friction[0].BasisList, 0, "mm", {},
       "friction in one direction, kept for later use: centres of the steps of its fit"},
      {"Val_Pos_Friction[0].MyArrayP", &Val_Pos_Friction[0].p, 0, "g", {}, "their weights"},
      {"Val_Pos_Friction[0].xscale", &Val_Pos_Friction[0].xscale, 0, "mm", {}, "their width"},
      {"Val_Pos_Friction[1].MyArrayBasisList", &Val_Pos_Friction[1].BasisList, 0, "mm", {},
       "friction in the other direction, kept for later use: centres of the steps"},
      {"Val_Pos_Friction[1].MyArrayP", &Val_Pos_Friction[1].p, 0, "g", {}, "their weights"},
      {"Val_Pos_Friction[1].xscale", &Val_Pos_Friction[1].xscale, 0, "mm", {}, "their width"},
      {MEMBER(Val_Head_mg), 0, "mg", {}, "mass of the measuring head; nothing uses it"},
      {MEMBER(Val_TempSensorCanID), 0, "", {.panel = {0, 64}},
       "CAN id of the temperature board, 0: none; from the next start on"},
  };
  // clang-format on
}

C_Station_Parameters::C_Station_Parameters() {
  for (const C_Parameter& row : Parameters()) {
    const auto set_number = [&](auto* member) {
      if constexpr (requires { +*member; }) *member = static_cast<decltype(+*member)>(row.initial);
    };
    std::visit(set_number, row.member);
  }
}

C_Entry_Ranges C_Station_Parameters::Ranges_Of(const void* parameter) {
  for (const C_Parameter& row : Parameters()) {
    if (std::visit([&](const auto* member) { return member == parameter; }, row.member)) return row.ranges;
  }
  MY_ASSERT_REPORT("a dialog edits a parameter that has no row");
}

int C_Station_Parameters::Set_RunNegative(int flag) {
  if (flag != 0 && flag != 1) return 0;
  Val_Run_Negative = flag == 1 ? 0 : 1;
  return 1;
}

int C_Station_Parameters::Get_Key_Window(double& start_margin, double& key_dis) const {
  start_margin = Val_Pos_Set[2] - (Val_Pos_Set[0] - Val_Pos_Set[1]);
  key_dis = 2.0 * Val_Pos_Set[1];
  return 1;
}

int C_Station_Parameters::Set_Key_Window(double /*start_margin*/, double /*key_dis*/) {
  double start_margin = 0.0;
  double key_dis = 0.0;
  Get_Key_Window(start_margin, key_dis);
  const double half = key_dis / 2.0;
  Val_Pos_Set[0] = Val_Pos_Set[2] - start_margin + half;
  Val_Pos_Set[1] = half;
  return 1;
}

}  // namespace orsanta
