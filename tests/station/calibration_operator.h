// An operator who calibrates a station on the bench: moves the head from height to height and types what the force
// gauge under the probe reads.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "common/scripted_front.h"

namespace orsanta {

struct C_Calibration_Operator {
  int can_id = 1;
  double max_current = 1.0;
  double min_current = 0.4;
  int currents = 4;
  std::vector<double> heights = {0.0};  // of the head against its setting, mm
  std::vector<double> readings = {};    // what was typed, g

  // Currents and heights that cover forces to some 450 g on parts to 7 mm.
  void Cover_The_Range() {
    max_current = 5.0;
    min_current = 0.5;
    currents = 10;
    heights = {-8.0, -6.0, -4.0, -2.0, 0.0};
  }

  // Sets the answers up; call Calibrate_Force then.
  void Prepare(C_Scripted_Front& front) {
    front.On_Dialog(L"请输入测试最大电流(A)", Settings());
    for (const double height : heights) {
      front.On_Box(L"请调整测量头高度", Answer_Ok, 0, [this, height] { bench::Set_Head_Height(can_id, height); });
    }
    for (int i = 0; i < currents * static_cast<int>(heights.size()); ++i) {
      front.On_Dialog(L"请输入当前推力(g)",
                      C_Script().Fill(L"请输入当前推力(g)", [this] { return Read_Gauge(); }).Confirm());
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

  std::wstring Read_Gauge() {
    readings.push_back(bench::Force_Gauge(can_id));
    return Format_Text(L"%.2f", readings.back()).Text();
  }
};

}  // namespace orsanta
