// The scheduling of the threads of this process, as the system's own listing of processes shows it.
#pragma once

#include <pthread.h>
#include <sched.h>
#include <sys/resource.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>

namespace orsanta {

// "nice -10" or "real-time 11". thread: its id in the system, 0 for the calling one.
inline std::string Thread_Level(int thread = 0) {
  sched_param parameter{};
  sched_getparam(thread, &parameter);
  if (parameter.sched_priority > 0) return "real-time " + std::to_string(parameter.sched_priority);
  return "nice " + std::to_string(getpriority(PRIO_PROCESS, static_cast<id_t>(thread)));
}

// All threads of the process: the levels that occur under each name.
inline std::map<std::string, std::set<std::string>> Thread_Levels() {
  std::map<std::string, std::set<std::string>> levels;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    std::string name;
    std::getline(std::ifstream(entry.path() / "comm"), name);
    levels[name].insert(Thread_Level(std::stoi(entry.path().filename())));
  }
  return levels;
}

// Leaves the calling thread in a real-time class, as a host's thread may be, where the system grants it.
inline void Become_Real_Time() {
  const sched_param parameter{.sched_priority = 5};
  pthread_setschedparam(pthread_self(), SCHED_RR, &parameter);
}

}  // namespace orsanta
