// What the tests of both drive classes share: a simulated room on the simulated clock, with a scripted operator, and
// looks at the journal.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <sstream>
#include <string>
#include <vector>

#include "bench/bench.h"
#include "common/scripted_front.h"
#include "common/server_pace.h"

namespace orsanta {

using Texts = std::vector<std::wstring>;

class C_Room : public testing::Test {
 protected:
  // A room with the pace of this run.
  static void Reset(bench::Settings settings = {}) {
    settings.instruction_ms = Server_Pace_Ms();
    bench::Reset(settings);
  }
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
  // The ways out of a drive with CAN id 20 or 3 refuse what is no number: each tells the operator and sends nothing.
  template <class Drive>
  void Expect_Refusals(Drive& drive, const std::vector<int (Drive::*)(double)>& ways_out) {
    bench::Journal_Clear();
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL})
      for (const auto way_out : ways_out) EXPECT_NE((drive.*way_out)(value), 1);
    EXPECT_EQ(m_Front->Count_Boxes(L"不是有效数字("), 3 * static_cast<int>(ways_out.size()));
    const std::string calls = Calls();
    for (const char* word : {"nan", "inf", "TILLTIME", "OUTPUT_DATA"}) EXPECT_EQ(calls.find(word), std::string::npos);
  }
  // How many reads of channels there are in the next `ms`.
  static int Reads_In(int ms) {
    bench::Journal_Clear();
    bench::Journal_Keep_Reads(true);
    Sleep(ms);
    bench::Journal_Keep_Reads(false);
    return Count("GetInputChannelData(");
  }
  // The calls that a table of maps stands for: "i PORT FORMAT CHANNEL DEPTH" an input, "w PORT FORMAT CHANNEL" a
  // window, "o PORT FORMAT CHANNEL" an output, "wait" a wait for the server.
  static std::string Map_Calls(const std::string& can_id, const std::string& table) {
    std::istringstream in(table);
    std::string calls, kind, port, format, channel, depth = "4096";
    while (in >> kind) {
      if (kind != "wait") in >> port >> format >> channel;
      const std::string map = "PUT_DATA_MAP(" + can_id + ", " + port + ", " + format + ", " + channel + "); ";
      if (kind == "o") calls += "SET_OUT" + map;
      if (kind == "i") in >> depth;
      if (kind == "i" || kind == "w") calls += "SET_IN" + map + "RESET_INPUT_DATA_FIFO(" + channel + ", ";
      if (kind == "i") calls += depth + "); ";
      if (kind == "w") calls += "4096); ";
      if (kind == "w" || kind == "wait") calls += "WaitForAllInsFinish(); ";
    }
    return calls;
  }

  C_Simulated_Clock m_Clock{1};
  C_Scripted_Front_Holder m_Front;
};

}  // namespace orsanta
