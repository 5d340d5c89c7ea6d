#include "station_work.h"

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "orsanta/orsanta.h"

namespace app {

using std::chrono::milliseconds;

bool Poll(const std::function<bool()>& condition) {
  using Clock = std::chrono::steady_clock;
  const auto limit = Clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (Clock::now() > limit) return false;
    std::this_thread::sleep_for(milliseconds(1));
  }
  return true;
}

bool Measure(int station, double& thickness_mm) {
  double force = 0.0;
  return do_test(station, ORSANTA_TASK_MEASURE) == 1 &&
         Poll([&] { return get_ans(station, &thickness_mm, &force) == 1; });
}

bool Lift(int station) {
  return do_test(station, ORSANTA_TASK_FORCE_BACK) == 1 && Poll([=] { return Get_Force_Back_Finish(station) == 1; });
}

void On_All_Stations(int stations, const std::function<void(int)>& work, const std::function<void()>& watch) {
  std::atomic<int> working{stations};
  std::vector<std::thread> threads;
  for (int n = 1; n <= stations; ++n) {
    threads.emplace_back([&work, &working, n] {
      work(n);
      --working;
    });
  }
  while (watch && working > 0) {
    watch();
    std::this_thread::sleep_for(milliseconds(100));
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace app
