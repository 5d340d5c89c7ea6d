// Reaction times at the serial lines in real time: from a "T" on a station's link to the start of its task, and from a
// "C" on the host's port to the last status line, while the other stations of fourteen measure.
#include <atomic>
#include <cstdio>

#include "benchmarks/system.h"
#include "common/pty.h"
#include "station/debug_com.h"
#include "support/threads/thread.h"

namespace {

using namespace orsanta;

constexpr int Host_Port = 1;
constexpr int Link_Port = 2;
constexpr int Triggers = 100;
constexpr int Queries = 200;

// Notes how long each visit of the loop takes, and when the task of station 1 begins.
class C_Timed_Supervisor : public C_VoiceMotorBase {
 public:
  using C_VoiceMotorBase::C_VoiceMotorBase;
  void OnThreadLoop(void* param) override {
    const double start = Now_Ms();
    C_VoiceMotorBase::OnThreadLoop(param);
    visits.push_back(Now_Ms() - start);
  }
  void OnTaskBegin(int id) override {
    if (id == 1) began_ms = Now_Ms();
    C_VoiceMotorBase::OnTaskBegin(id);
  }
  std::atomic<double> began_ms{0.0};
  std::vector<double> visits;  // of the loop thread until it has ended
};

void Print(const char* what, const std::vector<double>& times) {
  std::printf("%s: median %.2f ms, 99th percentile %.2f ms, longest %.2f ms\n", what, Quantile(times, 0.5),
              Quantile(times, 0.99), Quantile(times, 1.0));
}

std::vector<double> Time_Triggers(C_Timed_Supervisor& base, C_Pty& link, C_Pty& host) {
  std::vector<double> times;
  while (times.size() < Triggers) {
    while (base.StationList[0]->Force_Back_Finish == 0) Sleep(1);
    Sleep(20 + static_cast<int>(times.size()) % All_Stations);  // at every place of the round
    base.began_ms = 0.0;
    const double start = Now_Ms();
    link.Send("T");
    while (base.began_ms == 0.0) Sleep(1);
    times.push_back(base.began_ms - start);
    while (link.Take().empty()) Sleep(1);
    host.Take();
  }
  return times;
}

std::vector<double> Time_Queries(C_Pty& host) {
  const std::string last = "ID:e State:1\n";
  std::vector<double> times;
  while (times.size() < Queries) {
    Sleep(20);
    host.Take();
    const double start = Now_Ms();
    host.Send("C");
    std::string answer;
    while (answer.find(last) == std::string::npos) answer += host.Take_At_Least(1);
    times.push_back(Now_Ms() - start);
  }
  return times;
}

}  // namespace

int main() {
  const C_Temp_Folder folder;
  C_Pty host(Host_Port);
  C_Pty link(Link_Port);
  {
    C_VoiceDebugCom settings(1);
    settings.ValComNum = Link_Port;
    settings.Save();
  }
  simulator::Reset();
  C_Timed_Supervisor base(Numbered_Resources(All_Stations), Host_Port, 115200, 0, 0);
  Sleep(1000);

  std::atomic<bool> stop{false};
  std::vector<std::unique_ptr<C_Thread>> hosts;
  for (int n = 2; n <= All_Stations; ++n) {
    simulator::Place_Part(n, 5.0);
    hosts.push_back(std::make_unique<C_Thread>());
    hosts.back()->Start("host", [&base, &stop, n] {
      while (!stop) {
        base.do_test(n, Task_Measure);
        base.do_test(n, Task_Force_Back);
        while (base.GetDelayProcessFifoCount(n - 1) > 0) Sleep(1);
      }
    });
  }
  Print("T to the start of its task", Time_Triggers(base, link, host));
  Print("C to the last status line", Time_Queries(host));
  stop = true;
  for (auto& thread : hosts) thread->Join();
  base.EndThread(1, 1);
  Print("One visit of the loop", base.visits);
}
