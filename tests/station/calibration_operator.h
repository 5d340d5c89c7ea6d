// An operator who calibrates the station with CAN id 1 on the simulator: moves the head from height to height and types
// what the force gauge under the probe reads.
#pragma once

#include "common/scripted_front.h"
#include "simulator/simulator.h"

namespace orsanta {

struct C_Calibration_Operator {
  double max_current = 1.0;
  double min_current = 0.4;
  int currents = 4;
  std::vector<double> heights = {0.0};  // of the head against its setting, mm
  std::vector<double> readings = {};    // what was typed, g

  // Sets the answers up; call Calibrate_Force then.
  void Prepare(C_Scripted_Front& front) {
    front.Next_Dialog(Settings());
    for (const double height : heights) {
      front.On_Box(L"请调整测量头高度", Answer_Ok, 0, [height] { simulator::Set_Head_Height(1, height); });
      const auto read_gauge = [this] {
        readings.push_back(simulator::Force_Gauge(1));
        return std::wstring(Format_Text("%.2f", readings.back()).Text());
      };
      for (int i = 0; i < currents; ++i) front.Next_Dialog(C_Script().Fill(L"请输入当前推力(g)", read_gauge).Confirm());
    }
  }

  C_Script Settings() const {
    return C_Script()
        .Fill(L"请输入测试最大电流(A)", std::to_wstring(max_current))
        .Fill(L"请输入测试最小电流(A)", std::to_wstring(min_current))
        .Fill(L"测试采集的电流点数", std::to_wstring(currents))
        .Fill(L"测试采集的位置点数", std::to_wstring(heights.size()))
        .Confirm();
  }
};

}  // namespace orsanta
