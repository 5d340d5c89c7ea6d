// Reaction times at the serial lines in real time, while fourteen stations measure: from a "T" on a station's link to
// the start of its task, and from a "C" on the host's port to the last status line. Beside them stands what the machine
// itself allows: a time-critical thread that sleeps 1 ms and reads a line of its own.
//
//   benchmark_serial_latency [triggers] [busy processes]
#include <signal.h>
#include <sys/prctl.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>

#include "benchmarks/system.h"
#include "common/pty.h"
#include "station/debug_com.h"
#include "support/threads/thread.h"

namespace {

using namespace orsanta;

constexpr int Host_Port = 1;
constexpr int First_Link_Port = 2;
constexpr int Bare_Port = First_Link_Port + All_Stations;
constexpr int Queries = 200;

// Notes how long each visit of the loop takes, and when the task of each station begins.
class C_Timed_Supervisor : public C_VoiceMotorBase {
 public:
  using C_VoiceMotorBase::C_VoiceMotorBase;
  void OnThreadLoop(void* param) override {
    const double start = Now_Ms();
    C_VoiceMotorBase::OnThreadLoop(param);
    visits.push_back(Now_Ms() - start);
  }
  void OnTaskBegin(int id) override {
    began_ms[id] = Now_Ms();
    C_VoiceMotorBase::OnTaskBegin(id);
  }
  std::atomic<double> began_ms[All_Stations + 1] = {};
  std::vector<double> visits;  // of the loop thread until it has ended
};

// What the machine allows: a loop that does nothing but wait and read.
class C_Bare_Loop {
 public:
  C_Bare_Loop() {
    m_Line.OpenCom(Bare_Port);
    m_Thread.Start(
        "bare loop", [this] { Run(); }, Priority_Time_Critical);
  }
  void Stop() {
    m_Stop = true;
    m_Thread.Join();
  }
  std::vector<double> passes;  // ms, as the next; both until the loop has ended
  std::vector<double> bytes;

 private:
  void Run() {
    for (double sent = 0.0; !m_Stop;) {
      const double start = Now_Ms();
      Sleep(1);
      passes.push_back(Now_Ms() - start);
      char byte = 0;
      int got = 0;
      m_Line.GetComData(&byte, 1, got);
      if (got > 0) bytes.push_back(Now_Ms() - std::exchange(sent, 0.0));
      if (sent != 0.0 || passes.size() % 50 != 0) continue;
      sent = Now_Ms();
      m_Outside.Send("T");
    }
  }
  C_Pty m_Outside{Bare_Port};
  CComSerial m_Line;
  std::atomic<bool> m_Stop{false};
  C_Thread m_Thread;
};

void Print(const char* what, const std::vector<double>& times) {
  std::printf("%s: %zu, median %.2f ms, 99 %% within %.2f ms, 99.9 %% within %.2f ms, longest %.2f ms\n", what,
              times.size(), Quantile(times, 0.5), Quantile(times, 0.99), Quantile(times, 0.999), Quantile(times, 1.0));
}

// One station's measurements, each started by a "T" at a random time; the level of a silent line lifts the probe.
std::vector<double> Time_Triggers(C_Timed_Supervisor& base, C_Pty& link, int station, int triggers) {
  uint64_t random = static_cast<uint64_t>(station);
  std::vector<double> times;
  for (int i = 0; i < triggers; ++i) {
    while (base.StationList[station - 1]->Force_Back_Finish == 0) Sleep(5);
    random = random * 6364136223846793005 + 1442695040888963407;
    Sleep(20 + static_cast<int>((random >> 33) % 40));
    base.began_ms[station] = 0.0;
    const double start = Now_Ms();
    link.Send("T");
    while (base.began_ms[station] == 0.0) Sleep(5);
    times.push_back(base.began_ms[station] - start);
    while (link.Take().empty()) Sleep(5);
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

void Start_Busy_Processes(int count) {
  for (int i = 0; i < count; ++i) {
    if (fork() != 0) continue;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (volatile unsigned spin = 0;;) spin = spin + 1;
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int triggers = argc > 1 ? std::atoi(argv[1]) : 1000;
  Start_Busy_Processes(argc > 2 ? std::atoi(argv[2]) : 0);
  const C_Temp_Folder folder;
  C_Pty host(Host_Port);
  std::vector<std::unique_ptr<C_Pty>> links;
  for (int id = 1; id <= All_Stations; ++id) {
    const int port = First_Link_Port + id - 1;
    links.push_back(std::make_unique<C_Pty>(port));
    C_VoiceDebugCom settings(id);
    settings.ValComNum = port;
    settings.Save();
  }
  simulator::Reset();
  C_Timed_Supervisor base(Numbered_Resources(All_Stations), Host_Port, 115200, 0, 0);
  Sleep(1000);

  C_Bare_Loop bare;
  std::vector<double> times;
  C_Leaf_Lock times_lock;
  {
    std::vector<C_Thread> lines(All_Stations);
    for (int id = 1; id <= All_Stations; ++id) {
      simulator::Place_Part(id, 5.0);
      lines[static_cast<size_t>(id - 1)].Start("line", [&, id] {
        const auto own =
            Time_Triggers(base, *links[static_cast<size_t>(id - 1)], id, (triggers + All_Stations - 1) / All_Stations);
        const C_Lock_Guard hold(times_lock);
        times.insert(times.end(), own.begin(), own.end());
      });
    }
  }
  bare.Stop();
  Print("T to the start of its task", times);
  Print("A bare loop of 1 ms", bare.passes);
  Print("A byte to a bare loop", bare.bytes);
  Print("C to the last status line", Time_Queries(host));
  base.EndThread(1, 1);
  Print("One visit of the loop", base.visits);
}
