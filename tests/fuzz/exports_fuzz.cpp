// Calls the exported functions in arbitrary order with arbitrary arguments, as far as the calling contract lets a host:
// no null pointers, no station below 1, and only what the state allows. A force that was taken must read back, and
// every stop come to its end. A sequence costs the time that it simulates, so waits are short, one call moves a
// probe by itself, and a start and a stop share a place.
#include <cmath>

#include "common/scripted_front.h"
#include "fuzz/fuzz.h"
#include "orsanta/orsanta.h"
#include "simulated_clock/simulated_clock.h"
#include "simulator/simulator.h"

void Fuzz(std::string input) {
  using namespace orsanta;
  const C_Simulated_Clock clock(Take<uint8_t>(input));
  const C_Temp_Folder folder;
  const C_Scripted_Front_Holder front;
  simulator::Reset({.drives = 2});
  int stations = 0, s = 1;  // 0 while the system does not run; the one that is called
  double held = 0.0;
  bool has_moved = false;
  const std::function<void()> calls[] = {
      [&] {
        if (Take<int8_t>(input) < 0)
          Orsanta_dll_uninit(), stations = 0;
        else
          ORSA_resource_alloc(nullptr, 0), Orsanta_dll_init(0);
      },
      [&] { show_dlg(); },
      [&] { do_test(s, Take<int8_t>(input)); },
      [&] {
        const bool is_check = Take<int8_t>(input) < 0;
        if (has_moved) return;
        is_check ? Check_User_Zero(s) : static_cast<void>(GoZero(s));
        has_moved = true;
      },
      [&] {
        const double force = held = Take<double>(input);
        Set_Force(s, force);
        Get_Force(s, &held);
        Demand(held == force || !std::isfinite(force), "another force than was set");
      },
      [&] { Set_Ans_Offset(s, Take<double>(input)), Save_Parameter2file(s); },
      [&] { set_test_distance(s, Take<double>(input)), Set_Force2(s, Take<double>(input)); },
      [&] { SetIO(GetIO(Take<int>(input)), Get_Force_Back_Finish(s)); },
      [&] { Get_Ans_Offset(s, &held), SetIO(get_ans(s, &held, &held), Take<int>(input)); },
      [&] { Sleep(Take<uint16_t>(input) % 500); },
  };
  for (int call = 0; call < 8 && !input.empty(); ++call) {
    if (stations == 0) {
      std::vector<VCM_Resource_struct> records(1 + Take<uint8_t>(input) % 3);
      for (auto& record : records) {
        const int near = Take<uint8_t>(input) % 4;
        record = {near > 0 ? near : Take<int>(input), Take<int>(input), Take<int>(input), Take<uint8_t>(input), 0, 1};
      }
      ORSA_resource_alloc(records.data(), stations = static_cast<int>(records.size()));
      Orsanta_dll_init(Take<int8_t>(input));
    }
    const auto next = Take<uint8_t>(input) % std::size(calls);
    const auto place = Take<uint8_t>(input);
    s = place < 0xF0 ? 1 + place % stations : std::max(Take<int>(input), 1);
    calls[next]();
  }
  if (stations > 0) Orsanta_dll_uninit();
}
