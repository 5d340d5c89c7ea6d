// What the tests of both drive classes share: looks at the journal.
#pragma once

#include <cmath>
#include <regex>

#include "common/simulated_test.h"

namespace orsanta {

using Texts = std::vector<std::wstring>;

class Testbed : public C_Simulated_Test {
 protected:
  using C_Simulated_Test::C_Simulated_Test;

  // The calls of the motion library since the journal was cleared, as they stand in C but for five short names, "; "
  // behind each. "+5 " stands before one that came 5 ms after the call before it, " x 41 +1" behind one that came 41
  // times, 1 ms apart. Reads are told while the journal keeps them, without those of the window threads.
  static std::string Calls() {
    std::vector<std::pair<std::string, double>> told;  // with the time since the one before
    double before = -1.0;
    for (const simulator::Journal_Entry& call : simulator::Journal()) {
      if (Is_Of_A_Window(call)) continue;
      told.emplace_back(Text_Of(call), before < 0.0 ? 0.0 : std::round(call.time_ms - before));
      before = call.time_ms;
    }
    std::ostringstream calls;
    for (size_t first = 0, next = 0; first < told.size(); first = next) {
      const auto& [text, gap] = told[first];
      const double each = first + 1 < told.size() ? told[first + 1].second : 0.0;
      for (next = first + 1; next < told.size() && told[next] == std::pair(text, each);) ++next;
      if (gap > 0.0) calls << '+' << gap << ' ';
      calls << text;
      if (next > first + 1) calls << " x " << next - first;
      if (next > first + 1 && each > 0.0) calls << " +" << each;
      calls << "; ";
    }
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
  // The text once for each number from the first to the last, which stands in it for "#".
  static std::string For_Each(int first, int last, const std::string& text) {
    std::string all;
    for (int n = first; n <= last; ++n) all += std::regex_replace(text, std::regex("#"), std::to_string(n));
    return all;
  }
  // How many calls begin with the text.
  static int Count(const std::string& text) {
    const auto calls = simulator::Journal();
    return static_cast<int>(
        std::count_if(calls.begin(), calls.end(), [&](auto& c) { return Text_Of(c).starts_with(text); }));
  }
  // The ways out of a drive with CAN id 20 or 3 refuse what is no number: each tells the operator and sends nothing.
  template <class Drive>
  void Expect_Refusals(Drive& drive, const std::vector<int (Drive::*)(double)>& ways_out) {
    simulator::Journal_Clear();
    for (const double value : {std::nan(""), HUGE_VAL, -HUGE_VAL})
      for (const auto way_out : ways_out) EXPECT_NE((drive.*way_out)(value), 1);
    EXPECT_EQ(front->Count_Boxes(L"不是有效数字("), 3 * static_cast<int>(ways_out.size()));
    EXPECT_FALSE(std::regex_search(Calls(), std::regex("nan|inf|TILLTIME|Out\\("))) << Calls();
  }
  // How many reads of channels there are in the next `ms`.
  static int Reads_In(int ms) {
    Calls_Of([ms] { Sleep(ms); });
    return Count("Read(");
  }
  // The calls with the maps of a device in short: "i PORT FORMAT CHANNEL DEPTH " an input, "w PORT FORMAT CHANNEL " a
  // window, which has 4096 places and waits for the server, "o PORT FORMAT CHANNEL " an output.
  static std::string Short_Maps(const std::string& thread, const std::string& can_id, std::string calls) {
    const std::string map = "PUT_DATA_MAP\\(" + thread + ", " + can_id + R"(, (\d+), (\d+), (\d+)\); )";
    const std::string reset = "RESET_INPUT_DATA_FIFO\\(" + thread + R"(, \3, (\d+)\); )";
    calls = std::regex_replace(calls, std::regex("SET_OUT" + map), "o $1 $2 $3 ");
    calls = std::regex_replace(calls, std::regex("SET_IN" + map + reset), "i $1 $2 $3 $4 ");
    return std::regex_replace(calls, std::regex("i (\\d+ \\d+ \\d+) 4096 Wait\\(" + thread + "\\); "), "w $1 ");
  }

 private:
  static std::string Text_Of(const simulator::Journal_Entry& call) {
    static const std::map<std::string, const char*> short_names{{"CheckDeviceExist", "Exists"},
                                                                {"GetInputChannelData", "Read"},
                                                                {"GetThreadInsBufferRemainCount", "Places"},
                                                                {"OUTPUT_DATA", "Out"},
                                                                {"WaitForAllInsFinish", "Wait"}};
    const auto found = short_names.find(call.function);
    const std::string name = found == short_names.end() ? call.function : found->second;
    if (call.thread < 0) return name + '(' + call.arguments + ')';
    return name + '(' + std::to_string(call.thread) + (call.arguments.empty() ? "" : ", ") + call.arguments + ')';
  }
  // Read by a window of one of the drives here: 3 with its position, 20 with its sixteen.
  static bool Is_Of_A_Window(const simulator::Journal_Entry& call) {
    static const std::regex channels("(65|50.|58.|51(25|36|37|39|40|45|46)), .*");
    return call.function == "GetInputChannelData" && std::regex_match(call.arguments, channels);
  }
};

}  // namespace orsanta
