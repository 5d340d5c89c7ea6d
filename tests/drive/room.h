// What the tests of both drive classes share: a simulated room on the simulated clock, with a scripted operator.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "common/scripted_front.h"
#include "support/clock.h"
#include "support/thread.h"

namespace orsanta {

class C_Room : public testing::Test {
 protected:
  // The journal's calls in order, as "thread function(arguments)", without those that `skip` names.
  static std::vector<std::string> Calls(const std::function<bool(const bench::Journal_Entry&)>& wanted) {
    std::vector<std::string> calls;
    for (const bench::Journal_Entry& call : bench::Journal()) {
      if (wanted(call)) calls.push_back(call.function + "(" + call.arguments + ")");
    }
    return calls;
  }
  static std::vector<std::string> Calls_Of(const std::string& function) {
    return Calls([&function](const bench::Journal_Entry& call) { return call.function == function; });
  }
  static std::vector<std::string> All_Calls() {
    return Calls([](const bench::Journal_Entry& call) { return call.function != "CheckDeviceExist"; });
  }

  C_Simulated_Clock m_Clock{1};
  C_Scripted_Front_Holder m_Front;
};

// Does something to the room as soon as a condition holds, which it looks at every millisecond. Ends with the scope.
class C_When {
 public:
  C_When(std::function<bool()> holds, std::function<void()> action) {
    m_Thread.Start("when", [this, holds = std::move(holds), action = std::move(action)] {
      while (!m_Be_End && !holds()) Sleep(1);
      if (!m_Be_End) action();
    });
  }
  ~C_When() {
    m_Be_End = true;
    m_Thread.Join();
  }

 private:
  std::atomic<bool> m_Be_End{false};
  C_Thread m_Thread;
};

}  // namespace orsanta
