#include "drive/io_card.h"

#include "drive/room.h"
#include "drive/tremalink.h"

namespace orsanta {
namespace {

class C_Io_Card_Test : public C_Room {
 protected:
  static constexpr int Card_Id = 15;

  C_Io_Card_Test() {
    bench::Reset();
    InitDevice_PC_Local_Controler(1, 0);
    ConnectControlServer(L"", 0, nullptr);
    bench::Journal_Clear();
  }
  C_Io_Card m_Card;
};

TEST_F(C_Io_Card_Test, Maps_Eight_Channels_Once_And_Reads_And_Writes_Them) {
  m_Card.Set_Io_Mode(1);
  m_Card.Map_Io(2, Card_Id);
  std::string expected;
  for (const char bit : std::string("01234567")) {
    expected += std::string("SET_IOOUT_MAP(15, 3, ") + bit + ", " + bit + "); ";
    expected += std::string("SET_IOIN_MAP(15, 4, ") + bit + ", 0, " + bit + "); ";
  }
  EXPECT_EQ(Calls(), expected + "WaitForAllInsFinish(); ");
  EXPECT_EQ(bench::Journal().back().thread, 0);
  m_Card.Map_Io(8, Card_Id);
  EXPECT_EQ(Count("SET_IO"), 16);

  bench::Set_Input(5, 1);
  EXPECT_EQ(m_Card.Get_Io(5), 1);
  EXPECT_EQ(m_Card.Get_Io(6), 0);
  m_Card.Set_Io(7, 1);
  EXPECT_EQ(bench::Get_Output(7), 1);
  m_Card.Set_Io(7, 256);  // narrowed to eight bits
  EXPECT_EQ(bench::Get_Output(7), 0);
  bench::Set_Io_Card_Missing(true);
  EXPECT_EQ(m_Card.Get_Io(5), -1);
  EXPECT_TRUE(m_Front->Boxes().empty());
}

TEST_F(C_Io_Card_Test, Without_A_Card_Pulses_Stand_In_For_Inputs) {
  m_Card.Set_Io_Mode(0);
  m_Card.Map_Io(2, Card_Id);
  m_Card.Set_Io(1, 1);
  m_Card.Set_Sim_Mask(4);
  for (const int channel : {0, 1, 2, 3}) EXPECT_EQ(m_Card.Get_Io(channel), 3);  // share no bit with the mask
  EXPECT_EQ(Calls(), "");
  m_Card.Set_Sim_Rate(11);
  const int first = m_Card.Get_Io(4);
  EXPECT_EQ(m_Card.Get_Io(5), 1 - first);  // one counter for all channels
  m_Card.Set_Sim_Rate(1);                  // turns over every 1024 reads
  std::vector<int> turns;
  for (int read = 0, before = m_Card.Get_Io(4); read < 5000; ++read) {
    const int now = m_Card.Get_Io(6);
    if (now != before) turns.push_back(read);
    before = now;
  }
  ASSERT_GE(turns.size(), 4U);
  for (size_t i = 1; i < turns.size(); ++i) EXPECT_EQ(turns[i] - turns[i - 1], 1024);
}

}  // namespace
}  // namespace orsanta
