#include "drive/io_card.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "bench/bench.h"
#include "drive/tremalink.h"
#include "support/clock.h"

namespace orsanta {
namespace {

constexpr int Card_Id = 15;

class C_Io_Card_Test : public testing::Test {
 protected:
  void SetUp() override {
    bench::Reset();
    InitDevice_PC_Local_Controler(1, 0);
    ConnectControlServer(L"", 0, nullptr);
    bench::Journal_Clear();
  }
  static std::vector<std::string> Calls(const std::string& prefix) {
    std::vector<std::string> calls;
    for (const bench::Journal_Entry& call : bench::Journal()) {
      if (call.function.rfind(prefix, 0) != 0) continue;
      calls.push_back(std::to_string(call.thread) + " " + call.function + "(" + call.arguments + ")");
    }
    return calls;
  }
  C_Simulated_Clock m_Clock{1};
};

TEST_F(C_Io_Card_Test, Maps_Eight_Channels_Once_And_Reads_And_Writes_Them) {
  C_Io_Card card;
  card.Set_Io_Mode(1);
  card.Map_Io(2, Card_Id);
  std::vector<std::string> expected;
  for (int i = 0; i < 8; ++i) {
    const std::string bit = std::to_string(i);
    expected.push_back("0 SET_IOOUT_MAP(15, 3, " + bit + ", " + bit + ")");
    expected.push_back("0 SET_IOIN_MAP(15, 4, " + bit + ", 0, " + bit + ")");
  }
  EXPECT_EQ(Calls("SET_IO"), expected);
  card.Map_Io(8, Card_Id);
  EXPECT_EQ(Calls("SET_IO").size(), 16U);

  bench::Set_Input(5, 1);
  EXPECT_EQ(card.Get_Io(5), 1);
  EXPECT_EQ(card.Get_Io(6), 0);
  card.Set_Io(7, 1);
  EXPECT_EQ(bench::Get_Output(7), 1);
  card.Set_Io(7, 256);  // narrowed to eight bits
  EXPECT_EQ(bench::Get_Output(7), 0);
}

TEST_F(C_Io_Card_Test, Without_A_Card) {
  {
    C_Io_Card card;  // none wanted
    card.Set_Io_Mode(0);
    card.Map_Io(2, Card_Id);
    EXPECT_EQ(card.Get_Io(1), 3);
    card.Set_Io(1, 1);
    EXPECT_TRUE(Calls("Set").empty());
    EXPECT_TRUE(Calls("SET_IO").empty());
  }
  bench::Set_Io_Card_Missing(true);  // wanted, and not there: the map goes on without a word
  C_Io_Card card;
  card.Set_Io_Mode(1);
  card.Map_Io(2, Card_Id);
  EXPECT_EQ(Calls("SET_IO").size(), 16U);
  EXPECT_EQ(card.Get_Io(1), -1);
}

TEST_F(C_Io_Card_Test, Pulses_Stand_In_For_Inputs) {
  C_Io_Card card;
  card.Set_Io_Mode(0);
  card.Set_Sim_Mask(4);
  for (const int channel : {0, 1, 2, 3}) EXPECT_EQ(card.Get_Io(channel), 3);  // share no bit with the mask
  card.Set_Sim_Rate(11);
  const int first = card.Get_Io(4);
  EXPECT_EQ(card.Get_Io(5), 1 - first);  // one counter for all channels
  EXPECT_EQ(card.Get_Io(7), first);

  card.Set_Sim_Rate(1);  // turns over every 1024 reads
  std::vector<int> turns;
  for (int read = 0, before = card.Get_Io(4); read < 5000; ++read) {
    const int now = card.Get_Io(6);
    if (now != before) turns.push_back(read);
    before = now;
  }
  ASSERT_GE(turns.size(), 4U);
  for (size_t i = 1; i < turns.size(); ++i) EXPECT_EQ(turns[i] - turns[i - 1], 1024);
}

}  // namespace
}  // namespace orsanta
