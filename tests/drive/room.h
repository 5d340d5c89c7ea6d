// What the tests of both drive classes share: a simulated room on the simulated clock, with a scripted operator, and
// looks at the journal.
#pragma once

#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "common/scripted_front.h"

namespace orsanta {

using Texts = std::vector<std::wstring>;

class C_Room : public testing::Test {
 protected:
  // The journal's calls in order, as "function(arguments); ", without the polls of the search and of the buffer.
  static std::string Calls() {
    std::string calls;
    for (const bench::Journal_Entry& call : bench::Journal()) {
      if (call.function == "CheckDeviceExist" || call.function == "GetThreadInsBufferRemainCount") continue;
      calls += call.function + "(" + call.arguments + "); ";
    }
    return calls;
  }
  // How many calls begin with the text.
  static int Count(const std::string& text) {
    int count = 0;
    for (const bench::Journal_Entry& call : bench::Journal())
      count += (call.function + "(" + call.arguments + ")").rfind(text, 0) == 0 ? 1 : 0;
    return count;
  }
  // How many reads of channels there are in the next `ms`.
  static int Reads_In(int ms) {
    bench::Journal_Clear();
    bench::Journal_Keep_Reads(true);
    Sleep(ms);
    bench::Journal_Keep_Reads(false);
    return Count("GetInputChannelData(");
  }
  // The calls with the channel maps of a device in short: "i PORT FORMAT CHANNEL DEPTH" an input, "w PORT FORMAT
  // CHANNEL" a window, which ends with a wait for the server, "o PORT FORMAT CHANNEL" an output, "wait" any other wait.
  static std::string Maps(const std::string& can_id) {
    std::string calls = Calls();
    const std::string map = "PUT_DATA_MAP\\(" + can_id + R"(, (\d+), (\d+), (\d+)\); )";
    const std::string input = "SET_IN" + map + R"(RESET_INPUT_DATA_FIFO\(\3, )";
    const std::string wait = R"(WaitForAllInsFinish\(\); )";
    const std::pair<std::string, const char*> words[] = {{input + R"(4096\); )" + wait, "w $1 $2 $3 "},
                                                         {input + R"((\d+)\); )", "i $1 $2 $3 $4 "},
                                                         {"SET_OUT" + map, "o $1 $2 $3 "},
                                                         {wait, "wait "}};
    for (const auto& [call, word] : words) calls = std::regex_replace(calls, std::regex(call), word);
    return calls;
  }

  C_Simulated_Clock m_Clock{1};
  C_Scripted_Front_Holder m_Front;
};

}  // namespace orsanta
