// A whole system on the simulator, under the simulated clock, driven through the exported functions as a host drives
// it.
#pragma once

#include "common/resources.h"
#include "common/simulated_test.h"
#include "orsanta/orsanta.h"

namespace orsanta {

constexpr double Block_Mm = 5.0;  // the reference block

class System : public C_Simulated_Test {
 protected:
  explicit System(uint64_t seed = 1) : C_Simulated_Test({}, seed) {}
  ~System() override { Stop(); }

  // Stations on these CAN ids.
  void Start(const std::vector<int>& can_ids, int io_mode = 0) {
    const auto records = Resource_Table(can_ids);
    ORSA_resource_alloc(records.begin(), records.GetSize());
    Init(io_mode);
  }
  void Init(int io_mode) {
    Orsanta_dll_init(io_mode);
    m_Running = true;
    Sleep(1000);  // the first lift-offs end
  }
  void Stop() {
    if (m_Running) Orsanta_dll_uninit();
    m_Running = false;
  }

  static bool Wait_For(const std::function<bool()>& condition, int limit_ms = 60000) {
    for (int waited = 0; !condition(); ++waited) {
      if (waited >= limit_ms) return false;
      Sleep(1);
    }
    return true;
  }
  static bool Wait_Lifted(int station) {
    return Wait_For([=] { return Get_Force_Back_Finish(station) == 1; });
  }
  static bool Lift(int station) { return do_test(station, ORSANTA_TASK_FORCE_BACK) == 1 && Wait_Lifted(station); }

  // Waits for the next result. NaN when none comes.
  static double Next_Result(int station) {
    double thickness = 0.0, force = 0.0;
    const auto ready = [&] { return get_ans(station, &thickness, &force) == 1; };
    return Wait_For(ready) ? thickness : __builtin_nan("");
  }
  static bool No_Result(int station) {
    double thickness = 0.0, force = 0.0;
    return get_ans(station, &thickness, &force) == 0;
  }
  // One whole cycle: a part goes on, is measured, and the probe lifted. station and CAN id are the same.
  static double Measure(int station, double part_mm) {
    simulator::Place_Part(station, part_mm);
    EXPECT_EQ(do_test(station, ORSANTA_TASK_MEASURE), 1);
    const double thickness = Next_Result(station);
    EXPECT_TRUE(Lift(station));
    return thickness;
  }
  static void Correct_Reference(int station, double force = 100.0) {
    simulator::Place_Part(station, Block_Mm);
    Set_Force(station, force);
    Set_Ans_Offset(station, Block_Mm);
    Check_User_Zero(station);
  }

 private:
  bool m_Running = false;
};

}  // namespace orsanta
