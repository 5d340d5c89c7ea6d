// A station in the simulated machine room, under the simulated clock, in a folder of its own, with a scripted operator.
#pragma once

#include <gmock/gmock.h>

#include "common/arrays.h"
#include "common/drive_order.h"
#include "common/simulated_test.h"
#include "drive/motor.h"
#include "station/voice_motor.h"
#include "support/threads/thread.h"

namespace orsanta {

constexpr int Id = 1;      // of the station's drive
constexpr int Board = 40;  // id of the temperature board, which no station reads by default

class C_Station_Test : public C_Simulated_Test {
 protected:
  C_Station_Test() : C_Simulated_Test({.drives = 1, .temperature_boards = {Board}}) { Make_Station(); }

  // Builds the station as the supervisor does, anew if there was one: the old one saves first.
  void Make_Station() {
    station.reset();
    station = std::make_unique<C_VoiceMotor>(Id, 0, 0, 0, 1, 1, -1, -1, -1);
  }

  // The simulator's own force law where the probe hangs free, near enough to land with about the force asked for.
  void Use_Linear_Model() {
    station->Val_Force_KK = 0.0;
    station->Val_Force_K = 100.0;
    station->Val_Static_GForce = -4.0;
  }

  // Fits the surface F = 2 + 3 I + 0.5 P + 0.25 I P + 0.125 I P^2.
  void Give_Surface() {
    station->Surface_Fit(Array({1, 2, 1, 2, 1, 2}), Array({0, 0, 2, 2, 4, 4}), Array({5, 8, 7, 11, 10, 16}));
  }

  double Measure(double force = 200.0) {
    return station->Detection_thickness(20.0F, static_cast<float>(station->Landing_Current(force)));
  }

  // Cuts the drive's streams off and takes out what still waits in them.
  void Fall_Silent() {
    simulator::Set_Silent(Id, true);
    while (station->m_pMotor->Get_InterRunFlag() != 2) continue;
    station->m_pMotor->Clear_Pos_Window(station->m_pMotor->m_PosWindow);
    front->Clear_Record();
  }

  // Where the drive was sent since the journal was cleared, "go 6.00 go 0.00 ".
  static std::string Targets() {
    std::string targets;
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      const std::string order = Drive_Order(call, Id);
      if (order.rfind("go ", 0) == 0) targets += order + " ";
    }
    return targets;
  }

  // The cycle fails with a box that begins so, and nothing goes to the drive but what puts the probe up.
  void Expect_No_Landing(const std::function<double()>& cycle, const std::wstring& box) {
    front->Clear_Record();
    simulator::Journal_Clear();
    station->Ans_Valid = 1;
    EXPECT_EQ(cycle(), -99.0);
    EXPECT_EQ(station->Ans_Valid, 0);
    EXPECT_THAT(front->Boxes(), testing::ElementsAre(testing::StartsWith(box)));
    EXPECT_EQ(Targets(), "");
    EXPECT_EQ(simulator::Journal_Text().find("nan"), std::string::npos);
  }

  // The numbers of a vector file.
  static std::vector<double> Load(const std::string& name) {
    std::vector<double> values;
    std::ifstream file("历史数据/" + name);
    for (std::string line; std::getline(file, line);) {
      if (line[0] != '#') values.push_back(std::stod(line));
    }
    return values;
  }

  std::unique_ptr<C_VoiceMotor> station;
};

}  // namespace orsanta
