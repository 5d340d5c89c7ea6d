// What the tests of both drive classes share: a simulated room on the simulated clock, with a scripted operator, and
// looks at the journal.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "common/scripted_front.h"
#include "common/server_pace.h"
#include "simulator/simulator.h"

namespace orsanta {

using Texts = std::vector<std::wstring>;
using Results = std::vector<int>;  // of operations, in the order of the calls

class Room : public testing::Test {
 protected:
  // A room with the pace of this run.
  static void Reset(simulator::Settings settings = {}) {
    settings.instruction_ms = Server_Pace_Ms();
    simulator::Reset(settings);
  }
  // The calls of the motion library since the journal was cleared, as they stand in C but for five short names, "; "
  // behind each. "+5 " stands before one that came 5 ms after the call before it, " x 41 +1" behind one that came 41
  // times, 1 ms apart. Reads are told while the journal keeps them, without those of the window threads.
  static std::string Calls() {
    std::ostringstream calls;
    std::string group;
    double before = -1.0, each = 0.0;
    int times = 0;
    const auto end_group = [&] {
      if (times > 1) calls << " x " << times;
      if (times > 1 && each > 0.0) calls << " +" << each;
      if (times > 0) calls << "; ";
    };
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      if (Is_Of_A_Window(call)) continue;
      const std::string text = Text_Of(call);
      const double gap = before < 0.0 ? 0.0 : std::round(call.time_ms - before);
      before = call.time_ms;
      if (text == group && (times == 1 || gap == each)) {
        each = gap;
        ++times;
        continue;
      }
      end_group();
      if (gap > 0.0) calls << '+' << gap << ' ';
      calls << text;
      group = text;
      times = 1;
    }
    end_group();
    return calls.str();
  }
  // The same for one operation alone, reads included.
  template <class C_Operation>
  static std::string Calls_Of(C_Operation operation) {
    simulator::Journal_Clear();
    simulator::Journal_Keep_Reads(true);
    operation();
    simulator::Journal_Keep_Reads(false);
    return Calls();
  }
  // The search of the bus, and the look for the one device.
  static std::string Search_Calls(int can_id, const char* pause = "") {
    std::ostringstream calls;
    for (int id = 1; id <= 63; ++id) calls << "Exists(" << id << "); ";
    calls << pause << "Exists(" << can_id << "); ";
    return calls.str();
  }
  // How many calls begin with the text.
  static int Count(const std::string& text) {
    int count = 0;
    for (const simulator::Journal_Entry& call : simulator::Journal())
      count += Text_Of(call).rfind(text, 0) == 0 ? 1 : 0;
    return count;
  }
  // The ways out of a drive with CAN id 20 or 3 refuse what is no number: each tells the operator and sends nothing.
  template <class Drive>
  void Expect_Refusals(Drive& drive, const std::vector<int (Drive::*)(double)>& ways_out) {
    simulator::Journal_Clear();
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL})
      for (const auto way_out : ways_out) EXPECT_NE((drive.*way_out)(value), 1);
    EXPECT_EQ(m_Front->Count_Boxes(L"不是有效数字("), 3 * static_cast<int>(ways_out.size()));
    const std::string calls = Calls();
    for (const char* word : {"nan", "inf", "TILLTIME", "Out("}) EXPECT_EQ(calls.find(word), std::string::npos);
  }
  // How many reads of channels there are in the next `ms`.
  static int Reads_In(int ms) {
    simulator::Journal_Clear();
    simulator::Journal_Keep_Reads(true);
    Sleep(ms);
    simulator::Journal_Keep_Reads(false);
    return Count("Read(");
  }
  // The calls that a table of maps stands for, device as "thread, can id": "i PORT FORMAT CHANNEL DEPTH" an input, "w
  // PORT FORMAT CHANNEL" a window, "o PORT FORMAT CHANNEL" an output, "wait" a wait for the server.
  static std::string Map_Calls(const std::string& device, const std::string& table) {
    const std::string thread = device.substr(0, device.find(','));
    std::istringstream in(table);
    std::string calls, kind, port, format, channel, depth;
    while (in >> kind) {
      if (kind != "wait") in >> port >> format >> channel;
      depth = "4096";
      if (kind == "i") in >> depth;
      const std::string map = "PUT_DATA_MAP(" + device + ", " + port + ", " + format + ", " + channel + "); ";
      if (kind == "o") calls += "SET_OUT" + map;
      if (kind == "i" || kind == "w")
        calls += "SET_IN" + map + "RESET_INPUT_DATA_FIFO(" + thread + ", " + channel + ", " + depth + "); ";
      if (kind == "w" || kind == "wait") calls += "Wait(" + thread + "); ";
    }
    return calls;
  }

  C_Simulated_Clock m_Clock{1};
  C_Scripted_Front_Holder m_Front;

 private:
  static std::string Text_Of(const simulator::Journal_Entry& call) {
    static const std::map<std::string, const char*> short_names{{"CheckDeviceExist", "Exists"},
                                                                {"GetInputChannelData", "Read"},
                                                                {"GetThreadInsBufferRemainCount", "Places"},
                                                                {"OUTPUT_DATA", "Out"},
                                                                {"WaitForAllInsFinish", "Wait"}};
    const auto found = short_names.find(call.function);
    std::ostringstream text;
    text << (found == short_names.end() ? call.function : found->second) << '(';
    if (call.thread >= 0) text << call.thread << (call.arguments.empty() ? "" : ", ");
    text << call.arguments << ')';
    return text.str();
  }
  // Read by a window of one of the drives here: 3 with its position, 20 with its sixteen.
  static bool Is_Of_A_Window(const simulator::Journal_Entry& call) {
    static const std::set<int> channels{65,  500,  501,  502,  503,  504,  580,  581, 582,
                                        583, 5125, 5136, 5137, 5139, 5140, 5145, 5146};
    return call.function == "GetInputChannelData" && channels.contains(std::stoi(call.arguments));
  }
};

}  // namespace orsanta
